#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "orvane/filters/array.h"
#include "orvane/filters/options.h"
#include "tool/image.h"

namespace BP::tool {

/// A window that moves over a picture.
struct Window {
  int width = 0;
  int height = 0;
  filters::OutputMode mode = filters::OutputMode::valid;
  filters::PadRule pad = filters::PadRule::constant;
};

/// The picture for the outputs of `window` over `image`. The mode gives its extents; bit depth and channels are those
/// of `image`; colours are 0 and alpha is complete. `isBilevel` is false.
///
/// Alpha is not filtered: each output gets the alpha of the pixel under the window's centre (for an even side, the one
/// of the two further left or up). So mode valid crops alpha, same copies it, and full takes values beyond the edge by
/// the rule of the pad, which is 0 for a constant pad.
///
/// Throws `std::runtime_error` if the window does not fit; `name` is what the error calls it.
Image makeOutput(const Image& image, const Window& window, const std::string& name);

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

/// Writes toSample(value) for each value of `plane`, which has the picture's extents, into a channel.
template <class T, class ToSample>
void storeChannel(Image& image, int channel, const filters::Array<T>& plane, const ToSample& toSample) {
  std::size_t to = static_cast<std::size_t>(channel);
  for (const T value : plane) {
    image.samples[to] = static_cast<std::uint16_t>(toSample(value));
    to += static_cast<std::size_t>(image.channels);
  }
}

}  // namespace BP::tool
