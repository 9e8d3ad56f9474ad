#include "tool/median.h"

#include <algorithm>
#include <cmath>
#include <complex>
#include <limits>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <utility>

#include "orvane/filters/median.h"
#include "tool/channels.h"
#include "tool/fixed_types.h"
#include "tool/text.h"

namespace BP::tool {

namespace {

using filters::Extents;

/// The largest whole number for which `double` represents the mean of two, also if it ends in a half.
constexpr std::int64_t maxWhole = std::int64_t{1} << 52;

/// The range of the elements that a constant pad may yield.
struct PadRange {
  double min;
  double max;
  bool isWhole;
};

/// Refuses a pad value that the elements cannot have; `what` names them in the error.
void checkPad(const EdgeSettings& edges, const PadRange& range, const std::string& what) {
  const double value = edges.padValue.real(), imaginary = edges.padValue.imag();
  const bool isWhole = value == std::nearbyint(value);
  if (imaginary == 0 && value >= range.min && value <= range.max && (isWhole || !range.isWhole)) return;
  throw std::runtime_error("--pad 'constant:" + numberText(value) +
                           (imaginary == 0 ? "" : "," + numberText(imaginary)) + "': " + what + " take a " +
                           (range.isWhole ? "whole" : "real") + " number of " + numberText(range.min) + " to " +
                           numberText(range.max));
}

template <class T>
filters::Median<T> makeMedian(const MedianSettings& settings, const Extents& extents) {
  const EdgeSettings& edges = settings.edges;
  return {Extents(settings.window),
          extents,
          {.mode = edges.mode, .pad = edges.pad, .padValue = static_cast<T>(edges.padValue.real())}};
}

FixedPlaneFilter makeFixed(const MedianSettings& settings, const Extents& extents) {
  const EdgeSettings& edges = settings.edges;
  constexpr double maxDouble = std::numeric_limits<double>::max();
  checkPad(edges, {-maxDouble, maxDouble, false}, "values in fixed point");
  checkFixedPad(edges.mode, edges.pad, edges.padValue, settings.fixed->input);
  filters::FixedMedian median(Extents(settings.window), extents, *settings.fixed,
                              {.mode = edges.mode, .pad = edges.pad, .padValue = edges.padValue.real()});
  return {std::move(median), *settings.fixed};
}

template <class T, class ToSample>
void filterColours(const Image& image, const MedianSettings& settings, Image& output, const ToSample& toSample) {
  auto median = makeMedian<T>(settings, {image.width, image.height});
  for (int c = 0; c < image.colours(); ++c) storeChannel(output, c, median.run(channelOf<T>(image, c)), toSample);
}

/// The type in which the median of elements T is exact.
template <class T>
using Exact = std::conditional_t<std::is_integral_v<T>, std::conditional_t<sizeof(T) <= 2, float, double>, T>;

template <class T>
PadRange padRangeOf() {
  using Limits = std::numeric_limits<T>;
  constexpr auto whole = static_cast<double>(maxWhole);
  const auto min = static_cast<double>(Limits::lowest()), max = static_cast<double>(Limits::max());
  if (!Limits::is_integer) return {min, max, false};
  return {std::max(min, -whole), std::min(max, whole), true};
}

template <class T>
void checkWhole(const T* elements, std::size_t count, ElementType type) {
  const auto beyond = std::count_if(elements, elements + count, [](T element) {
    return std::cmp_greater(element, maxWhole) || std::cmp_less(element, -maxWhole);
  });
  if (beyond == 0) return;
  throw std::runtime_error(std::to_string(beyond) + " of " + std::to_string(count) + " elements of type " +
                           std::string(nameOf(type)) +
                           " are too large for an exact median; allowed are -2^52 to 2^52, or float64");
}

/// Filters the elements, of type Stored in the array, in type Work.
template <class Work, class Stored>
void medianInto(FilteredArray& result, const Array& input, const Stored* elements, const MedianSettings& settings) {
  const Extents extents = planeExtents(input);
  filters::Array<Work> plane(extents);
  std::transform(elements, elements + plane.size(), plane.begin(), [](Stored v) { return static_cast<Work>(v); });
  const filters::Array<Work> medians = makeMedian<Work>(settings, extents).run(plane);

  result.array = {input.type, {medians.extents().begin(), medians.extents().end()}, {}};
  result.array.bytes.resize(medians.size() * sizeof(Stored));
  std::ranges::transform(medians, result.array.as<Stored>(), [&](Work median) {
    if constexpr (std::is_same_v<Work, Stored> || std::is_same_v<Work, bool>) return static_cast<Stored>(median);
    const Work whole = static_cast<Work>(std::nearbyint(median));
    if (whole != median) ++result.rounded;
    return static_cast<Stored>(whole);
  });
}

template <class T>
void filterElements(FilteredArray& result, const Array& input, const T* elements, const MedianSettings& settings) {
  checkPad(settings.edges, padRangeOf<T>(), "elements of type " + std::string(nameOf(input.type)));
  if constexpr (std::is_integral_v<T> && sizeof(T) == 8) checkWhole(elements, input.elements(), input.type);
  medianInto<Exact<T>>(result, input, elements, settings);
}

[[noreturn]] void refuseComplex(const Array& input) {
  throw std::runtime_error("the array has elements of type " + std::string(nameOf(input.type)) +
                           ", which have no order; allowed are bool, whole numbers, float32 and float64");
}

template <class T>
void filterElements(FilteredArray&, const Array& input, const std::complex<T>*, const MedianSettings&) {
  refuseComplex(input);
}

}  // namespace

FilteredImage medianImage(const Image& image, const MedianSettings& settings) {
  if (settings.window.size() != 2) throw std::runtime_error("--window: pictures take WIDTHxHEIGHT, such as 5x5");
  const EdgeSettings& edges = settings.edges;
  const int width = static_cast<int>(settings.window[0]), height = static_cast<int>(settings.window[1]);
  FilteredImage result;
  if (settings.fixed) {
    Image output = makeOutput(image, {width, height, edges.mode, edges.pad}, "window");
    FixedPlaneFilter filter = makeFixed(settings, {image.width, image.height});
    return filterImageFixed(image, std::move(output), filter);
  }
  const int maxSample = image.isBilevel ? 1 : image.maximum();
  checkPad(edges, {0, static_cast<double>(maxSample), true},
           image.isBilevel ? "pictures of one bit" : "samples of " + std::to_string(image.bitDepth) + " bits");
  result.image = makeOutput(image, {width, height, edges.mode, edges.pad}, "window");
  result.image.isBilevel = image.isBilevel;
  if (image.isBilevel) {
    filterColours<bool>(image, settings, result.image, [&](bool isWhite) { return isWhite ? image.maximum() : 0; });
  } else {
    filterColours<float>(image, settings, result.image, [](float median) { return std::nearbyint(median); });
  }
  return result;
}

FilteredArray medianArray(const Array& input, const MedianSettings& settings) {
  FilteredArray result;
  if (settings.fixed) {
    if (input.type == ElementType::complex64 || input.type == ElementType::complex128) refuseComplex(input);
    FixedPlaneFilter filter = makeFixed(settings, planeExtents(input));
    return filterArrayFixed(input, filter);
  }
  if (input.type == ElementType::boolean) {
    checkPad(settings.edges, {0, 1, true}, "elements of type bool");
    medianInto<bool>(result, input, input.as<std::uint8_t>(), settings);
  } else {
    visitElements(input, [&](const auto* elements) { filterElements(result, input, elements, settings); });
  }
  return result;
}

}  // namespace BP::tool
