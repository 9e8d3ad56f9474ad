#include "orvane/filters/convolution.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "orvane/filters/convolution_front.h"

namespace BP::filters {

namespace detail {

namespace {

template <class UT>
UT padElement(std::complex<double> value) {
  constexpr bool isComplex = !std::is_same_v<UT, RealOf<UT>>;
  checkPadValue(value, isComplex);
  using Real = RealOf<UT>;
  if constexpr (isComplex) {
    return {padPart<Real>(value.real()), padPart<Real>(value.imag())};
  } else {
    return padPart<Real>(value.real());
  }
}

}  // namespace

/// One convolution with the memory that its front uses: extents, filters, pad value, work vectors.
template <class UT, class HT>
class ConvolutionJob {
 public:
  using YT = ConvolutionOutput<UT, HT>;

  ConvolutionJob(ArrayView<const HT> newFilter, const Extents& input, const ConvolutionOptions& options)
      : geometry(input, newFilter.extents(), options),
        filter(copyOf("filter", newFilter, geometry.filterExtents)),
        padValue(padElement<UT>(options.padValue)),
        front(makeFront<HT, UT, YT>(host, geometry)) {}

  ConvolutionJob(ArrayView<const HT> first, ArrayView<const HT> newSecond, const Extents& input,
                 const ConvolutionOptions& options)
      : geometry(input, first.extents(), newSecond.extents(), options),
        filter(copyOf("first filter", first, geometry.filterExtents)),
        second(copyOf("second filter", newSecond, geometry.secondExtents)),
        padValue(padElement<UT>(options.padValue)),
        front(makeFront<HT, UT, YT>(host, geometry)) {}

  void run(ArrayView<const UT> input, ArrayView<YT> output) {
    checkArray("input", input, geometry.inputExtents);
    checkArray("output", output, geometry.outputExtents);
    checkDisjoint(input, output);
    bind(const_cast<UT*>(input.data()), output.data());  // the front only reads it
    runFront(*front, host);
  }

  void setFilter(ArrayView<const HT> newFilter) {
    checkArray("filter", newFilter, geometry.filterExtents);
    std::copy_n(newFilter.data(), filter.size(), filter.data());
  }

  void setFilters(ArrayView<const HT> first, ArrayView<const HT> newSecond) {
    checkArray("first filter", first, geometry.filterExtents);
    checkArray("second filter", newSecond, geometry.secondExtents);
    std::copy_n(first.data(), filter.size(), filter.data());
    std::copy_n(newSecond.data(), second.size(), second.data());
  }

  void setPadValue(std::complex<double> value) { padValue = padElement<UT>(value); }

  const Extents& outputExtents() const { return geometry.outputExtents; }

 private:
  /// Starts the front over these arrays, unless the last run used the same ones. Every run reads filters and pad value
  /// from their fixed addresses.
  void bind(UT* input, YT* output) {
    if (input == boundInput && output == boundOutput) return;
    constexpr bool isComplex = true;  // a complex pad value has both parts; for a real one this is ignored
    if (geometry.isSeparable()) {
      front->setup(filter.data(), second.data(), input, output, &padValue, isComplex);
    } else {
      front->setup(filter.data(), input, output, &padValue, isComplex);
    }
    boundInput = input;
    boundOutput = output;
  }

  ConvolutionGeometry geometry;
  std::vector<HT> filter;
  std::vector<HT> second;
  UT padValue;
  UT* boundInput = nullptr;
  YT* boundOutput = nullptr;
  ReferenceHost host;
  std::unique_ptr<ConvCorrTolk<HT, UT, YT>> front;  // destroyed before the memory that it uses
};

}  // namespace detail

template <class UT, class HT>
ConvolutionRunner<UT, HT>::ConvolutionRunner(std::unique_ptr<Job> newJob) : job(std::move(newJob), "convolution") {}

template <class UT, class HT>
void ConvolutionRunner<UT, HT>::run(ArrayView<const UT> input, ArrayView<Output> output) {
  job->run(input, output);
}

template <class UT, class HT>
auto ConvolutionRunner<UT, HT>::run(ArrayView<const UT> input) -> Array<Output> {
  Array<Output> output(outputExtents());
  run(input, output);
  return output;
}

template <class UT, class HT>
void ConvolutionRunner<UT, HT>::setPadValue(std::complex<double> value) {
  job->setPadValue(value);
}

template <class UT, class HT>
const Extents& ConvolutionRunner<UT, HT>::outputExtents() const {
  return job->outputExtents();
}

template <class UT, class HT>
Convolution<UT, HT>::Convolution(ArrayView<const HT> filter, const Extents& inputExtents,
                                 const ConvolutionOptions& options)
    : ConvolutionRunner<UT, HT>(std::make_unique<detail::ConvolutionJob<UT, HT>>(filter, inputExtents, options)) {}

template <class UT, class HT>
void Convolution<UT, HT>::setFilter(ArrayView<const HT> filter) {
  this->job->setFilter(filter);
}

template <class UT, class HT>
SeparableConvolution<UT, HT>::SeparableConvolution(ArrayView<const HT> first, ArrayView<const HT> second,
                                                   const Extents& inputExtents, const ConvolutionOptions& options)
    : ConvolutionRunner<UT, HT>(
          std::make_unique<detail::ConvolutionJob<UT, HT>>(first, second, inputExtents, options)) {}

template <class UT, class HT>
void SeparableConvolution<UT, HT>::setFilters(ArrayView<const HT> first, ArrayView<const HT> second) {
  this->job->setFilters(first, second);
}

#define ORVANE_DEFINE(UT, HT)               \
  template class ConvolutionRunner<UT, HT>; \
  template class Convolution<UT, HT>;       \
  template class SeparableConvolution<UT, HT>;
ORVANE_FOR_CONVOLUTION_PAIRS(ORVANE_DEFINE)
#undef ORVANE_DEFINE

}  // namespace BP::filters
