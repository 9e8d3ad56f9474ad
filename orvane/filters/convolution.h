#pragma once

#include <complex>
#include <concepts>
#include <memory>
#include <type_traits>

#include "orvane/filters/array.h"
#include "orvane/filters/elements.h"
#include "orvane/filters/extents.h"
#include "orvane/filters/job_handle.h"
#include "orvane/filters/options.h"
#include "orvane/platform/export.h"

namespace BP::filters {

namespace detail {
template <class UT, class HT>
class ConvolutionJob;
}  // namespace detail

/// The element type of the output for inputs of UT and filters of HT (see elements.h): that of the sums, which is
/// complex if either is.
template <class UT, class HT>
using ConvolutionOutput = typename detail::FilterElements<UT, HT>::Output;

/// The extents of the output for an input and a filter of the same rank, 1 or 2 (see `OutputMode`).
///
/// Throws `std::invalid_argument` if a rank or an extent is out of range, the ranks differ, or with `OutputMode::valid`
/// the filter exceeds the input.
ORVANE_API Extents outputExtents(const Extents& input, const Extents& filter, OutputMode mode);

/// The common base of `Convolution` and `SeparableConvolution`: everything except the filters.
///
/// An object is made once and run for each input. It keeps a copy of the filters. The constructor allocates all lasting
/// memory but that of further threads, which the first run makes that needs them. A run over other arrays than the last
/// ones costs little more. One thread at a time may use an object, whose runs share their work with threads of their
/// own if the options say so; different objects share nothing but the cores. The bits of the output do not depend on
/// threads. An object can be moved. Its use after that throws `std::logic_error`, until another object is assigned to
/// it.
///
/// A bad argument throws `std::invalid_argument` and changes nothing. The text has the argument, its value and the
/// allowed values. An error of a vendor's function throws `std::runtime_error`. So does any message of the library
/// below this API, but none is known to occur.
template <class UT, class HT>
class ORVANE_API ConvolutionRunner {
 public:
  using Output = ConvolutionOutput<UT, HT>;

  /// Filters `input` into `output` and writes all elements of `output`. The input must have the extents given at
  /// construction, the output those of `outputExtents`. The two arrays must not overlap, as outputs would overwrite
  /// inputs of others. Either may overlap a filter, which was copied. Throws `Cancelled` if the progress callback says
  /// so.
  void run(ArrayView<const UT> input, ArrayView<Output> output);
  /// Filters `input` into a new array.
  Array<Output> run(ArrayView<const UT> input);
  /// The same with outputs that are rounded to nearest, ties to even, and clipped to the range of the output's integers
  /// of 8, 16 or 32 bits. NaN becomes 0 and counts as clipped. Returns the number of outputs that were clipped.
  template <class Rounded>
  std::int64_t runRounded(ArrayView<const UT> input, Rounded&& output) {
    using Y = typename std::remove_cvref_t<Rounded>::element_type;
    static_assert(StoredInteger<Y>, "orvane: outputs are rounded to integers of 8, 16 or 32 bits; run() gives others");
    static_assert(std::is_floating_point_v<Output>, "orvane: complex outputs are not rounded");
    const ArrayView<Y> to = output.view();
    return runStored(input, storedOf<Y>(), to.data(), to.layout());
  }

  /// Sets the value of a constant pad for later runs.
  void setPadValue(std::complex<double> value);

  const Extents& outputExtents() const;
  /// The positions that the output holds, counted from the input's first element.
  Rectangle positions() const;
  /// The extents of the window.
  const Extents& windowExtents() const;

 protected:
  using Job = detail::ConvolutionJob<typename detail::FilterElements<UT, HT>::Computed, HT>;

  explicit ConvolutionRunner(std::unique_ptr<Job> newJob);
  ConvolutionRunner(ConvolutionRunner&&) = default;
  ConvolutionRunner& operator=(ConvolutionRunner&&) = default;
  ~ConvolutionRunner() = default;

  detail::JobHandle<Job> job;

 private:
  std::int64_t runStored(ArrayView<const UT> input, Stored type, void* output, const Layout& layout);
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
/// UT and HT, the element types of input and filter, are `float` or `double` or their complex types, of one precision;
/// or UT is an integer (see elements.h), which is converted exactly to the precision of the filter.
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

/// Filters `input` with `filter` once (see `Convolution`). Each is an `Array` or an `ArrayView`.
template <class Input, class Filter>
auto convolve(const Input& input, const Filter& filter, const ConvolutionOptions& options = {}) {
  const ArrayView<const ElementOf<Input>> from = input.view();
  return Convolution<ElementOf<Input>, ElementOf<Filter>>(filter.view(), from.extents(), options).run(from);
}

namespace detail {
/// The options with the direction `correlation`. Throws `std::invalid_argument` if they say `convolution`.
ORVANE_API ConvolutionOptions correlating(ConvolutionOptions options);
}  // namespace detail

/// The same with `FilterDirection::correlation`. Throws `std::invalid_argument` if the options contradict this.
template <class Input, class Filter>
auto correlate(const Input& input, const Filter& filter, const ConvolutionOptions& options = {}) {
  return convolve(input, filter, detail::correlating(options));
}

/// Filters `input` with `filter` into `output` once (see `Convolution`). The output must not overlap the input. Its
/// elements are those of the sums, or integers, to which the sums are rounded. Returns the number of outputs that were
/// clipped to the range of such integers.
template <class Input, class Filter, class Output>
std::int64_t convolveInto(const Input& input, const Filter& filter, Output&& output,
                          const ConvolutionOptions& options = {}) {
  const ArrayView<const ElementOf<Input>> from = input.view();
  Convolution<ElementOf<Input>, ElementOf<Filter>> convolution(filter.view(), from.extents(), options);
  if constexpr (StoredInteger<ElementOf<std::remove_cvref_t<Output>>>) {
    return convolution.runRounded(from, output);
  } else {
    convolution.run(from, output.view());
    return 0;
  }
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

/// Applies a macro to the pairs with integers as inputs.
#define ORVANE_FOR_INTEGER_PAIRS(APPLY)               \
  ORVANE_FOR_SHORT_PAIRS(APPLY, float)                \
  ORVANE_FOR_SHORT_PAIRS(APPLY, std::complex<float>)  \
  ORVANE_FOR_SHORT_PAIRS(APPLY, double)               \
  ORVANE_FOR_SHORT_PAIRS(APPLY, std::complex<double>) \
  APPLY(std::int32_t, double)                         \
  APPLY(std::uint32_t, double)                        \
  APPLY(std::int32_t, std::complex<double>)           \
  APPLY(std::uint32_t, std::complex<double>)
#define ORVANE_FOR_SHORT_PAIRS(APPLY, HT) \
  APPLY(std::int8_t, HT)                  \
  APPLY(std::uint8_t, HT)                 \
  APPLY(std::int16_t, HT)                 \
  APPLY(std::uint16_t, HT)

#define ORVANE_DECLARE(UT, HT)                     \
  extern template class ConvolutionRunner<UT, HT>; \
  extern template class Convolution<UT, HT>;       \
  extern template class SeparableConvolution<UT, HT>;
ORVANE_FOR_CONVOLUTION_PAIRS(ORVANE_DECLARE)
ORVANE_FOR_INTEGER_PAIRS(ORVANE_DECLARE)
#undef ORVANE_DECLARE

}  // namespace BP::filters
