#include "tool/median.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <utility>

#include "orvane/filters/median.h"
#include "tool/fixed_types.h"
#include "tool/plane_store.h"
#include "tool/text.h"

namespace BP::tool {

namespace {

using filters::ArrayView;
using filters::Extents;

/// The largest whole number for which `double` represents the mean of two, also if it ends in a half.
constexpr double maxWhole = 0x1p52;

/// The range of the elements that a constant pad may yield.
struct PadRange {
  double min;
  double max;
  bool isWhole;
};

/// Refuses a pad value that the elements cannot have; `what` names them in the error.
void checkPad(const EdgeSettings& edges, const PadRange& range, const std::string& what) {
  const double value = edges.pad.value.real(), imaginary = edges.pad.value.imag();
  const bool isNumber = value == std::nearbyint(value);
  if (imaginary == 0 && value >= range.min && value <= range.max && (isNumber || !range.isWhole)) return;
  throw std::runtime_error("--pad 'constant:" + numberText(value) +
                           (imaginary == 0 ? "" : "," + numberText(imaginary)) + "': " + what + " take a " +
                           (range.isWhole ? "whole" : "real") + " number of " + numberText(range.min) + " to " +
                           numberText(range.max));
}

void checkPad(const PictureHeader& in, const EdgeSettings& edges) {
  if (in.isBilevel) return checkPad(edges, {0, 1, true}, "pictures of one bit");
  const std::string what = in.isArray() || !isWhole(in.type)
                               ? "elements of type " + std::string(nameOf(in.type))
                               : "samples of " + std::to_string(8 * sizeOf(in.type)) + " bits";
  if (isWhole(in.type)) {
    const auto [least, greatest] = rangeOf(in.type);
    return checkPad(edges, {std::max(least, -maxWhole), std::min(greatest, maxWhole), true}, what);
  }
  const bool isFloat = in.type == ElementType::float32;
  const double most =
      isFloat ? static_cast<double>(std::numeric_limits<float>::max()) : std::numeric_limits<double>::max();
  checkPad(edges, {-most, most, false}, what);
}

void refuseComplex(ElementType type) {
  if (!isComplex(type)) return;
  throw std::runtime_error("the elements are of type " + std::string(nameOf(type)) +
                           ", which have no order; allowed are bool, whole numbers, float32 and float64");
}

void checkWhole(ArrayView<const double> plane, ElementType type) {
  const double* const first = plane.data();
  const double* const end = first + filters::elementCount(plane.extents());
  if (std::all_of(first, end, [](double v) { return std::fabs(v) <= maxWhole; })) return;
  throw std::runtime_error("elements of type " + std::string(nameOf(type)) +
                           " are too large for an exact median; allowed are -2^52 to 2^52, or float64");
}

/// Medians in the type Work.
template <class Work>
PlaneMaker<Work> makerOf(const MedianSettings& settings, ElementType type) {
  return [settings, type](const PlanePart& part) -> PlaneRun<Work> {
    const EdgeSettings& edges = settings.edges;
    const auto median = std::make_shared<filters::Median<Work>>(
        Extents{settings.width, settings.height}, part.extents,
        filters::MedianOptions{.mode = edges.mode, .pad = edges.pad, .region = part.region});
    const bool isLong = sizeOf(type) == 8 && isWhole(type);
    return [=](ArrayView<const Work> in, ArrayView<Work> out) {
      if constexpr (std::is_same_v<Work, double>) {
        if (isLong) checkWhole(in, type);
      }
      median->run(in, out);
    };
  };
}

/// A median as a sample of type To.
template <class Work, class To>
PlaneStore<Work> storeOf(int channels, bool isBilevel) {
  const auto step = static_cast<std::size_t>(channels);
  return [=](const Work* from, std::size_t count, std::uint8_t* bytes, SampleCounts& counts) {
    auto* const to = reinterpret_cast<To*>(bytes);
    for (std::size_t i = 0; i < count; ++i) {
      if constexpr (std::is_same_v<Work, bool>) {
        to[i * step] = static_cast<To>(from[i] ? (isBilevel ? 255 : 1) : 0);
      } else if constexpr (std::is_same_v<Work, To>) {
        to[i * step] = from[i];
      } else {
        const Work whole = std::nearbyint(from[i]);
        counts.rounded += whole != from[i] ? 1 : 0;
        to[i * step] = static_cast<To>(whole);
      }
    }
  };
}

}  // namespace

std::unique_ptr<BandFilter> makeMedianFilter(const BandShape& shape, const MedianSettings& settings) {
  const PictureHeader& in = shape.in;
  refuseComplex(in.type);
  checkPad(in, settings.edges);
  if (in.isBilevel || in.type == ElementType::boolean) {
    return makeBandFilter<bool>(shape, makerOf<bool>(settings, in.type),
                                storeOf<bool, std::uint8_t>(in.channels, in.isBilevel));
  }
  return visitType(in.type, [&](auto zero) -> std::unique_ptr<BandFilter> {
    using Sample = decltype(zero);
    if constexpr (IsComplex<Sample>::value) {
      throw std::logic_error("complex elements have no median");
    } else {
      if constexpr (filters::StoredInteger<Sample>) {
        const bool isOdd = settings.width % 2 == 1 && settings.height % 2 == 1;
        if (isOdd) {
          return makeBandFilter<Sample>(shape, makerOf<Sample>(settings, in.type),
                                        storeOf<Sample, Sample>(in.channels, false));
        }
      }
      // The type in which the median of these samples is exact.
      using Work = std::conditional_t<std::is_integral_v<Sample>,
                                      std::conditional_t<sizeof(Sample) <= 2, float, double>, Sample>;
      return makeBandFilter<Work>(shape, makerOf<Work>(settings, in.type), storeOf<Work, Sample>(in.channels, false));
    }
  });
}

FixedPlaneFilters::Maker fixedMedianMaker(const PictureHeader& in, const MedianSettings& settings) {
  refuseComplex(in.type);
  const EdgeSettings& edges = settings.edges;
  constexpr double maxDouble = std::numeric_limits<double>::max();
  checkPad(edges, {-maxDouble, maxDouble, false}, "values in fixed point");
  checkFixedPad(edges.mode, edges.pad, settings.fixed->input);
  return [settings](const PlanePart& part) -> FixedPlaneFilter {
    filters::FixedMedian median({settings.width, settings.height}, part.extents, *settings.fixed,
                                {.mode = settings.edges.mode, .pad = settings.edges.pad, .region = part.region});
    return {std::move(median), *settings.fixed, part};
  };
}

}  // namespace BP::tool
