#pragma once

#include <complex>

#include "orvane/core/pad_types.h"

/// What there is to choose about a convolution.
///
/// Words used here: the *window* is the stretch of input that lies under the filter; its *position* is where the
/// filter's centre lies, the middle element, of an even extent the lower one of the two.
namespace BP::filters {

/// Which way the filter is walked. Nothing is conjugated.
enum class Direction {
  convolution,  ///< the window's first element meets the filter's last
  correlation,  ///< the window's first element meets the filter's first
};

/// At which positions there is an output. For an input of extent u and a filter of extent h in a dimension:
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
enum class Pad { ORVANE_FOR_PAD_TYPES(ORVANE_ENUMERATE) };
#undef ORVANE_ENUMERATE

/// Whether each sum is divided.
enum class Normalisation {
  none,    ///< the sum of products
  energy,  ///< divided by the norms (roots of the sums of squares) of filter and window; 0 where that divisor is 0
};

/// The choices of a convolution; each has a default. Made for designated initialisers:
///
///     ConvolutionOptions{.mode = OutputMode::same, .pad = Pad::replicate}
struct ConvolutionOptions {
  Direction direction = Direction::convolution;
  OutputMode mode = OutputMode::valid;
  Pad pad = Pad::constant;
  /// The value of a constant pad. It must be real for a real input, and is rounded to nearest if the input's elements
  /// are `float`.
  std::complex<double> padValue = 0;
  Normalisation normalise = Normalisation::none;
};

/// The choices of a correlation in any number of dimensions; each has a default.
struct CorrelationNDOptions {
  OutputMode mode = OutputMode::valid;
  Pad pad = Pad::constant;
  double padValue = 0;  ///< of a constant pad; rounded to nearest if the elements are `float`
};

}  // namespace BP::filters
