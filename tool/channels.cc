#include "tool/channels.h"

#include <stdexcept>
#include <utility>
#include <vector>

#include "orvane/filters/convolution.h"
#include "tool/plane_filter.h"

namespace BP::tool {

namespace {

std::string sides(int width, int height) { return std::to_string(width) + "x" + std::to_string(height); }

void checkFits(const Image& image, const Window& window, const std::string& name) {
  if (window.mode != filters::OutputMode::valid) return;
  if (window.width <= image.width && window.height <= image.height) return;
  throw std::runtime_error("the " + name + " of " + sides(window.width, window.height) +
                           " is larger than the image of " + sides(image.width, image.height) +
                           "; with --mode same or full it may be");
}

/// A line of `side` elements: 1 at the centre of a window of this side, 0 elsewhere.
FilterKernel centreOf(int side) {
  FilterKernel line{side, 1, std::vector<double>(static_cast<std::size_t>(side))};
  line.elements[static_cast<std::size_t>((side - 1) / 2)] = 1;
  return line;
}

/// Sets alpha to that of the pixel under the centre, by a filter that is 1 there.
void placeAlpha(const Image& image, const Window& window, Image& output) {
  FilterSettings pick;
  pick.options = {.direction = filters::FilterDirection::correlation, .mode = window.mode, .pad = window.pad};
  pick.kernels = {centreOf(window.width), centreOf(window.height)};
  std::swap(pick.kernels.back().width, pick.kernels.back().height);
  const int alpha = image.channels - 1;
  const PlaneFilter<float> filter = makePlaneFilter<float>(pick, {image.width, image.height});
  storeChannel(output, alpha, filter(channelOf<float>(image, alpha)), [](float value) { return value; });
}

}  // namespace

Image makeOutput(const Image& image, const Window& window, const std::string& name) {
  checkFits(image, window, name);
  const filters::Extents extents =
      filters::outputExtents({image.width, image.height}, {window.width, window.height}, window.mode);
  Image output = makeImage(static_cast<int>(extents[0]), static_cast<int>(extents[1]), image.channels, image.bitDepth);
  if (image.hasAlpha()) placeAlpha(image, window, output);
  return output;
}

}  // namespace BP::tool
