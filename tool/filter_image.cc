#include "tool/filter_image.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <stdexcept>
#include <utility>

#include "tool/channels.h"

namespace BP::tool {

namespace {

/// Refuses settings whose sums could overflow to infinity: the difference of two infinities is no number.
void checkRange(const Image& image, const FilterSettings& settings, const SampleScaling& scaling) {
  constexpr double maxDouble = 1e300;
  const bool isFloat = settings.sumType == ElementType::float32;
  const double maxSum = isFloat ? 1e37 : maxDouble;
  double reach = std::max(static_cast<double>(image.maximum()), std::abs(settings.options.padValue));
  for (const FilterKernel& kernel : settings.kernels) {
    double sum = 0;
    for (const double element : kernel.elements) sum += std::fabs(element);
    reach *= sum;
  }
  const bool squares = settings.options.normalise == filters::Normalisation::energy;
  const double scaled = reach * std::fabs(scaling.scale) + std::fabs(scaling.offset);
  if (reach <= maxSum && scaled <= maxDouble && (!squares || reach * reach <= maxSum)) return;
  throw std::runtime_error(std::string("kernel, scale, offset or pad value are too large: sums could exceed ") +
                           (isFloat ? "1e37" : "1e300"));
}

/// The sample for a sum; counts it if it is clipped.
std::uint16_t sampleOf(double sum, const SampleScaling& scaling, FilteredImage& result) {
  const double maximum = result.image.maximum();
  const double rounded = std::nearbyint(sum * scaling.scale + scaling.offset);
  if (!std::isfinite(rounded)) throw std::runtime_error("an output is beyond 1.8e308, the range of float64");
  const bool below = rounded < 0;
  const bool above = rounded > maximum;
  if (below || above) ++result.clipped;
  return static_cast<std::uint16_t>(below ? 0 : above ? maximum : rounded);
}

/// Writes `sums` into a channel of `result`.
template <class T>
void storeSums(FilteredImage& result, int channel, const filters::Array<T>& sums, const SampleScaling& scaling) {
  storeChannel(result.image, channel, sums, [&](T sum) { return sampleOf(static_cast<double>(sum), scaling, result); });
}

template <class T>
void filterColours(const Image& image, const FilterSettings& settings, const SampleScaling& scaling,
                   FilteredImage& result) {
  const PlaneFilter<T> filter = makePlaneFilter<T>(settings, {image.width, image.height});
  for (int c = 0; c < image.colours(); ++c) storeSums(result, c, filter(channelOf<T>(image, c)), scaling);
}

}  // namespace

FilteredImage filterImage(const Image& image, const FilterSettings& settings, const SampleScaling& scaling) {
  if (settings.options.padValue.imag() != 0) throw std::runtime_error("--pad: pictures take a real value, constant:V");
  if (!settings.fixed) checkRange(image, settings, scaling);
  const filters::ConvolutionOptions& options = settings.options;
  FilteredImage result;
  result.image =
      makeOutput(image, {settings.windowWidth(), settings.windowHeight(), options.mode, options.pad}, "kernel");
  if (settings.fixed) {
    FixedPlaneFilter filter(settings, {image.width, image.height}, false);
    return filterImageFixed(image, std::move(result.image), filter, scaling);
  }
  if (settings.sumType == ElementType::float32) {
    filterColours<float>(image, settings, scaling, result);
  } else {
    filterColours<double>(image, settings, scaling, result);
  }
  return result;
}

FilteredImage filterImageFixed(const Image& image, Image output, FixedPlaneFilter& filter,
                               const SampleScaling& scaling) {
  FilteredImage result;
  result.image = std::move(output);
  for (int c = 0; c < image.colours(); ++c) {
    const auto plane = channelOf<double>(image, c);
    storeSums(result, c, filter.run<double>(plane), scaling);
  }
  result.fixedTable = filter.table();
  return result;
}

}  // namespace BP::tool
