#pragma once

#include <cstdint>
#include <vector>

#include "tool/array.h"
#include "tool/filter_settings.h"
#include "tool/image.h"

namespace BP::tool {

/// What the operation `median` does to each plane of its input.
struct MedianSettings {
  std::vector<std::int64_t> window;  ///< extents, width first
  EdgeSettings edges;
};

/// The median of each colour channel of `image`; channels and bit depth stay.
///
/// Bilevel grey is filtered as `bool` and stays bilevel: a tie gives white, and a pad value is 0 or 1. Other samples
/// are filtered as `float`, which holds them and the mean of two exactly; a mean that is no whole number is rounded
/// once, ties to even. Pad values are samples. Alpha is that of the pixel under the window's centre: see `makeOutput`.
///
/// Throws `std::runtime_error` for a window of another rank than 2 or one that does not fit, and for a pad value that
/// is no sample.
Image medianImage(const Image& image, const MedianSettings& settings);

struct MedianArray {
  Array array;
  std::uint64_t rounded = 0;  ///< whole outputs that are means rounded to even
};

/// The median of an array, of the same elements: `float`, `double` and `bool` are filtered as what they are. Whole
/// numbers go through `float` (up to 16 bits) or `double`, which hold them and the mean of two exactly; the mean is
/// rounded as in a picture.
///
/// Throws `std::runtime_error` or `std::invalid_argument` for another rank than 1 and 2, complex elements, whole ones
/// beyond -2^52 to 2^52, a pad value that is no element, and a window that does not fit.
MedianArray medianArray(const Array& input, const MedianSettings& settings);

}  // namespace BP::tool
