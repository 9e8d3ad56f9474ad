#pragma once

#include <optional>

#include "orvane/filters/extents.h"
#include "orvane/filters/fixed_array.h"
#include "orvane/filters/fixed_runner.h"
#include "orvane/filters/median.h"
#include "orvane/platform/export.h"

namespace BP::filters {

/// The types of a fixed-point median, for designated initialisers:
///
///     FixedMedianTypes{.input = fixedType("s12.4"), .modes = {.rounding = Rounding::convergent}}
struct FixedMedianTypes {
  FixedType input;
  /// Every median is cast into this type, and then into the output's. In a window with an even number of values, the
  /// sum of the two middle values is cast into it, and then half of this sum. The default has two bits more than the
  /// input, one of them fraction, so both casts are exact.
  std::optional<FixedType> accumulator = {};
  /// The default is the input's type.
  std::optional<FixedType> output = {};
  FixedModes modes = {};
};

/// Median filter for fixed-point inputs of one size.
///
///     odd number of values    the middle one in ascending order
///     even number             (lower + upper) >> 1 of the two in the middle, in the accumulator's type
///
/// The result is cast into the output's type. Values must be real, because complex numbers have no order in which a
/// middle one is unique. Positions, edges and limits are those of `Median`. The pad value must be a value of the
/// input's type. With `Overflow::symmetric` the least value of a signed input counts as the next greater one.
///
/// Statistics have only the label "output". The sums and halves of even windows are not counted.
class ORVANE_API FixedMedian : public FixedRunner {
 public:
  FixedMedian(const Extents& window, const Extents& inputExtents, const FixedMedianTypes& types,
              const MedianOptions& options = {});
};

}  // namespace BP::filters
