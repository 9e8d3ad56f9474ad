#pragma once

#include <complex>
#include <concepts>
#include <memory>
#include <type_traits>

#include "orvane/filters/array.h"
#include "orvane/filters/extents.h"
#include "orvane/filters/job_handle.h"
#include "orvane/filters/options.h"
#include "orvane/platform/export.h"

namespace BP::filters {

namespace detail {
template <class UT, class HT>
class ConvolutionJob;
}  // namespace detail

/// The type of the parts of a floating-point element, real or complex.
template <class T>
using RealOf = decltype(std::real(T()));

/// The element type of the output for inputs of UT and filters of HT: both are real or complex of one precision, and
/// the output is complex if either is.
template <class UT, class HT>
requires std::same_as<RealOf<UT>, RealOf<HT>>
using ConvolutionOutput = std::conditional_t<std::is_same_v<HT, UT>, UT, std::complex<RealOf<UT>>>;

/// The extents of the output for an input and a filter of the same rank, 1 or 2 (see `OutputMode`).
///
/// Throws `std::invalid_argument` if a rank or an extent is out of range, the ranks differ, or with `OutputMode::valid`
/// the filter exceeds the input.
ORVANE_API Extents outputExtents(const Extents& input, const Extents& filter, OutputMode mode);

/// The common base of `Convolution` and `SeparableConvolution`: everything except the filters.
///
/// An object is made once and run for each input. It keeps a copy of the filters. The constructor allocates all lasting
/// memory. A run over other arrays than the last ones costs little more. One thread at a time may use an object;
/// different objects share nothing. An object can be moved. Its use after that throws `std::logic_error`, until another
/// object is assigned to it.
///
/// A bad argument throws `std::invalid_argument` and changes nothing. The text has the argument, its value and the
/// allowed values. An error of a vendor's function throws `std::runtime_error`. So does any message of the library
/// below this API, but none is known to occur.
template <class UT, class HT>
class ORVANE_API ConvolutionRunner {
 public:
  using Output = ConvolutionOutput<UT, HT>;

  /// Filters `input` into `output` and writes all elements of `output`. The input must have the extents given at
  /// construction, the output those of `outputExtents`. The two arrays must not overlap. Either may overlap a filter,
  /// which was copied.
  void run(ArrayView<const UT> input, ArrayView<Output> output);
  /// Filters `input` into a new array.
  Array<Output> run(ArrayView<const UT> input);

  /// Sets the value of a constant pad for later runs.
  void setPadValue(std::complex<double> value);

  const Extents& outputExtents() const;

 protected:
  using Job = detail::ConvolutionJob<UT, HT>;

  explicit ConvolutionRunner(std::unique_ptr<Job> newJob);
  ConvolutionRunner(ConvolutionRunner&&) = default;
  ConvolutionRunner& operator=(ConvolutionRunner&&) = default;
  ~ConvolutionRunner() = default;

  detail::JobHandle<Job> job;
};

/// Convolution, or correlation, of inputs of one size with a filter.
///
///     y(p) = sum over j1, then j0, of u(p + j - centre) * h(f)
///
/// j runs over the filter's extents. f runs over the filter's elements: for convolution from the last to the first, for
/// correlation from the first to the last. The sum can be normalised. `ConvolutionOptions` has all choices and the edge
/// rules.
///
/// Each output is one sum in this order, in the output's own type. Every multiplication and every addition rounds once.
/// The result has the same bits on every machine, unless the application has named a vendor's library (see `ZdLoader`).
///
/// UT and HT, the element types of input and filter, are `float` or `double` or their complex types, of one precision.
/// The rank is 1 or 2. Each array has at most 2^31 - 1 elements, because indices are signed 32-bit numbers inside. In
/// each dimension, the input's extent plus twice the filter's extent is at most 2^31 - 1. With a symmetric or a
/// mirror pad, extents of inputs are at most 2^30 - 1.
template <class UT, class HT = UT>
class ORVANE_API Convolution : public ConvolutionRunner<UT, HT> {
 public:
  Convolution(ArrayView<const HT> filter, const Extents& inputExtents, const ConvolutionOptions& options = {});

