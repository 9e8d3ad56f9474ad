#pragma once

#include <optional>

#include "orvane/filters/extents.h"
#include "orvane/filters/fixed_array.h"
#include "orvane/filters/fixed_runner.h"
#include "orvane/filters/options.h"
#include "orvane/platform/export.h"

namespace BP::filters {

/// The types of a fixed-point convolution; that of the filter comes with its values. Made for designated initialisers:
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
  /// The type into which each product of an input value and a filter value is cast, and each square of an input value
  /// if the convolution is normalised: signed if input or filter is. Without it they are exact. All other products
  /// always are.
  std::optional<FixedType> product = {};
  /// The type of the norms of filter and window, for `Normalisation::energy` alone, which needs it.
  std::optional<FixedType> sqrt = {};
  FixedModes modes = {};
};

/// Convolution, or correlation, of fixed-point inputs of one size with a filter.
///
/// The sum, its order, choices and limits are those of `Convolution`. Each product is cast into the product type, each
/// sum into the accumulator's, the result into the output's, by the given modes. Normalised, norms are cast into the
/// root's type, their product into the accumulator's, and the sum is divided by that, rounded once.
///
/// Statistics have the labels "accumulator", "output", "product" (of input and filter), and where there is such a thing
/// "product sum" (partial sums of complex products), "second product", "sqrt", "filter product" (its squares). Not
/// counted are products of a constant pad's value, the norms of single windows, and casts into the intermediate array
/// of a separable filter.
///
/// The pad value must be a value of the input's type. Extreme types can need a product of more than 128 bits, which is
/// refused unless a product type is given.
class ORVANE_API FixedConvolution : public FixedRunner {
 public:
  FixedConvolution(const FixedView& filter, const Extents& inputExtents, const FixedTypes& types,
                   const ConvolutionOptions& options = {});

  /// Takes the values of another filter of the same type and extents for the runs to come.
  void setFilter(const FixedView& filter);
};

/// The same with a separable filter, see `SeparableConvolution`. Both filters have one type.
///
/// The intermediate array has the output's type, so values are cast into that between the passes. A constant pad is for
/// the second pass what the first makes of it in that type: the first filter's values,
/// each cast into it, are summed in it.
/// With few bits of fraction in the output this is far from the exact product; choose another pad then.
class ORVANE_API FixedSeparableConvolution : public FixedRunner {
 public:
  FixedSeparableConvolution(const FixedView& first, const FixedView& second, const Extents& inputExtents,
                            const FixedTypes& types, const ConvolutionOptions& options = {});

  /// Takes the values of other filters of the same type and lengths for the runs to come.
  void setFilters(const FixedView& first, const FixedView& second);
};

}  // namespace BP::filters
