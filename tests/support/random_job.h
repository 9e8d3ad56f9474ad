#pragma once

#include <algorithm>
#include <array>
#include <complex>
#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <random>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "orvane/filters/convolution.h"
#include "orvane/filters/correlation_nd.h"
#include "orvane/filters/fixed_convolution.h"
#include "orvane/filters/fixed_median.h"
#include "orvane/filters/fixed_template_matcher.h"
#include "orvane/filters/median.h"
#include "orvane/filters/peaks.h"
#include "orvane/filters/template_matcher.h"
#include "orvane/filters/tile.h"
#include "tests/support/array_store.h"
#include "tests/support/fixed_model.h"
#include "tests/support/near_types.h"

/// Random jobs of all kinds, each of which can be run in several ways.
namespace BP::test {

/// How a job is run.
struct Variation {
  bool pitched = false;  ///< input and output have gaps
  int threads = 1;
  std::optional<filters::Box> region = std::nullopt;
  bool asTile = false;  ///< the region is filtered from the part of the input that it needs
};

/// What came out of a run.
struct JobResult {
  filters::Box positions;
  std::size_t elementBytes = 1;
  Bytes bytes;
  std::vector<filters::FixedStatistics> statistics = {};
  bool othersAreUntouched = true;  ///< bytes around the output
  std::int64_t clipped = 0;        ///< outputs that did not fit their integers

  bool operator==(const JobResult& other) const {
    const auto same = [](const auto& a, const auto& b) {
      return a.label == b.label && a.casts == b.casts && a.overflows == b.overflows && a.lossy == b.lossy &&
             a.minimum == b.minimum && a.maximum == b.maximum;
    };
    return positions.extents == other.positions.extents && bytes == other.bytes && clipped == other.clipped &&
           std::ranges::equal(statistics, other.statistics, same) && othersAreUntouched && other.othersAreUntouched;
  }
};

inline filters::Extents extentsOf(const std::array<std::int64_t, filters::Extents::maxRank>& numbers,
                                  std::size_t rank) {
  return filters::Extents(std::span<const std::int64_t>(numbers.data(), rank));
}

/// The elements of `box` among those of `all`.
inline Bytes cropped(const Bytes& bytes, const filters::Box& all, const filters::Box& box, std::size_t elementBytes) {
  if (box.isEmpty()) return {};
  std::array<std::int64_t, filters::Extents::maxRank> start{};
  for (std::size_t d = 0; d < all.start.rank(); ++d) start[d] = box.start[d] - all.start[d];
  const filters::Extents offset = extentsOf(start, all.start.rank());
  const filters::Layout whole(all.extents);
  const std::int64_t first = whole.offsetOf(offset), width = box.extents[0];
  const auto size = static_cast<std::ptrdiff_t>(elementBytes);
  Bytes result;
  whole.part(offset, box.extents).forEachLine([&](std::ptrdiff_t line, std::ptrdiff_t /*number*/) {
    const auto from = bytes.begin() + (first + line) * size;
    result.insert(result.end(), from, from + width * size);
  });
  return result;
}

/// An object that was made for a job; a call runs it over one of `Places::count` sets of arrays with the same input.
using OpenJob = std::function<JobResult(std::size_t place)>;

struct RandomJob {
  std::string text;
  bool isFilter = true;         ///< it can be run for a region and for tiles
  filters::Box positions = {};  ///< of a filter
  std::function<OpenJob(const Variation&)> open;

  /// One run of an object of its own.
  JobResult run(const Variation& how) const { return open(how)(0); }
};

/// Arrays for runs at several addresses.
struct Places {
  static constexpr std::size_t count = 2;
  std::vector<ArrayStore> inputs, outputs;

