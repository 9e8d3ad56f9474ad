#pragma once

#include <cstdint>

#include "orvane/core/enums.h"
#include "tool/image.h"
#include "tool/kernel.h"

namespace BP::tool {

/// How a sum becomes a sample: round(sum * scale + offset), clipped.
struct SampleScaling {
  double scale = 1;
  double offset = 0;
};

struct FilteredImage {
  Image image;
  std::uint64_t clipped = 0;  ///< samples that lay outside 0..maximum after rounding
};

/// Convolution or correlation (`mode`) of each colour channel with `kernel`, where it lies wholly in the image.
///
/// Sums run in double in the order that `ConvCorr` states. One multiplication, one addition, then rounding to the
/// nearest whole number, ties to even, and clipping to the range of the samples, whose bit depth stays. The output is
/// smaller by the kernel's sides less 1; alpha is cropped alike, to what lay under the window's centre (of the two in
/// the middle of an even side, the one further left or up).
///
/// Throws `std::runtime_error` if the kernel is larger than the image or its sums could exceed the range of double.
FilteredImage filterImage(const Image& image, const Kernel& kernel, AlgorithmModeEnum mode,
                          const SampleScaling& scaling);

}  // namespace BP::tool
