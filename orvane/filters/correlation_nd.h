#pragma once

#include "orvane/filters/array.h"
#include "orvane/filters/extents.h"
#include "orvane/filters/job_handle.h"
#include "orvane/filters/options.h"
#include "orvane/platform/export.h"

namespace BP::filters {

/// Correlation of inputs of one size, of rank 1 to 8, with a filter of that rank.
///
///     y(p) = sum over j of u(p + j - centre) * h(j)
///
/// with j running over the filter's elements in the order of memory, dimension 0 fastest: one sum in this order, with
/// one rounding for each multiplication and addition, in T: the same bits on every machine, and for ranks 1 and 2 those
/// of `Convolution` with `Direction::correlation` in its own code. T is `float` or `double`.
///
/// One object is one job: make it once, run it for each input. It keeps a copy of the filter, allocates nothing in a
/// run, and serves one thread at a time; different objects share nothing. It can be moved, and then only assigned to or
/// destroyed; other use throws `std::logic_error`. Memory beside the filter: some hundred bytes for each of 3^rank
/// sectors. There are at most 2^31 - 1 elements in each array, and the limits of extents are those of `Convolution`.
///
/// Bad arguments throw `std::invalid_argument` that names the argument, its value and what is allowed, and change
/// nothing.
template <class T>
class ORVANE_API CorrelationND {
 public:
  CorrelationND(ArrayView<const T> filter, const Extents& inputExtents, const CorrelationNDOptions& options = {});

  /// Filters `input` into `output`, all of whose elements are written; the two must not overlap.
  void run(ArrayView<const T> input, ArrayView<T> output);
  /// Filters `input` into a new array.
  Array<T> run(ArrayView<const T> input);

  /// Takes the values of another filter of the same extents for the runs to come.
  void setFilter(ArrayView<const T> filter);
  /// Takes another value for a constant pad for the runs to come.
  void setPadValue(double value);

  const Extents& outputExtents() const;

 private:
  class Job;
  detail::JobHandle<Job> job;
};

/// Correlates `input` with `filter`, once: see `CorrelationND`. Both are an `Array` or an `ArrayView` of one type.
template <class Input, class Filter>
auto correlateND(const Input& input, const Filter& filter, const CorrelationNDOptions& options = {}) {
  using T = std::remove_const_t<typename Input::element_type>;
  const ArrayView<const T> from = input.view();
  return CorrelationND<T>(filter.view(), from.extents(), options).run(from);
}

extern template class CorrelationND<float>;
extern template class CorrelationND<double>;

}  // namespace BP::filters
