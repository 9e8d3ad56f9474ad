#pragma once

#include <complex>

#include "orvane/core/pad_types.h"

/// The options of a convolution.
///
/// Words used here:
///
/// - The *window* is the part of the input under the filter.
/// - The *centre* is the filter's middle element. An even extent has two middle elements, and the lower one counts.
/// - The *position* of a window is the position of the filter's centre.
namespace BP::filters {

/// The direction in which the filter is walked. Nothing is conjugated.
enum class FilterDirection {
  convolution,  ///< the window's first element meets the filter's last
  correlation,  ///< the window's first element meets the filter's first
};

/// The positions that have an output. In a dimension, let u be the input's extent and h the filter's extent:
enum class OutputMode {
  valid,  ///< u - h + 1 outputs: the window lies wholly in the input
  same,   ///< u outputs: the position is an element of the input
  full,   ///< u + h - 1 outputs: window and input overlap
};

/// What the input a b c yields beyond its edges; the list of the rules is in pad_types.h.
///
///     constant   v v v | a b c | v v v        one value v, whatever the input
///     replicate  a a a | a b c | c c c        the element at the edge
///     symmetric  c b a | a b c | c b a        the input mirrored at its edge, which comes twice; and back again
///     circular   a b c | a b c | a b c        the input once more
///     mirror     d c b | a b c d | c b a      the input mirrored at its edge, which comes once; and back again
#define ORVANE_ENUMERATE(number, enumerator, name, letters) name,
enum class PadRule { ORVANE_FOR_PAD_TYPES(ORVANE_ENUMERATE) };
#undef ORVANE_ENUMERATE

/// The divisor of each sum.
enum class Normalisation {
  none,    ///< the sum of products is not divided
  energy,  ///< the product of the norms (root of the sum of squares) of filter and window; the result is 0 if this is 0
};

/// The choices of a convolution, for designated initialisers. Each has a default:
///
///     ConvolutionOptions{.mode = OutputMode::same, .pad = PadRule::replicate}
struct ConvolutionOptions {
  FilterDirection direction = FilterDirection::convolution;
  OutputMode mode = OutputMode::valid;
  PadRule pad = PadRule::constant;
  /// The value of a constant pad. It must be real for a real input. It is rounded to nearest if the input's elements
  /// are `float`.
  std::complex<double> padValue = 0;
  Normalisation normalise = Normalisation::none;
};

/// The choices of a correlation in any number of dimensions; each has a default.
struct CorrelationNDOptions {
  OutputMode mode = OutputMode::valid;
  PadRule pad = PadRule::constant;
  double padValue = 0;  ///< the value of a constant pad, rounded to nearest if the elements are `float`
};

}  // namespace BP::filters
