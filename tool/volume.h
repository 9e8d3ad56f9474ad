#pragma once

#include <cstdint>

#include "tool/array.h"
#include "tool/filter_settings.h"
#include "tool/sample_conversion.h"

namespace BP::tool {

struct FilteredVolume {
  Array array;
  std::uint64_t rounded = 0;  ///< input values that the type of sums cannot represent
};

/// `input`, of rank 1 to 8, correlated over all its dimensions with `kernel`, an array of the same rank. The settings
/// give mode and pad, `threads` the most threads (0 for all cores); each sum is multiplied by the scale and added to
/// the offset. Both arrays are real and are converted to the type of sums: `sumType`, or without it the floating-point
/// type of `input`, `double` for others.
///
/// Throws `std::runtime_error` or `std::invalid_argument` for complex elements, settings of normalisation or fixed
/// point, and ranks and extents that do not fit.
FilteredVolume correlateVolume(const Array& input, const Array& kernel, const FilterSettings& settings,
                               const SampleScaling& scaling, int threads);

}  // namespace BP::tool
