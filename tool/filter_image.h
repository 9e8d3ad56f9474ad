#pragma once

#include <cstdint>
#include <string>

#include "tool/filter_settings.h"
#include "tool/image.h"
#include "tool/plane_filter.h"

namespace BP::tool {

/// How a sum becomes a sample: round(sum * scale + offset), clipped.
struct SampleScaling {
  double scale = 1;
  double offset = 0;
};

struct FilteredImage {
  Image image;
  std::uint64_t clipped = 0;  ///< samples that lay outside 0..maximum after rounding
  std::string fixedTable;     ///< what happened to values in fixed point; empty for other filters
};

/// Each colour channel of `image`, filtered as the settings say; pad values are samples.
///
/// Sums run in double unless the settings say otherwise. Each sum is multiplied by the scale and added to the offset,
/// in double, with one rounding each; the result is rounded to the nearest whole number, ties to even, and clipped to
/// the range of the samples. The bit depth stays.
///
/// Alpha is that of the pixel under the window's centre: see `makeOutput`.
///
/// Throws `std::runtime_error` or `std::invalid_argument` if kernel and image do not fit, or sums could exceed the
/// range of their type.
FilteredImage filterImage(const Image& image, const FilterSettings& settings, const SampleScaling& scaling);

/// The same with a filter in fixed point for planes of the image's extents; `output` is that of `makeOutput`.
FilteredImage filterImageFixed(const Image& image, Image output, FixedPlaneFilter& filter,
                               const SampleScaling& scaling = {});

}  // namespace BP::tool
