#include "orvane/filters/convolution.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "orvane/filters/convolution_front.h"
#include "orvane/filters/plain_job.h"

namespace BP::filters {

namespace detail {

/// One convolution. UT is the type in which inputs are computed.
template <class UT, class HT>
class ConvolutionJob : public PlainFilterJob<UT, ConvolutionOutput<UT, HT>> {
 public:
  using YT = ConvolutionOutput<UT, HT>;
  using Base = PlainFilterJob<UT, YT>;

  ConvolutionJob(ArrayView<const HT> newFilter, const Extents& input, const ConvolutionOptions& options)
      : Base({input, newFilter.extents(), options}, options),
        filter(copyOf("filter", newFilter, this->geometry.filterExtents)),
        padValue(padElement<UT>(options.pad.value)) {
    this->start();
  }

  ConvolutionJob(ArrayView<const HT> first, ArrayView<const HT> newSecond, const Extents& input,
                 const ConvolutionOptions& options)
      : Base({input, first.extents(), newSecond.extents(), options}, options),
        filter(copyOf("first filter", first, this->geometry.filterExtents)),
        second(copyOf("second filter", newSecond, this->geometry.secondExtents)),
        padValue(padElement<UT>(options.pad.value)) {
    this->start();
  }

  void setFilter(ArrayView<const HT> newFilter) {
    checkArray("filter", newFilter, this->geometry.filterExtents);
    copyDense(newFilter, filter.data());
  }

  void setFilters(ArrayView<const HT> first, ArrayView<const HT> newSecond) {
    checkArray("first filter", first, this->geometry.filterExtents);
    checkArray("second filter", newSecond, this->geometry.secondExtents);
    copyDense(first, filter.data());
    copyDense(newSecond, second.data());
  }

  void setPadValue(std::complex<double> value) { padValue = padElement<UT>(value); }

 private:
  using Front = ConvCorrTolk<HT, UT, YT>;

  std::unique_ptr<typename Base::Front> makeFront(ReferenceHost& host) override {
    return detail::makeFront<HT, UT, YT>(host, this->geometry);
  }
  void bind(typename Base::Front& front, UT* input, YT* output) override {
    constexpr bool isComplex = true;  // a complex pad value has both parts; for a real one this is ignored
    auto& bound = static_cast<Front&>(front);
    if (this->geometry.isSeparable()) {
      bound.setup(filter.data(), second.data(), input, output, &padValue, isComplex);
    } else {
      bound.setup(filter.data(), input, output, &padValue, isComplex);
    }
  }

  std::vector<HT> filter;
  std::vector<HT> second;
  UT padValue;
};

}  // namespace detail

template <class UT, class HT>
ConvolutionRunner<UT, HT>::ConvolutionRunner(std::unique_ptr<Job> newJob) : job(std::move(newJob), "convolution") {}

template <class UT, class HT>
void ConvolutionRunner<UT, HT>::run(ArrayView<const UT> input, ArrayView<Output> output) {
  job->run(detail::storedArray(input), detail::storedArray(output));
}

template <class UT, class HT>
std::int64_t ConvolutionRunner<UT, HT>::runStored(ArrayView<const UT> input, Stored type, void* output,
                                                  const Layout& layout) {
  return job->run(detail::storedArray(input), {output, layout, type});
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
Rectangle ConvolutionRunner<UT, HT>::positions() const {
  return rectangleOf(job->getGeometry().positions);
}

template <class UT, class HT>
const Extents& ConvolutionRunner<UT, HT>::windowExtents() const {
  return job->getGeometry().windowExtents;
}

template <class UT, class HT>
Convolution<UT, HT>::Convolution(ArrayView<const HT> filter, const Extents& inputExtents,
                                 const ConvolutionOptions& options)
    : ConvolutionRunner<UT, HT>(
          std::make_unique<typename ConvolutionRunner<UT, HT>::Job>(filter, inputExtents, options)) {}

template <class UT, class HT>
void Convolution<UT, HT>::setFilter(ArrayView<const HT> filter) {
  this->job->setFilter(filter);
}

template <class UT, class HT>
SeparableConvolution<UT, HT>::SeparableConvolution(ArrayView<const HT> first, ArrayView<const HT> second,
                                                   const Extents& inputExtents, const ConvolutionOptions& options)
    : ConvolutionRunner<UT, HT>(
          std::make_unique<typename ConvolutionRunner<UT, HT>::Job>(first, second, inputExtents, options)) {}

template <class UT, class HT>
void SeparableConvolution<UT, HT>::setFilters(ArrayView<const HT> first, ArrayView<const HT> second) {
  this->job->setFilters(first, second);
}

#define ORVANE_DEFINE(UT, HT)               \
  template class ConvolutionRunner<UT, HT>; \
  template class Convolution<UT, HT>;       \
  template class SeparableConvolution<UT, HT>;
ORVANE_FOR_CONVOLUTION_PAIRS(ORVANE_DEFINE)
ORVANE_FOR_INTEGER_PAIRS(ORVANE_DEFINE)
#undef ORVANE_DEFINE

}  // namespace BP::filters
