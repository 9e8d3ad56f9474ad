#pragma once

#include <optional>

#include "orvane/filters/extents.h"
#include "orvane/filters/fixed_array.h"
#include "orvane/filters/fixed_runner.h"
#include "orvane/filters/median.h"
#include "orvane/platform/export.h"

namespace BP::filters {

/// The types of a fixed-point median. Made for designated initialisers:
///
///     FixedMedianTypes{.input = fixedType("s12.4"), .modes = {.rounding = Rounding::convergent}}
struct FixedMedianTypes {
  FixedType input;
  /// The type through which every median goes, and into which the sum of the two values in the middle of an even window
  /// and the half of that are cast. Without it both are exact: two bits more than the input's, one of them fraction.
  std::optional<FixedType> accumulator = {};
  /// Without it the input's.
  std::optional<FixedType> output = {};
  FixedModes modes = {};
};

/// Median filter for fixed-point inputs of one size.
///
///     odd number of values    the middle one in ascending order
///     even number             (lower + upper) >> 1 of the two in the middle, summed and halved in the accumulator's
///     type
///
/// The result is cast into the output's type. Values are real: complex ones have no order but that of their magnitudes,
/// in which different values are equal, so that a middle one means nothing. Positions, edges and limits are those of
/// `Median`; the pad value must be a value of the input's type. With `Overflow::symmetric` the least value of a signed
/// input counts as the one above it.
///
/// Statistics have the label "output" alone: sums and halves of even windows are not counted.
class ORVANE_API FixedMedian : public FixedRunner {
 public:
  FixedMedian(const Extents& window, const Extents& inputExtents, const FixedMedianTypes& types,
              const MedianOptions<double>& options = {});
};

}  // namespace BP::filters
