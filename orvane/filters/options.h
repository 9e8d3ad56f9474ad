#pragma once

#include <complex>
#include <optional>

#include "orvane/core/pad_types.h"
#include "orvane/filters/box.h"
#include "orvane/filters/progress.h"
#include "orvane/filters/rectangle.h"

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

/// What an input yields beyond its edges: a rule, and the value of a constant pad. All jobs have this one type.
///
///     .pad = PadRule::symmetric
///     .pad = {PadRule::constant, 3.0}
///
/// The value must be real for a real input. It is rounded to nearest if the input's elements are `float`, and must be a
/// value of the input's type if they are `bool` or fixed point. The other rules do not use it.
struct PadOption {
  PadRule rule = PadRule::replicate;
  std::complex<double> value = 0;

  constexpr PadOption() = default;
  constexpr PadOption(PadRule newRule, std::complex<double> newValue = 0) : rule(newRule), value(newValue) {}
  bool operator==(const PadOption&) const = default;
};

/// The divisor of each sum.
enum class Normalisation {
  none,    ///< the sum of products is not divided
  energy,  ///< the product of the norms (root of the sum of squares) of filter and window; the result is 0 if this is 0
};

/// The choices of a convolution, for designated initialisers. Each has a default:
///
///     ConvolutionOptions{.mode = OutputMode::full, .pad = {PadRule::constant, 3.0}}
struct ConvolutionOptions {
  /// Without a direction, `correlate` correlates and everything else convolves.
  std::optional<FilterDirection> direction = std::nullopt;
  OutputMode mode = OutputMode::same;
  PadOption pad = {};
  Normalisation normalise = Normalisation::none;
  /// The positions that are wanted, of those that the mode has; all of them without a region. It may reach beyond them,
  /// miss them, or be empty. The output holds the positions that are left. In rank 1 it needs y = 0 and height 1.
  std::optional<Rectangle> region = std::nullopt;
  int threads = 1;              ///< the most threads of a run; 0 for as many as there are cores
  Progress progress = nullptr;  ///< told while a run goes on, which it can cancel
};

/// The choices of a correlation in any number of dimensions; each has a default.
struct CorrelationNDOptions {
  OutputMode mode = OutputMode::same;
  PadOption pad = {};
  /// The positions that are wanted, as in `ConvolutionOptions`, in the input's number of dimensions.
  std::optional<Box> region = std::nullopt;
  int threads = 1;              ///< the most threads of a run; 0 for as many as there are cores
  Progress progress = nullptr;  ///< told while a run goes on, which it can cancel
};

}  // namespace BP::filters
