#include "tool/match.h"

#include <algorithm>
#include <stdexcept>
#include <string>
#include <type_traits>

#include "tool/elements.h"
#include "tool/fixed_table.h"

namespace BP::tool {

namespace {

using filters::ArrayView;
using filters::Extents;

template <class T>
constexpr ElementType typeOf = ElementType::float64;
template <>
constexpr ElementType typeOf<bool> = ElementType::boolean;
template <>
constexpr ElementType typeOf<std::int32_t> = ElementType::int32;
template <>
constexpr ElementType typeOf<float> = ElementType::float32;
template <>
constexpr ElementType typeOf<std::complex<float>> = ElementType::complex64;
template <>
constexpr ElementType typeOf<std::complex<double>> = ElementType::complex128;

template <class T>
ArrayView<const T> viewOf(const Array& array) {
  return {array.as<T>(), Extents(array.extents)};
}

std::string regionText(const filters::Rectangle& region) {
  return std::to_string(region.x) + "," + std::to_string(region.y) + "," + std::to_string(region.width) + "x" +
         std::to_string(region.height);
}

template <class T>
Array arrayOf(const filters::Array<T>& scores) {
  Array array{typeOf<T>, {scores.extents().begin(), scores.extents().end()}, {}};
  array.bytes.resize(bytesOf(array.type, array.extents));
  std::copy(scores.begin(), scores.end(), array.as<T>());
  return array;
}
Array arrayOf(const filters::FixedArray& scores) {
  return scores.isComplex() ? arrayOf(filters::toComplex(scores)) : arrayOf(filters::toDouble(scores));
}

template <class T>
std::vector<std::complex<double>> listOf(const filters::Array<T>& scores) {
  return {scores.begin(), scores.end()};
}
std::vector<std::complex<double>> listOf(const filters::FixedArray& scores) {
  return listOf(filters::toComplex(scores));
}

/// The best matches in a map of real scores.
template <class Found>
std::vector<MatchPeak> peaksOf(const Found& match, const filters::PeakOptions& options) {
  std::vector<MatchPeak> peaks;
  using Score = std::remove_cvref_t<decltype(match.score)>;
  if constexpr (std::is_same_v<Found, filters::Match<Score>> && !IsComplex<Score>::value) {
    for (const auto& peak : filters::matches(match, options)) {
      peaks.push_back({peak.location, peak.window, static_cast<double>(peak.score), peak.refined});
    }
  } else {
    throw std::runtime_error("--top: several matches need real scores, and no --fixed");
  }
  return peaks;
}

/// The result of `matcher` for `image`.
template <class Matcher, class Image>
MatchResult runMatcher(Matcher& matcher, const Image& image, const MatchRequest& request, bool isComplex) {
  const filters::MatchOptions& options = request.options;
  if (matcher.positions().isEmpty()) {
    matcher.setRegion(std::nullopt);
    throw std::runtime_error("--roi " + regionText(*options.region) + " holds no position; all are " +
                             regionText(matcher.positions()));
  }
  const auto match = matcher.run(image);
  MatchResult result;
  result.location = match.location;
  result.window = match.window;
  result.isComplex = isComplex;
  result.score = match.score;
  result.regionValid = match.regionValid;
  if (options.neighbourhood > 0) result.neighbourhood = listOf(match.neighbourhood);
  result.neighbourhoodValid = match.neighbourhoodValid;
  result.positions = match.positions;
  if (options.refine) result.refined = match.refined;
  result.greatestIsBest = filters::greatestIsBest(options.metric);
  if (request.peaks) result.peaks = peaksOf(match, *request.peaks);
  if (request.keepsMap) result.map = arrayOf(match.map);
  return result;
}

template <class UT, class HT>
MatchResult matchAs(const Array& image, const Array& pattern, const MatchRequest& request) {
  const ArrayView<const UT> in = viewOf<UT>(image);
  filters::TemplateMatcher<UT, HT> matcher(viewOf<HT>(pattern), in.extents(), request.options);
  return runMatcher(matcher, in, request, IsComplex<filters::MatchScore<UT, HT>>::value);
}

/// An array in fixed point, and the statistics of its casts.
struct FixedElements {
  filters::FixedArray values;
  filters::FixedStatistics statistics;
  std::uint64_t rounded = 0;

