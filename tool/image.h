#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace BP::tool {

/// A picture whose samples are whole numbers.
///
/// Sample c of the pixel in column x and row y, row 0 on top, stands at (y * width + x) * channels + c and lies in
/// 0..maximum(). Channels are grey (1), grey and alpha (2), red, green, blue (3), or these and alpha (4).
struct Image {
  int width = 0;
  int height = 0;
  int channels = 1;
  int bitDepth = 8;  ///< 8 or 16
  std::vector<std::uint16_t> samples;
  bool isBilevel = false;  ///< the file has grey of one bit; here its samples are 0 or 255 and its bit depth is 8

  bool hasAlpha() const { return channels % 2 == 0; }
  /// The number of channels without alpha, which is the last one.
  int colours() const { return hasAlpha() ? channels - 1 : channels; }
  int maximum() const { return (1 << bitDepth) - 1; }
  std::size_t pixels() const { return static_cast<std::size_t>(width) * static_cast<std::size_t>(height); }
  std::size_t rowSamples() const { return static_cast<std::size_t>(width) * static_cast<std::size_t>(channels); }
  std::size_t at(int x, int y, int c = 0) const {
    return static_cast<std::size_t>(y) * rowSamples() +
           static_cast<std::size_t>(x) * static_cast<std::size_t>(channels) + static_cast<std::size_t>(c);
  }
};

/// An image of the given shape, all samples 0. The extents must be 1 or more.
inline Image makeImage(int width, int height, int channels, int bitDepth) {
  Image image{width, height, channels, bitDepth, {}, false};
  image.samples.resize(image.pixels() * static_cast<std::size_t>(channels));
  return image;
}

}  // namespace BP::tool