  /// Copies the values of another filter of the same extents for later runs.
  void setFilter(ArrayView<const HT> filter);
};

/// Convolution, or correlation, of inputs of one size with a separable filter: one filter along dimension 0 and a
/// second one along dimension 1. The cost is the sum of their lengths instead of the product.
///
/// The first pass filters the input into an intermediate array of the output's element type. The second pass filters
/// this array into the output. Sums and limits of both passes are those of `Convolution`. The filters have rank 1, and
/// inputs have rank 2. The pad rule applies to the input in the first pass and to the intermediate array in the second.
/// In the second pass the value of a constant pad is the first filter's sum times the pad value. There is no
/// normalisation.
template <class UT, class HT = UT>
class ORVANE_API SeparableConvolution : public ConvolutionRunner<UT, HT> {
 public:
  SeparableConvolution(ArrayView<const HT> first, ArrayView<const HT> second, const Extents& inputExtents,
                       const ConvolutionOptions& options = {});

  /// Copies the values of other filters of the same lengths for later runs.
  void setFilters(ArrayView<const HT> first, ArrayView<const HT> second);
};

/// The element type of an `Array` or `ArrayView`.
template <class A>
using ElementOf = std::remove_const_t<typename A::element_type>;

/// Filters `input` with `filter` once (see `Convolution`). Each is an `Array` or an `ArrayView`.
template <class Input, class Filter>
auto convolve(const Input& input, const Filter& filter, const ConvolutionOptions& options = {}) {
  const ArrayView<const ElementOf<Input>> from = input.view();
  return Convolution<ElementOf<Input>, ElementOf<Filter>>(filter.view(), from.extents(), options).run(from);
}

/// The same with `FilterDirection::correlation` instead of the direction in the options.
template <class Input, class Filter>
auto correlate(const Input& input, const Filter& filter, ConvolutionOptions options = {}) {
  options.direction = FilterDirection::correlation;
  return convolve(input, filter, options);
}

/// Filters `input` with `filter` into `output` once (see `Convolution`). The output must not overlap the input.
template <class Input, class Filter>
void convolveInto(const Input& input, const Filter& filter,
                  ArrayView<ConvolutionOutput<ElementOf<Input>, ElementOf<Filter>>> output,
                  const ConvolutionOptions& options = {}) {
  const ArrayView<const ElementOf<Input>> from = input.view();
  Convolution<ElementOf<Input>, ElementOf<Filter>>(filter.view(), from.extents(), options).run(from, output);
}

/// Filters `input` once with a filter along dimension 0 and one along dimension 1 (see `SeparableConvolution`).
template <class Input, class First, class Second>
requires std::same_as<ElementOf<First>, ElementOf<Second>>
auto convolveSeparable(const Input& input, const First& first, const Second& second,
                       const ConvolutionOptions& options = {}) {
  const ArrayView<const ElementOf<Input>> from = input.view();
  return SeparableConvolution<ElementOf<Input>, ElementOf<First>>(first.view(), second.view(), from.extents(), options)
      .run(from);
}

/// Applies a macro to the eight pairs of plain input and filter elements. It declares or defines templates.
#define ORVANE_FOR_CONVOLUTION_PAIRS(APPLY)       \
  APPLY(float, float)                             \
  APPLY(float, std::complex<float>)               \
  APPLY(std::complex<float>, float)               \
  APPLY(std::complex<float>, std::complex<float>) \
  APPLY(double, double)                           \
  APPLY(double, std::complex<double>)             \
  APPLY(std::complex<double>, double)             \
  APPLY(std::complex<double>, std::complex<double>)

#define ORVANE_DECLARE(UT, HT)                     \
  extern template class ConvolutionRunner<UT, HT>; \
  extern template class Convolution<UT, HT>;       \
  extern template class SeparableConvolution<UT, HT>;
ORVANE_FOR_CONVOLUTION_PAIRS(ORVANE_DECLARE)
#undef ORVANE_DECLARE

}  // namespace BP::filters
