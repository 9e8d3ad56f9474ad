#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "orvane/filters/fixed_median.h"
#include "tool/array.h"
#include "tool/filter_array.h"
#include "tool/filter_image.h"
#include "tool/filter_settings.h"
#include "tool/image.h"

namespace BP::tool {

/// What the operation `median` does to each plane of its input.
struct MedianSettings {
  std::vector<std::int64_t> window;  ///< extents, width first
  EdgeSettings edges;
  std::optional<filters::FixedMedianTypes> fixed;
};

/// The median of each colour channel of `image`; channels and bit depth stay.
///
/// Bilevel grey is filtered as `bool` and stays bilevel: a tie gives white, and a pad value is 0 or 1. Other samples
/// are filtered as `float`, which represents them and the mean of two exactly. A mean that is no whole number is
/// rounded once, ties to even. Pad values are samples. Alpha is that of the pixel under the window's centre: see
/// `makeOutput`. In fixed point samples are cast into the input's type, and values of the output become samples as in
/// `filterImage`.
///
/// Throws `std::runtime_error` or `std::invalid_argument` for a window of another rank than 2 or one that does not fit,
/// for a pad value that is no sample, or in fixed point no value of the input's type, and for types that do not fit.
FilteredImage medianImage(const Image& image, const MedianSettings& settings);

/// The median of an array; the element type stays. `float`, `double` and `bool` are filtered in their own type. Whole
/// numbers are filtered as `float` (up to 16 bits) or `double`, which represent them and the mean of two exactly; the
/// mean is rounded as in a picture, and `rounded` counts such outputs. In fixed point any elements are cast, `rounded`
/// counts inputs that `double` cannot represent, and results are float64.
///
/// Throws `std::runtime_error` or `std::invalid_argument` for another rank than 1 and 2, complex elements, whole ones
/// beyond -2^52 to 2^52 unless in fixed point, a pad value that is no element, and a window that does not fit.
FilteredArray medianArray(const Array& input, const MedianSettings& settings);

}  // namespace BP::tool
