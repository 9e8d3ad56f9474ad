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

/// The choices of a median filter over elements of type T; each has a default. Made for designated initialisers:
///
///     MedianOptions<float>{.mode = OutputMode::same, .pad = Pad::replicate}
template <class T>
struct MedianOptions {
  OutputMode mode = OutputMode::valid;
  Pad pad = Pad::constant;
  /// The value of a constant pad.
  T padValue{};
};

/// Median filter for inputs of one size: each output is the middle one of the values under a window.
///
///     odd number of values    the middle one in ascending order
///     even number             upper * 0.5 + lower * 0.5 of the two in the middle
///     bool                    true if at least half of the values are: a tie gives true
///
/// T, the element type of input and output, is `float`, `double` or `bool`. The same bits come out on every machine,
/// also for NaN: a window that holds one gives some of its values, of no certain rank. Positions, output extents and
/// edges are those of `Convolution` with a filter of the window's extents, and so are the limits on extents.
///
/// One object is one job: make it once, run it for each input. Everything lasting is allocated at construction; a run
/// over other arrays than the last makes the store of one window anew. An object serves one thread at a time, and
/// different objects share nothing. It can be moved; one that was moved from throws `std::logic_error` when it is used,
/// until something is assigned to it.
///
/// Bad arguments throw `std::invalid_argument` that names the argument, its value and what is allowed, and change
/// nothing. Messages of the filters behind, of which none is known to occur, throw `std::runtime_error`.
template <class T>
class ORVANE_API Median {
 public:
  Median(const Extents& window, const Extents& inputExtents, const MedianOptions<T>& options = {});

  /// Filters `input` into `output`, all of whose elements are written. Extents must be those given at construction and
  /// those of `outputExtents`. The two arrays must not overlap.
  void run(ArrayView<const T> input, ArrayView<T> output);
  /// Filters `input` into a new array.
  Array<T> run(ArrayView<const T> input);

  /// Takes another value for a constant pad for the runs to come.
  void setPadValue(T value);

  const Extents& outputExtents() const;

 private:
  detail::JobHandle<detail::MedianJob<T>> job;
};

/// The median filter of `input`, an `Array` or an `ArrayView`, once: see `Median`.
template <class Input, class T = std::remove_const_t<typename Input::element_type>>
Array<T> median(const Input& input, const Extents& window, const MedianOptions<T>& options = {}) {
  const ArrayView<const T> from = input.view();
  return Median<T>(window, from.extents(), options).run(from);
}

extern template class Median<float>;
extern template class Median<double>;
extern template class Median<bool>;

}  // namespace BP::filters