  Places(const Bytes& values, const ArrayStore& input, const ArrayStore& output)
      : inputs(count, input), outputs(count, output) {
    for (ArrayStore& store : inputs) store.put(values);
  }
};

namespace random_jobs {

using namespace filters;

/// How values of T are kept in vectors.
template <class T>
using Stored = std::conditional_t<std::is_same_v<T, bool>, unsigned char, T>;

template <class T>
std::vector<Stored<T>> valuesOf(auto& random, const Extents& extents) {
  const auto count = static_cast<int>(elementCount(extents));
  if constexpr (std::is_integral_v<T>) {
    std::vector<Stored<T>> values;
    const int least = std::is_signed_v<T> ? -128 : 0, most = std::is_same_v<T, bool> ? 1 : least + 255;
    for (int i = 0; i < count; ++i) values.push_back(static_cast<Stored<T>>(pick(random, least, most)));
    return values;
  } else {
    return randomValues<T>(random, count, pick(random, 0, 3) == 0);
  }
}

inline Layout layoutOf(const Variation& how, const Extents& extents) {
  std::mt19937 gaps(static_cast<unsigned>(elementCount(extents)));
  return how.pitched ? randomLayout(gaps, extents) : Layout(extents);
}

template <class T>
ArrayView<T> viewOf(ArrayStore& store) {
  return {static_cast<T*>(store.data()), store.layout()};
}

template <class T>
std::vector<Stored<T>> elementsOf(const Bytes& bytes) {
  std::vector<Stored<T>> values(bytes.size() / sizeof(T));
  if (!bytes.empty()) std::memcpy(values.data(), bytes.data(), bytes.size());
  return values;
}

/// The input and the window of a job.
struct Geometry {
  Extents input, window;
  OutputMode mode;
  PadRule pad;

  Geometry(auto& random, std::size_t rank)
      : mode(static_cast<OutputMode>(pick(random, 0, 2))), pad(static_cast<PadRule>(pick(random, 0, 4))) {
    std::array<std::int64_t, Extents::maxRank> u{}, h{};
    for (std::size_t d = 0; d < rank; ++d) {
      const int size = rank > 2 ? 7 : d > 0 && pick(random, 0, 3) != 0 ? 12 : 40;
      u[d] = pick(random, 1, size);
      const int any = pick(random, 1, pick(random, 0, 4) == 0 ? size : 5);
      h[d] = mode == OutputMode::valid ? std::min<std::int64_t>(any, u[d]) : any;
    }
    input = Extents(std::span<const std::int64_t>(u.data(), rank));
    window = Extents(std::span<const std::int64_t>(h.data(), rank));
  }
  std::string text() const {
    return ": input " + toText(input) + ", window " + toText(window) + ", mode " +
           std::to_string(static_cast<int>(mode)) + ", pad " + std::to_string(static_cast<int>(pad));
  }
};

/// The part of the input that a run filters, and the region of its options.
struct Part {
  Box whole, part;
  std::optional<Box> region;

