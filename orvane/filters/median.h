#pragma once

#include <type_traits>

#include "orvane/filters/array.h"
#include "orvane/filters/extents.h"
#include "orvane/filters/job_handle.h"
#include "orvane/filters/options.h"
#include "orvane/platform/export.h"

namespace BP::filters {

namespace detail {
template <class T>
class MedianJob;
}

/// The choices of a median filter over elements of type T, for designated initialisers. Each has a default:
///
///     MedianOptions<float>{.mode = OutputMode::same, .pad = PadRule::replicate}
template <class T>
struct MedianOptions {
  OutputMode mode = OutputMode::valid;
  PadRule pad = PadRule::constant;
  /// The value of a constant pad.
  T padValue{};
};

/// Median filter for inputs of one size. Each output is the middle one of the values in a window.
///
///     odd number of values    the middle one in ascending order
///     even number             upper * 0.5 + lower * 0.5 of the two in the middle
///     bool                    true if at least half of the values are: a tie gives true
///
/// T, the element type of input and output, is `float`, `double` or `bool`. The result has the same bits on every
/// machine. If a window holds NaN, the output is one of its values, and its rank is not specified. Positions, output
/// extents, edges and limits are those of `Convolution` with a filter of the window's extents.
///
/// An object is made once and run for each input. The constructor allocates all lasting memory. A run over other arrays
/// than the last ones allocates the memory of one window again. One thread at a time may use an object; different
/// objects share nothing. An object can be moved. Its use after that throws `std::logic_error`, until another object is
/// assigned to it.
///
/// A bad argument throws `std::invalid_argument` and changes nothing. The text has the argument, its value and the
/// allowed values. Any message of the library below this API throws `std::runtime_error`, but none is known to occur.
template <class T>
class ORVANE_API Median {
 public:
  Median(const Extents& window, const Extents& inputExtents, const MedianOptions<T>& options = {});

  /// Filters `input` into `output` and writes all elements of `output`. The input must have the extents given at
  /// construction, the output those of `outputExtents`. The two arrays must not overlap.
  void run(ArrayView<const T> input, ArrayView<T> output);
  /// Filters `input` into a new array.
  Array<T> run(ArrayView<const T> input);

  /// Sets the value of a constant pad for later runs.
  void setPadValue(T value);

  const Extents& outputExtents() const;

 private:
  detail::JobHandle<detail::MedianJob<T>> job;
};

/// Applies the median filter to `input` once (see `Median`). The input is an `Array` or an `ArrayView`.
template <class Input, class T = std::remove_const_t<typename Input::element_type>>
Array<T> median(const Input& input, const Extents& window, const MedianOptions<T>& options = {}) {
  const ArrayView<const T> from = input.view();
  return Median<T>(window, from.extents(), options).run(from);
}

extern template class Median<float>;
extern template class Median<double>;
extern template class Median<bool>;

}  // namespace BP::filters
