#include "tool/filter_image.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <stdexcept>
#include <utility>

#include "orvane/filters/convolution.h"
#include "tool/plane_filter.h"

namespace BP::tool {

namespace {

using filters::Extents;

std::string sides(int width, int height) { return std::to_string(width) + "x" + std::to_string(height); }

void checkFits(const Image& image, const FilterSettings& settings) {
  const int width = settings.windowWidth(), height = settings.windowHeight();
  if (settings.options.mode == filters::OutputMode::valid && (width > image.width || height > image.height)) {
    throw std::runtime_error("the kernel of " + sides(width, height) + " is larger than the image of " +
                             sides(image.width, image.height) + "; with --mode same or full it may be");
  }
}

/// Refuses what could overflow to infinity, and from there to a sum that is no number.
void checkRange(const Image& image, const FilterSettings& settings, const SampleScaling& scaling) {
  constexpr double greatest = 1e300;
  const bool isFloat = settings.sumType == ElementType::float32;
  const double most = isFloat ? 1e37 : greatest;
  double reach = std::max(static_cast<double>(image.maximum()), std::abs(settings.options.padValue));
  for (const Kernel& kernel : settings.kernels) {
    double sum = 0;
    for (const double element : kernel.elements) sum += std::fabs(element);
    reach *= sum;
  }
  const bool squares = settings.options.normalise == filters::Normalisation::energy;
  const double scaled = reach * std::fabs(scaling.scale) + std::fabs(scaling.offset);
  if (reach <= most && scaled <= greatest && (!squares || reach * reach <= most)) return;
  throw std::runtime_error(std::string("kernel, scale, offset or pad value are too large: sums could exceed ") +
                           (isFloat ? "1e37" : "1e300"));
}

/// A channel as a plane of elements T, dimension 0 from left to right.
template <class T>
filters::Array<T> channelOf(const Image& image, int channel) {
  filters::Array<T> plane({image.width, image.height});
  std::size_t from = static_cast<std::size_t>(channel);
  for (T& value : plane) {
    value = static_cast<T>(image.samples[from]);
    from += static_cast<std::size_t>(image.channels);
  }
  return plane;
}

/// Writes `sums` into a channel of `result`.
template <class T>
void storeChannel(FilteredImage& result, int channel, const filters::Array<T>& sums, const SampleScaling& scaling) {
  const double maximum = result.image.maximum();
  std::size_t to = static_cast<std::size_t>(channel);
  for (const T sum : sums) {
    const double rounded = std::nearbyint(static_cast<double>(sum) * scaling.scale + scaling.offset);
    if (!std::isfinite(rounded)) throw std::runtime_error("an output is not finite; --scale-output is too large");
    const bool below = rounded < 0;
    const bool above = rounded > maximum;
    if (below || above) ++result.clipped;
    result.image.samples[to] = static_cast<std::uint16_t>(below ? 0 : above ? maximum : rounded);
    to += static_cast<std::size_t>(result.image.channels);
  }
}

template <class T>
void filterColours(const Image& image, const FilterSettings& settings, const SampleScaling& scaling,
                   FilteredImage& result) {
  const PlaneFilter<T> filter = makePlaneFilter<T>(settings, {image.width, image.height});
  for (int c = 0; c < image.colours(); ++c) storeChannel(result, c, filter(channelOf<T>(image, c)), scaling);
}

void filterColoursFixed(const Image& image, const FilterSettings& settings, const SampleScaling& scaling,
                        FilteredImage& result) {
  FixedPlaneFilter filter(settings, {image.width, image.height}, false);
  for (int c = 0; c < image.colours(); ++c) {
    const auto plane = channelOf<double>(image, c);
    storeChannel(result, c, filter.run<double>(plane), scaling);
  }
  result.fixedTable = filter.table();
}

/// A line of `side` elements with a one where a window has its centre.
Kernel centreOf(int side) {
  Kernel line{side, 1, std::vector<double>(static_cast<std::size_t>(side))};
  line.elements[static_cast<std::size_t>((side - 1) / 2)] = 1;
  return line;
}

/// Alpha of the pixel under the centre, by a window that picks it.
void placeAlpha(const Image& image, const FilterSettings& settings, FilteredImage& result) {
  FilterSettings pick;
  pick.options = {
      .direction = filters::Direction::correlation, .mode = settings.options.mode, .pad = settings.options.pad};
  pick.kernels = {centreOf(settings.windowWidth()), centreOf(settings.windowHeight())};
  std::swap(pick.kernels.back().width, pick.kernels.back().height);
  const int alpha = image.channels - 1;
  const PlaneFilter<float> filter = makePlaneFilter<float>(pick, {image.width, image.height});
  storeChannel(result, alpha, filter(channelOf<float>(image, alpha)), {});
}

}  // namespace

FilteredImage filterImage(const Image& image, const FilterSettings& settings, const SampleScaling& scaling) {
  if (settings.options.padValue.imag() != 0) throw std::runtime_error("--pad: pictures take a real value, constant:V");
  checkFits(image, settings);
  if (!settings.fixed) checkRange(image, settings, scaling);
  const Extents extents = filters::outputExtents(
      {image.width, image.height}, {settings.windowWidth(), settings.windowHeight()}, settings.options.mode);
  FilteredImage result;
  result.image = makeImage(static_cast<int>(extents[0]), static_cast<int>(extents[1]), image.channels, image.bitDepth);
  if (settings.fixed) {
    filterColoursFixed(image, settings, scaling, result);
  } else if (settings.sumType == ElementType::float32) {
    filterColours<float>(image, settings, scaling, result);
  } else {
    filterColours<double>(image, settings, scaling, result);
  }
  if (image.hasAlpha()) placeAlpha(image, settings, result);
  return result;
}

}  // namespace BP::tool