  Part(const Geometry& g, const Variation& how)
      : whole{extentsOf({}, g.input.rank()), g.input}, part(whole), region(how.region) {
    if (!how.asTile) return;
    const TileInput tile = tileInput(g.input, g.window, g.mode, g.pad, *how.region);
    part = tile.part;
    region = tile.region;
  }
  Bytes of(const Bytes& values, std::size_t elementBytes) const { return cropped(values, whole, part, elementBytes); }
};

template <class Options>
void vary(Options& options, const Variation& how, const std::optional<Box>& region) {
  options.threads = how.threads;
  if constexpr (requires { options.region = region; }) {
    options.region = region;
  } else if (region) {
    options.region = rectangleOf(*region);
  }
}

inline Box boxOfJob(const Rectangle& positions, std::size_t rank) { return boxOf(positions, rank); }
inline Box boxOfJob(const Box& positions, std::size_t /*rank*/) { return positions; }

/// A job over plain elements, which `make(options, extents of the input)` makes. Outputs of another type than that of
/// the sums are rounded.
template <class In, class Out, class Options, class Make>
RandomJob plainJob(auto& random, const std::string& name, const Geometry& g, const Options& options, const Make& make) {
  const Bytes values = bytesOf(valuesOf<In>(random, g.input));
  const auto open = [=](const Variation& how) -> OpenJob {
    const Part part(g, how);
    if (part.part.isEmpty()) return [=](std::size_t /*place*/) { return JobResult{part.part, sizeof(Out), {}}; };
    auto chosen = options;
    vary(chosen, how, part.region);
    auto job = std::make_shared<decltype(make(chosen, g.input))>(make(chosen, part.part.extents));
    const auto places =
        std::make_shared<Places>(part.of(values, sizeof(In)), ArrayStore(layoutOf(how, part.part.extents), sizeof(In)),
                                 ArrayStore(layoutOf(how, job->outputExtents()), sizeof(Out)));
    return [=](std::size_t place) {
      ArrayStore &input = places->inputs.at(place), &output = places->outputs.at(place);
      std::int64_t clipped = 0;
      if constexpr (requires { job->run(viewOf<const In>(input), viewOf<Out>(output)); }) {
        job->run(viewOf<const In>(input), viewOf<Out>(output));
      } else {
        clipped = job->runRounded(viewOf<const In>(input), viewOf<Out>(output));
      }
      const Bytes bytes = bytesOf(elementsOf<Out>(output.get()));
      const Box positions = boxOfJob(job->positions(), g.input.rank());
      return JobResult{positions, sizeof(Out), bytes, {}, output.othersAreUntouched(), clipped};
    };
  };
  return {name + g.text(), true, boxOfJob(make(options, g.input).positions(), g.input.rank()), open};
}

template <class In, class Tap, class Out = ConvolutionOutput<In, Tap>>
RandomJob convolution(auto& random) {
  const Geometry g(random, static_cast<std::size_t>(pick(random, 1, 4) == 1 ? 1 : 2));
  const ConvolutionOptions options{.direction = static_cast<FilterDirection>(pick(random, 0, 1)),
                                   .mode = g.mode,
                                   .pad = {g.pad, 0.75},
                                   .normalise = static_cast<Normalisation>(pick(random, 0, 3) == 0)};
  const auto taps = valuesOf<Tap>(random, g.window);
  return plainJob<In, Out>(random, "convolution", g, options, [=](const auto& chosen, const Extents& extents) {
    return Convolution<In, Tap>(ArrayView<const Tap>(taps, g.window), extents, chosen);
  });
}

template <class In, class Tap, class Out = ConvolutionOutput<In, Tap>>
RandomJob separable(auto& random) {
  const Geometry g(random, 2);
  const ConvolutionOptions options{
      .direction = static_cast<FilterDirection>(pick(random, 0, 1)), .mode = g.mode, .pad = {g.pad, 0.75}};
  const auto first = valuesOf<Tap>(random, {g.window[0]}), second = valuesOf<Tap>(random, {g.window[1]});
  return plainJob<In, Out>(random, "separable", g, options, [=](const auto& chosen, const Extents& extents) {
    return SeparableConvolution<In, Tap>(ArrayView<const Tap>(first, {first.size()}),
                                         ArrayView<const Tap>(second, {second.size()}), extents, chosen);
  });
}

template <class T>
RandomJob median(auto& random) {
  const Geometry g(random, static_cast<std::size_t>(pick(random, 1, 4) == 1 ? 1 : 2));
  const MedianOptions options{.mode = g.mode, .pad = {g.pad, 1}};
  return plainJob<T, T>(random, "median", g, options, [=](const auto& chosen, const Extents& extents) {
    return Median<T>(g.window, extents, chosen);
  });
}

template <class T>
RandomJob correlationND(auto& random) {
  const Geometry g(random, static_cast<std::size_t>(pick(random, 1, 4)));
  const CorrelationNDOptions options{.mode = g.mode, .pad = {g.pad, 0.75}};
  const auto taps = valuesOf<T>(random, g.window);
  return plainJob<T, T>(random, "correlation", g, options, [=](const auto& chosen, const Extents& extents) {
    return CorrelationND<T>(ArrayView<const T>(taps, g.window), extents, chosen);
  });
}

/// A job over fixed-point elements.
template <class Options, class Make>
RandomJob fixedJob(const std::string& name, const Geometry& g, const FixedArray& values, const FixedType& outputType,
                   bool outputIsComplex, const Options& options, const Make& make) {
  const auto open = [=](const Variation& how) -> OpenJob {
    const Part part(g, how);
    if (part.part.isEmpty()) return [=](std::size_t /*place*/) { return JobResult{part.part, 1, {}}; };
    auto chosen = options;
    vary(chosen, how, part.region);
    auto job = std::make_shared<decltype(make(chosen, g.input))>(make(chosen, part.part.extents));
    const auto bytesIn = static_cast<std::size_t>(detail::bytesOfValue(values.type(), values.isComplex()));
    const auto bytesOut = static_cast<std::size_t>(detail::bytesOfValue(outputType, outputIsComplex));
    const auto* const first = static_cast<const std::byte*>(values.data());
    const Bytes all(first, first + static_cast<std::size_t>(elementCount(g.input)) * bytesIn);
    const auto places =
        std::make_shared<Places>(part.of(all, bytesIn), ArrayStore(layoutOf(how, part.part.extents), bytesIn),
                                 ArrayStore(layoutOf(how, job->outputExtents()), bytesOut));
    return [=, type = values.type(), isComplex = values.isComplex()](std::size_t place) {
      ArrayStore &input = places->inputs.at(place), &output = places->outputs.at(place);
      job->run(FixedView(input.data(), input.layout(), type, isComplex),
               MutableFixedView(output.data(), output.layout(), outputType, outputIsComplex));
      const Bytes bytes = output.get();
      return JobResult{boxOf(job->positions()), bytesOut, bytes, job->statistics(), output.othersAreUntouched()};
    };
  };
  return {name + g.text(), true, boxOf(make(options, g.input).positions()), open};
}

inline FixedTypes fixedTypes(auto& random, const FixedType& filter) {
  FixedTypes types;
  types.input = randomType(random, 1, pick(random, 0, 4) == 0 ? 40 : 16);
  types.inputIsComplex = pick(random, 0, 4) == 0;
  types.accumulator = randomType(random, 4, pick(random, 0, 1) == 0 ? 32 : 60);
  types.output = randomType(random, 2, 30);
  types.modes = randomModes(random);
  if (pick(random, 0, 1) == 1) types.product = {pick(random, 3, 50), 4, types.input.isSigned || filter.isSigned};
  return types;
}

inline RandomJob fixedConvolution(auto& random) {
  const Geometry g(random, 2);
  const FixedType filterType = randomType(random, 1, pick(random, 0, 4) == 0 ? 34 : 12);
  const bool isNear = pick(random, 0, 1) == 0;
  FixedTypes types =
      isNear ? typesNear(random, filterType, static_cast<int>(elementCount(g.window))) : fixedTypes(random, filterType);
  ConvolutionOptions options{
      .direction = static_cast<FilterDirection>(pick(random, 0, 1)), .mode = g.mode, .pad = g.pad};
  if (!isNear && pick(random, 0, 3) == 0) {
    types.inputIsComplex = false;
    options.normalise = Normalisation::energy;
    types.sqrt = randomType(random, 2, 30);
  }
  const FixedArray taps = randomFixed(random, g.window, filterType);
  return fixedJob("fixed convolution", g, randomFixed(random, g.input, types.input, types.inputIsComplex), types.output,
                  types.inputIsComplex, options, [=](const auto& chosen, const Extents& extents) {
                    return FixedConvolution(taps, extents, types, chosen);
                  });
}

inline RandomJob fixedSeparable(auto& random) {
  const Geometry g(random, 2);
  const FixedType filterType = randomType(random, 1, 12);
  const FixedTypes types = fixedTypes(random, filterType);
  const FixedArray first = randomFixed(random, {g.window[0]}, filterType),
                   second = randomFixed(random, {g.window[1]}, filterType);
  return fixedJob("fixed separable", g, randomFixed(random, g.input, types.input, types.inputIsComplex), types.output,
                  types.inputIsComplex, ConvolutionOptions{.mode = g.mode, .pad = g.pad},
                  [=](const auto& chosen, const Extents& extents) {
                    return FixedSeparableConvolution(first, second, extents, types, chosen);
                  });
}

inline RandomJob fixedMedian(auto& random) {
  const Geometry g(random, 2);
  FixedMedianTypes types{.input = randomType(random, 1, 20), .modes = randomModes(random)};
  if (pick(random, 0, 1) == 0) types.input = {8 * pick(random, 1, 2), pick(random, 0, 4), pick(random, 0, 1) == 0};
  return fixedJob("fixed median", g, randomFixed(random, g.input, types.input), types.input, false,
                  MedianOptions{.mode = g.mode, .pad = g.pad}, [=](const auto& chosen, const Extents& extents) {
                    return FixedMedian(g.window, extents, types, chosen);
                  });
}

inline std::optional<Rectangle> randomRegion(auto& random, const Geometry& g) {
  if (pick(random, 0, 1) == 0) return std::nullopt;
  const auto width = static_cast<int>(g.input[0]), height = static_cast<int>(g.input[1]);
  return Rectangle{pick(random, -3, width), pick(random, -3, height), pick(random, 0, width + 3),
                   pick(random, 0, height + 3)};
}

inline MatchOptions matchOptions(auto& random, const Geometry& g) {
  return {.metric = static_cast<Metric>(pick(random, 0, 3)),
          .mode = g.mode,
          .search = static_cast<Search>(pick(random, 0, 2) == 0),
          .region = randomRegion(random, g),
          .neighbourhood = pick(random, 0, 3),
          .best = true,
          .map = pick(random, 0, 1) == 0};
}

/// What was found, as bytes.
template <class MatchT>
JobResult resultOf(const MatchT& match, const Bytes& scores) {
  JobResult result{boxOf(match.positions), 1, scores};
  for (const std::int64_t number : {std::int64_t{match.found}, match.location[0], match.location[1],
                                    std::int64_t{match.regionValid}, std::int64_t{match.neighbourhoodValid}}) {
    for (int shift = 0; shift < 64; shift += 8) result.bytes.push_back(static_cast<std::byte>(number >> shift & 0xFF));
  }
  return result;
}

template <class In, class Tap>
RandomJob matching(auto& random) {
  using Score = MatchScore<In, Tap>;
  const Geometry g(random, 2);
  MatchOptions options = matchOptions(random, g);
  if (std::is_same_v<Tap, In> && std::is_floating_point_v<In> && pick(random, 0, 1) == 0) {
    options.metric = pick(random, 0, 1) == 0 ? Metric::cosine : Metric::correlationCoefficient;
    options.search = Search::exhaustive;
  }
  constexpr bool isReal = std::is_floating_point_v<Score>;
  options.refine = isReal && options.neighbourhood % 3 == 0 && pick(random, 0, 1) == 0;
  const PeakOptions peaks{.count = 3, .distance = 2, .refine = options.refine};
  const Bytes values = bytesOf(valuesOf<In>(random, g.input)), pattern = bytesOf(valuesOf<Tap>(random, g.window));
  const auto open = [=](const Variation& how) -> OpenJob {
    ArrayStore image(layoutOf(how, g.input), sizeof(In)), taps(layoutOf(how, g.window), sizeof(Tap));
    taps.put(pattern);
    MatchOptions chosen = options;
    chosen.threads = how.threads;
    const auto matcher = std::make_shared<TemplateMatcher<In, Tap>>(viewOf<const Tap>(taps), g.input, chosen);
    const auto places = std::make_shared<Places>(values, image, taps);
    return [=](std::size_t place) {
      const auto match = matcher->run(viewOf<const In>(places->inputs.at(place)));
      std::vector<Score> scores(match.map.begin(), match.map.end());
      scores.insert(scores.end(), match.neighbourhood.begin(), match.neighbourhood.end());
      scores.push_back(match.score);
      if constexpr (isReal) {
        const auto put = [&](const std::array<double, 2>& spot) {
          for (const double at : spot) scores.push_back(static_cast<Score>(at));
        };
        put(match.refined);
        if (!options.map) return resultOf(match, bytesOf(scores));
        for (const Peak<Score>& peak : matches(match, peaks)) put(peak.refined);
      }
      return resultOf(match, bytesOf(scores));
    };
  };
  return {"matching" + g.text(), false, {}, open};
}

inline RandomJob fixedMatching(auto& random) {
  const Geometry g(random, 2);
  MatchOptions options = matchOptions(random, g);
  const FixedType patternType = randomType(random, 1, 12);
  FixedMatchTypes types{.input = randomType(random, 1, 16),
                        .accumulator = randomType(random, 8, 40),
                        .output = randomType(random, 2, 30),
                        .modes = randomModes(random)};
  types.accumulator.isSigned = types.accumulator.isSigned || options.metric == Metric::ssd;
  const FixedArray values = randomFixed(random, g.input, types.input),
                   taps = randomFixed(random, g.window, patternType);
  const auto open = [=](const Variation& how) -> OpenJob {
    const auto bytes = static_cast<std::size_t>(detail::bytesOfValue(types.input, false));
    const ArrayStore image(layoutOf(how, g.input), bytes);
    const auto* const first = static_cast<const std::byte*>(values.data());
    const Bytes all(first, first + static_cast<std::size_t>(elementCount(g.input)) * bytes);
    MatchOptions chosen = options;
    chosen.threads = how.threads;
    const auto matcher = std::make_shared<FixedTemplateMatcher>(taps, g.input, types, chosen);
    const auto places = std::make_shared<Places>(all, image, image);
    return [=](std::size_t place) {
      ArrayStore& input = places->inputs.at(place);
      const FixedMatch match = matcher->run(FixedView(input.data(), input.layout(), types.input));
      Bytes scores;
      for (const FixedArray* array : {&match.map, &match.neighbourhood}) {
        const auto* const from = static_cast<const std::byte*>(array->data());
        scores.insert(scores.end(), from, from + detail::bytesOf(array->extents(), array->type(), false));
      }
      JobResult result = resultOf(match, scores);
      result.statistics = matcher->statistics();
      return result;
    };
  };
  return {"fixed matching" + g.text(), false, {}, open};
}

}  // namespace random_jobs

/// A random box of positions, which can reach beyond those of the job.
inline filters::Box randomBox(auto& random, const filters::Box& all, int most) {
  std::array<std::int64_t, filters::Extents::maxRank> start{}, extents{};
  const std::size_t rank = all.start.rank();
  for (std::size_t d = 0; d < rank; ++d) {
    const int extent = static_cast<int>(all.extents[d]);
    start[d] = all.start[d] + pick(random, -2, extent);
    extents[d] = pick(random, 0, std::min(most, extent + 4));
  }
  return {extentsOf(start, rank), extentsOf(extents, rank)};
}

/// The number of kinds of jobs.
inline constexpr int jobKinds = 28;

inline RandomJob randomJob(auto& random, int kind) {
  using namespace random_jobs;
  using C64 = std::complex<float>;
  switch (kind) {
    case 0: return convolution<float, float>(random);
    case 1: return convolution<double, double>(random);
    case 2: return convolution<C64, float>(random);
    case 3: return convolution<float, C64>(random);
    case 4: return separable<float, float>(random);
    case 5: return separable<double, std::complex<double>>(random);
    case 6: return separable<C64, C64>(random);
    case 7: return median<float>(random);
    case 8: return median<double>(random);
    case 9: return median<bool>(random);
    case 10: return correlationND<float>(random);
    case 11: return fixedConvolution(random);
    case 12: return fixedSeparable(random);
    case 13: return fixedMedian(random);
    case 14: return matching<float, float>(random);
    case 15: return matching<C64, float>(random);
    case 16: return matching<bool, bool>(random);
    case 17: return convolution<std::uint8_t, float>(random);
    case 18: return separable<std::int16_t, double>(random);
    case 19: return fixedMatching(random);
    case 20: return correlationND<double>(random);
    case 21: return median<std::uint8_t>(random);
    case 22: return median<std::int16_t>(random);
    case 23: return median<std::uint32_t>(random);
    case 24: return matching<std::uint8_t, float>(random);
    case 25: return convolution<std::uint8_t, float, std::uint8_t>(random);
    case 26: return separable<std::uint16_t, double, std::int8_t>(random);
    default: return convolution<std::complex<double>, std::complex<double>>(random);
  }
}

/// A job of a random kind.
inline RandomJob randomJob(auto& random) { return randomJob(random, pick(random, 0, jobKinds - 1)); }

}  // namespace BP::test
