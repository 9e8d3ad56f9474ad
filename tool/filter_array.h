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
  std::uint64_t rounded = 0;  ///< input values that the type of sums does not have
  std::string fixedTable;     ///< of a filter in fixed point, what happened to its values
};

/// The extents of an array of one dimension or two; throws `std::runtime_error` for another rank.
filters::Extents planeExtents(const Array& array);

/// `input`, filtered as the settings say; each result is then multiplied by the scale and added to the offset.
///
/// Floating-point elements, complex ones too, are summed in their own precision or in that of `sumType`, to which they
/// are converted; so is the kernel. Whole numbers and bools need a `sumType`. The output has the elements of the sums:
/// with fixed point, which any element can be cast into, float64 or complex128.
///
/// Throws `std::runtime_error` or `std::invalid_argument` for another rank than 1 and 2, elements that need a type, and
/// extents that do not fit the kernel.
FilteredArray filterArray(const Array& input, const FilterSettings& settings, const SampleScaling& scaling);

/// The same with a filter in fixed point for planes of the array's extents, complex ones if its elements are.
FilteredArray filterArrayFixed(const Array& input, FixedPlaneFilter& filter, const SampleScaling& scaling = {});

/// `input` of rank 1 to 8, correlated over all its dimensions with `kernel`, an array of that rank, by mode and pad of
/// the settings; scale and offset as above. Both are real, and converted to the type of sums: that of floating-point
/// `input`, or `sumType`.
///
/// Throws `std::runtime_error` or `std::invalid_argument` for complex elements, elements that need a type, settings of
/// normalisation or fixed point, and ranks and extents that do not fit.
FilteredArray correlateVolume(const Array& input, const Array& kernel, const FilterSettings& settings,
                              const SampleScaling& scaling);

}  // namespace BP::tool