  template <class T>
  void castAs(const Array& array, const filters::FixedType& type, const filters::FixedModes& modes) {
    const auto elements = elementsAs<T>(array, Extents(array.extents), rounded);
    values = filters::quantise(elements, type, modes, &statistics);
  }

  FixedElements(const Array& array, const filters::FixedType& type, const filters::FixedModes& modes,
                const std::string& label)
      : statistics{.label = label} {
    if (isComplex(array.type)) {
      castAs<std::complex<double>>(array, type, modes);
    } else {
      castAs<double>(array, type, modes);
    }
  }
};

struct Pair {
  ElementType image;
  ElementType pattern;
  MatchResult (*match)(const Array&, const Array&, const MatchRequest&);
};
#define ORVANE_ROW(UT, HT) {typeOf<UT>, typeOf<HT>, matchAs<UT, HT>},
constexpr Pair pairs[] = {ORVANE_FOR_MATCH_PAIRS(ORVANE_ROW)};
#undef ORVANE_ROW

/// The elements as another type; those of the picture's samples need no more than `float`.
template <class To>
Array convertedTo(const Array& array) {
  std::uint64_t rounded = 0;
  return arrayOf(elementsAs<To>(array, Extents(array.extents), rounded));
}

/// Whether `float` has every sum of a score: of whole numbers up to `greatest`, for each element of the template.
bool isExactInFloat(filters::Metric metric, double greatest, std::size_t elements) {
  constexpr double maxWhole = 0x1p24;
  const auto count = static_cast<double>(elements);
  if (metric == filters::Metric::sad) return count * greatest <= maxWhole;
  if (metric == filters::Metric::maxad) return true;
  return metric == filters::Metric::ssd && count * greatest * greatest <= maxWhole;
}

MatchResult matchPair(const Array& image, const Array& pattern, const MatchRequest& request) {
  for (const Pair& pair : pairs) {
    if (pair.image == image.type && pair.pattern == pattern.type) return pair.match(image, pattern, request);
  }
  throw std::runtime_error("IMAGE has elements of type " + std::string(nameOf(image.type)) + ", TEMPLATE " +
                           std::string(nameOf(pattern.type)) +
                           "; allowed are both of float32 or complex64, both of float64 or complex128, both bool; PNG "
                           "counts as float64");
}

}  // namespace

MatchResult findMatch(const MatchInput& image, const MatchInput& pattern, const MatchRequest& request) {
  if (image.isWhole() && pattern.isWhole()) {
    const double greatest = (1 << image.bitDepth) - 1;
    if (!isExactInFloat(request.options.metric, greatest, pattern.elements.elements())) {
      return matchPair(convertedTo<double>(image.elements), convertedTo<double>(pattern.elements), request);
    }
    MatchResult match = matchPair(convertedTo<float>(image.elements), convertedTo<float>(pattern.elements), request);
    if (request.keepsMap) match.map = convertedTo<double>(match.map);
    return match;
  }
  const auto floating = [](const MatchInput& input) {
    return input.isWhole() ? convertedTo<double>(input.elements) : input.elements;
  };
  return matchPair(floating(image), floating(pattern), request);
}

MatchResult findFixedMatch(const Array& image, const Array& pattern, const MatchRequest& request,
                           const FixedMatchSettings& settings) {
  filters::FixedMatchTypes types = settings.types;
  types.inputIsComplex = isComplex(image.type);
  const FixedElements in(image, types.input, types.modes, "input");
  const FixedElements sought(pattern, settings.pattern, types.modes, "template");
  filters::FixedTemplateMatcher matcher(sought.values, in.values.extents(), types, request.options);
  MatchResult result = runMatcher(matcher, in.values, request, in.values.isComplex() || sought.values.isComplex());
  std::vector<filters::FixedStatistics> statistics = matcher.statistics();
  statistics.insert(statistics.end(), {in.statistics, sought.statistics});
  const FixedRows rows{{"input", filters::toText(types.input)},
                       {"template", filters::toText(settings.pattern)},
                       {"product", textOrExact(types.product)},
                       {"product sum", filters::toText(types.accumulator)},
                       {"accumulator", filters::toText(types.accumulator)},
                       {"output", filters::toText(types.output)}};
  result.fixedTable = fixedTable(rows, statistics);
  result.rounded = in.rounded + sought.rounded;
  return result;
}

}  // namespace BP::tool
