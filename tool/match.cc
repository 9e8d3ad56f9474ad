#include "tool/match.h"

#include <algorithm>
#include <stdexcept>
#include <string>

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
  return {array.as<T>(), Extents{array.extents[0], array.extents[1]}};
}

std::string regionText(const filters::Region& region) {
  return std::to_string(region.start[0]) + "," + std::to_string(region.start[1]) + "," +
         std::to_string(region.size[0]) + "x" + std::to_string(region.size[1]);
}

template <class UT, class HT>
MatchResult matchAs(const Array& image, const Array& pattern, const filters::MatchOptions& options) {
  using Score = filters::MatchScore<UT, HT>;
  const ArrayView<const UT> in = viewOf<UT>(image);
  filters::TemplateMatcher<UT, HT> matcher(viewOf<HT>(pattern), in.extents(), options);
  if (matcher.positions().size[0] == 0) {
    matcher.setRegion(std::nullopt);
    throw std::runtime_error("--roi " + regionText(*options.region) + " holds no position; all are " +
                             regionText(matcher.positions()));
  }
  const auto match = matcher.run(in);
  MatchResult result;
  result.location = match.location;
  result.window = match.window;
  result.isComplex = typeOf<Score> == ElementType::complex64 || typeOf<Score> == ElementType::complex128;
  result.score = match.score;
  result.regionValid = match.regionValid;
  result.neighbourhood.assign(match.neighbourhood.begin(), match.neighbourhood.end());
  result.neighbourhoodValid = match.neighbourhoodValid;
  result.positions = match.positions;
  if (match.map.size() > 0) {
    result.map = {typeOf<Score>, {match.map.extents().begin(), match.map.extents().end()}, {}};
    result.map.bytes.resize(bytesOf(result.map.type, result.map.extents));
    std::copy(match.map.begin(), match.map.end(), result.map.template as<Score>());
  }
  return result;
}

struct Pair {
  ElementType image;
  ElementType pattern;
  MatchResult (*match)(const Array&, const Array&, const filters::MatchOptions&);
};
#define ORVANE_ROW(UT, HT) {typeOf<UT>, typeOf<HT>, matchAs<UT, HT>},
constexpr Pair pairs[] = {ORVANE_FOR_MATCH_PAIRS(ORVANE_ROW)};
#undef ORVANE_ROW

}  // namespace

MatchResult findMatch(const Array& image, const Array& pattern, const filters::MatchOptions& options) {
  for (const Pair& pair : pairs) {
    if (pair.image == image.type && pair.pattern == pattern.type) return pair.match(image, pattern, options);
  }
  throw std::runtime_error("IMAGE has elements of type " + std::string(nameOf(image.type)) + ", TEMPLATE " +
                           std::string(nameOf(pattern.type)) +
                           "; allowed are both of float32 or complex64, both of float64 or complex128, both bool; PNG "
                           "counts as float64");
}

}  // namespace BP::tool
