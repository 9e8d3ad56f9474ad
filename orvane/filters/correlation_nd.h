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
/// j runs over the filter's elements in the order of memory, dimension 0 fastest. Each output is one sum in this order,
/// in T. Every multiplication and every addition rounds once. The result has the same bits on every machine. For ranks
/// 1 and 2 they are those of `Convolution` with `FilterDirection::correlation`, without a vendor's library. T is
/// `float` or `double`.
///
/// An object is made once and run for each input. It keeps a copy of the filter, and a run allocates nothing. One
/// thread at a time may use an object; different objects share nothing. An object can be moved. Its use after that
/// throws `std::logic_error`, until another object is assigned to it. Beside the filter it takes some hundred bytes for
/// each of 3^rank sectors, eight times the filter and some lines of input. Each array has at most 2^31 - 1 elements.
/// The limits of extents are those of `Convolution`.
///
/// A bad argument throws `std::invalid_argument` and changes nothing. The text has the argument, its value and the
/// allowed values.
template <class T>
class ORVANE_API CorrelationND {
 public:
  CorrelationND(ArrayView<const T> filter, const Extents& inputExtents, const CorrelationNDOptions& options = {});

  /// Filters `input` into `output` and writes all elements of `output`. The two must not overlap.
  void run(ArrayView<const T> input, ArrayView<T> output);
  /// Filters `input` into a new array.
  Array<T> run(ArrayView<const T> input);

  /// Copies the values of another filter of the same extents for later runs.
  void setFilter(ArrayView<const T> filter);
  /// Sets the value of a constant pad for later runs.
  void setPadValue(double value);

  const Extents& outputExtents() const;

 private:
  class Job;
  detail::JobHandle<Job> job;
};

/// Correlates `input` with `filter` once (see `CorrelationND`). Each is an `Array` or an `ArrayView` of the same type.
template <class Input, class Filter>
auto correlateND(const Input& input, const Filter& filter, const CorrelationNDOptions& options = {}) {
  using T = std::remove_const_t<typename Input::element_type>;
  const ArrayView<const T> from = input.view();
  return CorrelationND<T>(filter.view(), from.extents(), options).run(from);
}

extern template class CorrelationND<float>;
extern template class CorrelationND<double>;

}  // namespace BP::filters
