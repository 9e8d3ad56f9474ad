#pragma once

#include <complex>

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

/// What the input a b c yields beyond its edges.
///
///     constant   v v v | a b c | v v v        replicate  a a a | a b c | c c c
///     symmetric  c b a | a b c | c b a        circular   a b c | a b c | a b c
enum class Pad {
  constant,   ///< one value v, whatever the input
  replicate,  ///< the element at the edge
  symmetric,  ///< the input mirrored at its edge, which comes twice; and back again beyond that
  circular,   ///< the input once more
};

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
