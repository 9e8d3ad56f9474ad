#include "tool/filter_image.h"

#include <array>
#include <cmath>
#include <cstddef>
#include <stdexcept>
#include <string>
#include <vector>

#include "orvane/convcorr/conv_corr_tolk.h"
#include "orvane/host/reference_host.h"

namespace BP::tool {

namespace {

std::string extents(int width, int height) { return std::to_string(width) + "x" + std::to_string(height); }

void checkFits(const Image& image, const Kernel& kernel) {
  if (kernel.width > image.width || kernel.height > image.height) {
    throw std::runtime_error("the kernel of " + extents(kernel.width, kernel.height) + " is larger than the image of " +
                             extents(image.width, image.height));
  }
}

/// Refuses what could overflow to infinity, and from there to a sum that is no number.
void checkRange(const Image& image, const Kernel& kernel, const SampleScaling& scaling) {
  constexpr double most = 1e300;
  double reach = 0;
  for (double element : kernel.elements) reach += std::fabs(element);
  reach *= image.maximum();
  const double scaled = reach * std::fabs(scaling.scale) + std::fabs(scaling.offset);
  if (!(reach <= most && scaled <= most)) {
    throw std::runtime_error("kernel, scale and offset are too large: sums could exceed 1e300");
  }
}

/// A front for planes of one size, with its host and its arrays.
class PlaneFilter {
 public:
  PlaneFilter(const Image& image, const Kernel& kernel, AlgorithmModeEnum mode)
      : filterDims{kernel.width, kernel.height},
        inputDims{image.width, image.height},
        filter(kernel.elements),
        input(image.pixels()),
        output(static_cast<std::size_t>(image.width - kernel.width + 1) *
               static_cast<std::size_t>(image.height - kernel.height + 1)),
        front(host.getAdaptor(), 2, filterDims.data(), 2, inputDims.data(), PadTypeConstant, OutputModeValid, mode,
              NormNone, false) {
    host.provideWorkVectors(front.getAllocator());
    const double padValue = 0;
    front.setup(filter.data(), input.data(), output.data(), &padValue, false);
  }

  /// The filtered channel of `image`.
  const std::vector<double>& run(const Image& image, int channel) {
    std::size_t from = static_cast<std::size_t>(channel);
    for (double& value : input) {
      value = image.samples[from];
      from += static_cast<std::size_t>(image.channels);
    }
    front.computeOutputs();
    if (!host.getMessages().empty()) throw std::runtime_error(host.getMessages().front());
    return output;
  }

 private:
  std::array<int, 2> filterDims;
  std::array<int, 2> inputDims;
  std::vector<double> filter;
  std::vector<double> input;
  std::vector<double> output;
  ReferenceHost host;
  ConvCorrTolk<double, double, double> front;
};

/// Writes `sums` into a channel of `result`.
void storeChannel(FilteredImage& result, int channel, const std::vector<double>& sums, const SampleScaling& scaling) {
  const double maximum = result.image.maximum();
  std::size_t to = static_cast<std::size_t>(channel);
  for (double sum : sums) {
    const double rounded = std::nearbyint(sum * scaling.scale + scaling.offset);
    const bool below = rounded < 0;
    const bool above = rounded > maximum;
    if (below || above) ++result.clipped;
    result.image.samples[to] = static_cast<std::uint16_t>(below ? 0 : above ? maximum : rounded);
    to += static_cast<std::size_t>(result.image.channels);
  }
}

void cropAlpha(const Image& image, const Kernel& kernel, Image& result) {
  const int left = (kernel.width - 1) / 2;
  const int up = (kernel.height - 1) / 2;
  const int alpha = image.channels - 1;
  for (int y = 0; y < result.height; ++y) {
    for (int x = 0; x < result.width; ++x) {
      result.samples[result.at(x, y, alpha)] = image.samples[image.at(x + left, y + up, alpha)];
    }
  }
}

}  // namespace

FilteredImage filterImage(const Image& image, const Kernel& kernel, AlgorithmModeEnum mode,
                          const SampleScaling& scaling) {
  checkFits(image, kernel);
  checkRange(image, kernel, scaling);
  FilteredImage result;
  result.image =
      makeImage(image.width - kernel.width + 1, image.height - kernel.height + 1, image.channels, image.bitDepth);
  PlaneFilter filter(image, kernel, mode);
  for (int c = 0; c < image.colours(); ++c) storeChannel(result, c, filter.run(image, c), scaling);
  if (image.hasAlpha()) cropAlpha(image, kernel, result.image);
  return result;
}

}  // namespace BP::tool
