#pragma once

#include <cstdint>
#include <string>

#include "orvane/filters/extents.h"
#include "tool/array.h"
#include "tool/filter_image.h"
#include "tool/filter_settings.h"
#include "tool/plane_filter.h"

namespace BP::tool {

struct FilteredArray {
  Array array;
  std::uint64_t rounded = 0;  ///< input values that the type of sums cannot represent
  std::string fixedTable;     ///< of a filter in fixed point, what happened to its values
};

/// The extents of an array of one or two dimensions; throws `std::runtime_error` for another rank.
filters::Extents planeExtents(const Array& array);

/// `input`, filtered as the settings say; each result is then multiplied by the scale and added to the offset.
///
/// Floating-point and complex elements are summed in their own precision, or in that of `sumType`; elements and kernel
/// are converted to it first. Whole numbers and bools need a `sumType`. The output has the element type of the sums. In
/// fixed point any elements can be cast, and the output is float64 or complex128.
///
/// Throws `std::runtime_error` or `std::invalid_argument` for another rank than 1 and 2, elements that need a type, and
/// extents that do not fit the kernel.
FilteredArray filterArray(const Array& input, const FilterSettings& settings, const SampleScaling& scaling);

/// The same with a filter in fixed point for planes of the array's extents, complex if its elements are.
FilteredArray filterArrayFixed(const Array& input, FixedPlaneFilter& filter, const SampleScaling& scaling = {});

/// `input`, of rank 1 to 8, correlated over all its dimensions with `kernel`, an array of the same rank. The settings
/// give mode and pad; scale and offset are applied as above. Both arrays are real and are converted to the type of
/// sums: `sumType`, or without it the floating-point type of `input`.
///
/// Throws `std::runtime_error` or `std::invalid_argument` for complex elements, elements that need a type, settings of
/// normalisation or fixed point, and ranks and extents that do not fit.
FilteredArray correlateVolume(const Array& input, const Array& kernel, const FilterSettings& settings,
                              const SampleScaling& scaling);

}  // namespace BP::tool
