#pragma once

#include <optional>

#include "orvane/algorithm/fixed_sum_plan.h"
#include "orvane/filters/extents.h"
#include "orvane/filters/fixed_array.h"
#include "orvane/filters/fixed_runner.h"
#include "orvane/filters/options.h"
#include "orvane/platform/export.h"

namespace BP::filters {

/// The types of a fixed-point convolution, for designated initialisers. The filter's values have their own type.
///
///     FixedTypes{.input = fixedType("u8.0"), .accumulator = fixedType("s40.14"), .output = fixedType("u8.0")}
///
/// Accumulator and output are complex if input or filter is.
struct FixedTypes {
  FixedType input;
  bool inputIsComplex = false;
  /// The type of each sum of products, after every addition.
  FixedType accumulator;
  FixedType output;
  /// The type of each product of an input value and a filter value. In a normalised convolution it is also the type of
  /// each square of an input value. It must be signed if input or filter is, and unsigned otherwise. Without a type
  /// these products are exact. All other products are always exact.
  std::optional<FixedType> product = {};
  /// The type of the norms of filter and window. `Normalisation::energy` needs it, and `Normalisation::none` allows
  /// none.
  std::optional<FixedType> sqrt = {};
  FixedModes modes = {};
};

/// The ways in which sums of products run, and what each means in one sentence.
using FixedPath = FixedSumPath;
using BP::describe;

/// Convolution, or correlation, of fixed-point inputs of one size with a filter.
///
/// The sum, its order, the choices and the limits are those of `Convolution`. Each product is cast into the product
/// type, each sum into the accumulator's type, and the result into the output's type, by the given modes. In a
/// normalised convolution, norms are cast into the `sqrt` type and their product into the accumulator's type. The sum
/// is then divided by this product and rounded once.
///
/// Statistics always have the labels "accumulator", "output" and "product" (of input and filter). Some convolutions add
/// "product sum" (partial sums of complex products), "second product" (of the second pass), "sqrt" and "filter product"
/// (squares of filter values). Products of a constant pad's value, the norms of single windows, and casts into the
/// intermediate array of a separable filter are not counted.
///
/// The pad value must be a value of the input's type. A product type must be given if exact products need more than 128
/// bits.
class ORVANE_API FixedConvolution : public FixedRunner {
 public:
  FixedConvolution(const FixedView& filter, const Extents& inputExtents, const FixedTypes& types,
                   const ConvolutionOptions& options = {});

  /// Copies the values of another filter of the same type and extents for later runs.
  void setFilter(const FixedView& filter);

  /// How the sums of the present filter run. It follows from types and filter alone; results and statistics do not
  /// depend on it.
  FixedPath path() const;
};

/// The same with a separable filter (see `SeparableConvolution`). Both filters have the same type.
///
/// The intermediate array has the output's type, so values are cast into this type between the passes. In the second
/// pass, the value of a constant pad is computed in this type: the values of the first filter are added in it, and the
/// sum is multiplied by the pad value. If the output has few bits of fraction, this is far
/// from the exact product; another pad is then better.
class ORVANE_API FixedSeparableConvolution : public FixedRunner {
 public:
  FixedSeparableConvolution(const FixedView& first, const FixedView& second, const Extents& inputExtents,
                            const FixedTypes& types, const ConvolutionOptions& options = {});

  /// Copies the values of other filters of the same type and lengths for later runs.
  void setFilters(const FixedView& first, const FixedView& second);

  /// How the sums of the first and the second pass run with the present filters.
  FixedPath firstPath() const;
  FixedPath secondPath() const;
};

}  // namespace BP::filters
