#pragma once

#include "orvane/filters/array.h"
#include "orvane/filters/elements.h"
#include "orvane/filters/extents.h"
#include "orvane/filters/job_handle.h"
#include "orvane/filters/options.h"
#include "orvane/platform/export.h"

namespace BP::filters {

namespace detail {
template <class T>
class CorrelationNDJob;
}  // namespace detail

/// Correlation of inputs of one size, of rank 1 to 8, with a filter of that rank.
///
///     y(p) = sum over j of u(p + j - centre) * h(j)
///
/// j runs over the filter's elements in the order of memory, dimension 0 fastest. Each output is one sum in this order,
/// in T. Every multiplication and every addition rounds once. The result has the same bits on every machine. For ranks
/// 1 and 2 they are those of `Convolution` with `FilterDirection::correlation`, without a vendor's library. T is
/// `float` or `double`. UT, the input's element type, is T or
/// an integer that T holds exactly (see elements.h).
///
/// An object is made once and run for each input. It keeps a copy of the filter. The rules for memory, threads and
/// objects that were moved are those of `ConvolutionRunner`. Beside the filter it takes some hundred bytes for each of
/// 3^rank sectors, eight times the filter and some lines of input. Each array has at most 2^31 - 1 elements. The limits
/// of extents are those of `Convolution`.
///
/// A bad argument throws `std::invalid_argument` and changes nothing. The text has the argument, its value and the
/// allowed values.
template <class T, class UT = T>
class ORVANE_API CorrelationND {
  static_assert(std::is_floating_point_v<T>, "orvane: filters of CorrelationND have elements of float or double");
  static_assert(std::is_same_v<typename detail::FilterElements<UT, T>::Output, T>,
                "orvane: inputs of CorrelationND are real");

 public:
  CorrelationND(ArrayView<const T> filter, const Extents& inputExtents, const CorrelationNDOptions& options = {});

  /// Filters `input` into `output` and writes all elements of `output`. The two must not overlap.
  void run(ArrayView<const UT> input, ArrayView<T> output);
  /// Filters `input` into a new array.
  Array<T> run(ArrayView<const UT> input);
  /// The same with outputs that are rounded to integers, ties to even, and clipped (see `ConvolutionRunner`). Returns
  /// the number of outputs that were clipped.
  template <class Rounded>
  std::int64_t runRounded(ArrayView<const UT> input, Rounded&& output) {
    using Y = typename std::remove_cvref_t<Rounded>::element_type;
    static_assert(StoredInteger<Y>, "orvane: outputs are rounded to integers of 8, 16 or 32 bits; run() gives others");
    const ArrayView<Y> to = output.view();
    return runStored(input, storedOf<Y>(), to.data(), to.layout());
  }

  /// Copies the values of another filter of the same extents for later runs.
  void setFilter(ArrayView<const T> filter);
  /// Sets the value of a constant pad for later runs.
  void setPadValue(double value);

  const Extents& outputExtents() const;
  /// The positions that the output holds, counted from the input's first element.
  const Box& positions() const;
  /// The extents of the window.
  const Extents& windowExtents() const;

 private:
  std::int64_t runStored(ArrayView<const UT> input, Stored type, void* output, const Layout& layout);

  detail::JobHandle<detail::CorrelationNDJob<T>> job;
};

/// Correlates `input` with `filter` once (see `CorrelationND`). Each is an `Array` or an `ArrayView` of the same type.
template <class Input, class Filter>
auto correlateND(const Input& input, const Filter& filter, const CorrelationNDOptions& options = {}) {
  using UT = ElementOf<Input>;
  const ArrayView<const UT> from = input.view();
  return CorrelationND<ElementOf<Filter>, UT>(filter.view(), from.extents(), options).run(from);
}

/// Applies a macro to the pairs of elements of filter and input. It declares or defines templates.
#define ORVANE_FOR_CORRELATION_PAIRS(APPLY) \
  APPLY(float, float)                       \
  APPLY(float, std::int8_t)                 \
  APPLY(float, std::uint8_t)                \
  APPLY(float, std::int16_t)                \
  APPLY(float, std::uint16_t)               \
  APPLY(double, double)                     \
  APPLY(double, std::int8_t)                \
  APPLY(double, std::uint8_t)               \
  APPLY(double, std::int16_t)               \
  APPLY(double, std::uint16_t)              \
  APPLY(double, std::int32_t)               \
  APPLY(double, std::uint32_t)

#define ORVANE_DECLARE(T, UT) extern template class CorrelationND<T, UT>;
ORVANE_FOR_CORRELATION_PAIRS(ORVANE_DECLARE)
#undef ORVANE_DECLARE

}  // namespace BP::filters
