#pragma once

#include <cstdint>
#include <type_traits>

#include "orvane/filters/array.h"
#include "orvane/filters/elements.h"
#include "orvane/filters/extents.h"
#include "orvane/filters/job_handle.h"
#include "orvane/filters/options.h"
#include "orvane/platform/export.h"

namespace BP::filters {

namespace detail {
template <class T>
class MedianJob;
}

/// The choices of a median filter, for designated initialisers. Each has a default:
///
///     MedianOptions{.mode = OutputMode::valid}
struct MedianOptions {
  OutputMode mode = OutputMode::same;
  PadOption pad = {};
  std::optional<Rectangle> region = std::nullopt;  ///< the positions that are wanted, as in `ConvolutionOptions`
  int threads = 1;                                 ///< the most threads of a run; 0 for as many as there are cores
  Progress progress = nullptr;                     ///< told while a run goes on, which it can cancel
};

/// Median filter for inputs of one size. Each output is the middle one of the values in a window.
///
///     odd number of values    the middle one in ascending order
///     even number             upper * 0.5 + lower * 0.5 of the two in the middle
///     bool                    true if at least half of the values are: a tie gives true
///     integers                such a mean, rounded once to the nearest integer, ties to even
///
/// T, the element type of input and output, is `float`, `double`, `bool` or an integer of 8, 16 or 32 bits. The result
/// has the same bits on every machine. If a window holds NaN, the output is one of its values, and its rank is not
/// specified. Positions, output extents, edges and limits are those of `Convolution` with a filter of the window's
/// extents.
///
/// An object is made once and run for each input. The rules for memory, threads and objects that were moved are those
/// of `ConvolutionRunner`; but a run over other arrays than the last ones allocates the memory of one window again.
///
/// A bad argument throws `std::invalid_argument` and changes nothing. The text has the argument, its value and the
/// allowed values. Any message of the library below this API throws `std::runtime_error`, but none is known to occur.
template <class T>
class ORVANE_API Median {
  static_assert(std::is_same_v<T, float> || std::is_same_v<T, double> || std::is_same_v<T, bool> || StoredInteger<T>,
                "orvane: elements of medians are float, double, bool, or integers of 8, 16 or 32 bits; complex numbers "
                "have no order");

 public:
  Median(const Extents& window, const Extents& inputExtents, const MedianOptions& options = {});

  /// Filters `input` into `output` and writes all elements of `output`. The input must have the extents given at
  /// construction, the output those of `outputExtents`. The two arrays must not overlap.
  void run(ArrayView<const T> input, ArrayView<T> output);
  /// Filters `input` into a new array.
  Array<T> run(ArrayView<const T> input);

  /// Sets the value of a constant pad for later runs.
  void setPadValue(double value);

  const Extents& outputExtents() const;
  /// The positions that the output holds, counted from the input's first element.
  Rectangle positions() const;
  /// The extents of the window.
  const Extents& windowExtents() const;

 private:
  detail::JobHandle<detail::MedianJob<T>> job;
};

/// Applies the median filter to `input` once (see `Median`). The input is an `Array` or an `ArrayView`.
template <class Input, class T = std::remove_const_t<typename Input::element_type>>
Array<T> median(const Input& input, const Extents& window, const MedianOptions& options = {}) {
  const ArrayView<const T> from = input.view();
  return Median<T>(window, from.extents(), options).run(from);
}

/// Applies a macro to the element types of medians. It declares or defines templates.
#define ORVANE_FOR_MEDIAN_ELEMENTS(APPLY) \
  APPLY(float)                            \
  APPLY(double)                           \
  APPLY(bool)                             \
  APPLY(std::int8_t)                      \
  APPLY(std::uint8_t)                     \
  APPLY(std::int16_t)                     \
  APPLY(std::uint16_t)                    \
  APPLY(std::int32_t)                     \
  APPLY(std::uint32_t)

#define ORVANE_DECLARE(T) extern template class Median<T>;
ORVANE_FOR_MEDIAN_ELEMENTS(ORVANE_DECLARE)
#undef ORVANE_DECLARE

}  // namespace BP::filters
