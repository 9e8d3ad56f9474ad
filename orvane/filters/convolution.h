#pragma once

#include <complex>
#include <concepts>
#include <memory>
#include <type_traits>

#include "orvane/filters/array.h"
#include "orvane/filters/extents.h"
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

/// The extents of what comes out for an input and a filter of the same rank, 1 or 2 (see `OutputMode`).
///
/// Throws `std::invalid_argument` if a rank or an extent is out of range, the ranks differ, or with `OutputMode::valid`
/// the filter exceeds the input.
ORVANE_API Extents outputExtents(const Extents& input, const Extents& filter, OutputMode mode);

/// What `Convolution` and `SeparableConvolution` have in common: everything but their filters.
///
/// One object is one job: make it once, run it for each input. It keeps a copy of the filters. Everything lasting is
/// allocated at construction; a run over other arrays than the last costs little more. An object serves one
/// thread at a time, and different objects share nothing. It can be moved; one that was moved from throws
/// `std::logic_error` when it is used, until something is assigned to it.
///
/// Bad arguments throw `std::invalid_argument` that names the argument, its value and what is allowed, and change
/// nothing. Messages of the filters behind, of which none is known to occur, and errors of a vendor's functions throw
/// `std::runtime_error`.
template <class UT, class HT>
class ORVANE_API ConvolutionRunner {
 public:
  using Output = ConvolutionOutput<UT, HT>;

  ConvolutionRunner(ConvolutionRunner&&) noexcept;
  ConvolutionRunner& operator=(ConvolutionRunner&&) noexcept;

  /// Filters `input` into `output`, all of whose elements are written. Extents must be those given at construction and
  /// those of `outputExtents`. The two arrays must not overlap; either may overlap a filter, which was copied.
  void run(ArrayView<const UT> input, ArrayView<Output> output);
  /// Filters `input` into a new array.
  Array<Output> run(ArrayView<const UT> input);

  /// Takes another value for a constant pad for the runs to come.
  void setPadValue(std::complex<double> value);

  const Extents& outputExtents() const;

 protected:
  using Job = detail::ConvolutionJob<UT, HT>;

  explicit ConvolutionRunner(std::unique_ptr<Job> newJob);
  ~ConvolutionRunner();

  std::unique_ptr<Job> job;
};

/// Convolution, or correlation, of inputs of one size with a filter.
///
///     y(p) = sum over j1, then j0, of u(p + j - centre) * h(f)
///
/// with j running over the filter's extents, f over its elements from the last to the first for convolution and from
/// the first to the last for correlation; optionally normalised (see `ConvolutionOptions` for all choices and for the
/// edge rules). Each output is one sum in this order, with one rounding for each multiplication and addition, in the
/// output's own type: the same bits on every machine, unless the application has named a vendor's library (see
/// `ZdLoader`).
///
/// UT and HT, the element types of input and filter, are `float` or `double` or their complex types, of one precision.
/// Ranks are 1 or 2. Indices are signed 32-bit numbers inside, so there are at most 2^31 - 1 elements in each array,
/// and in each dimension the input's extent and twice the filter's are no more than that together; a symmetric or a
/// mirror pad allows inputs of extents up to 2^30 - 1.
template <class UT, class HT = UT>
class ORVANE_API Convolution : public ConvolutionRunner<UT, HT> {
 public:
  Convolution(ArrayView<const HT> filter, const Extents& inputExtents, const ConvolutionOptions& options = {});

  /// Takes the values of another filter of the same extents for the runs to come.
  void setFilter(ArrayView<const HT> filter);
};

/// Convolution, or correlation, of inputs of one size with a separable filter: a first one along dimension 0 and a
/// second along dimension 1, for which it costs the sum of their lengths in place of the product.
///
/// The input is filtered with the first into an intermediate array of the output's element type, and that with the
/// second into the output. What `Convolution` says of sums and limits holds for both passes. The two filters have rank
/// 1, inputs rank 2. The pad rule holds for the input in the first pass and for the intermediate in the second; there a
/// constant pad is the first filter's sum times the pad value. There is no normalisation.
template <class UT, class HT = UT>
class ORVANE_API SeparableConvolution : public ConvolutionRunner<UT, HT> {
 public:
  SeparableConvolution(ArrayView<const HT> first, ArrayView<const HT> second, const Extents& inputExtents,
                       const ConvolutionOptions& options = {});

  /// Takes the values of other filters of the same lengths for the runs to come.
  void setFilters(ArrayView<const HT> first, ArrayView<const HT> second);
};

/// The element type of an `Array` or `ArrayView`.
template <class A>
using ElementOf = std::remove_const_t<typename A::element_type>;

/// Filters `input` with `filter`, once: see `Convolution`. Both are an `Array` or an `ArrayView`.
template <class Input, class Filter>
auto convolve(const Input& input, const Filter& filter, const ConvolutionOptions& options = {}) {
  const ArrayView<const ElementOf<Input>> from = input.view();
  return Convolution<ElementOf<Input>, ElementOf<Filter>>(filter.view(), from.extents(), options).run(from);
}

/// The same with `Direction::correlation`, whatever the options say.
template <class Input, class Filter>
auto correlate(const Input& input, const Filter& filter, ConvolutionOptions options = {}) {
  options.direction = Direction::correlation;
  return convolve(input, filter, options);
}

/// Filters `input` with `filter` into `output`, once. See `Convolution`; the output must not overlap the input.
template <class Input, class Filter>
void convolveInto(const Input& input, const Filter& filter,
                  ArrayView<ConvolutionOutput<ElementOf<Input>, ElementOf<Filter>>> output,
                  const ConvolutionOptions& options = {}) {
  const ArrayView<const ElementOf<Input>> from = input.view();
  Convolution<ElementOf<Input>, ElementOf<Filter>>(filter.view(), from.extents(), options).run(from, output);
}

/// Filters `input` with a filter along dimension 0 and one along dimension 1, once: see `SeparableConvolution`.
template <class Input, class First, class Second>
requires std::same_as<ElementOf<First>, ElementOf<Second>>
auto convolveSeparable(const Input& input, const First& first, const Second& second,
                       const ConvolutionOptions& options = {}) {
  const ArrayView<const ElementOf<Input>> from = input.view();
  return SeparableConvolution<ElementOf<Input>, ElementOf<First>>(first.view(), second.view(), from.extents(), options)
      .run(from);
}

/// Declares, or with `template` in front defines, something for the eight pairs of plain input and filter elements.
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
