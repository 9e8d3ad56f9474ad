#include "orvane/filters/median.h"

#include <memory>
#include <utility>

#include "orvane/filters/fixed_median.h"
#include "orvane/filters/plain_job.h"
#include "orvane/median/median_filter_tolk.h"

namespace BP::filters {

namespace detail {

/// One median filter.
template <class T>
class MedianJob : public PlainFilterJob<T, T> {
 public:
  using Base = PlainFilterJob<T, T>;

  MedianJob(const Extents& window, const Extents& input, const MedianOptions& options)
      : Base({input, window, convolutionOptions(options), maxIndex, "window"}, convolutionOptions(options)),
        padValue(padElement<T>(options.pad.value)) {
    this->start();
  }

  void run(ArrayView<const T> input, ArrayView<T> output) { Base::run(storedArray(input), storedArray(output)); }
  void setPadValue(double value) { padValue = padElement<T>(value); }
  Rectangle positions() const { return rectangleOf(this->geometry.positions); }
  const Extents& windowExtents() const { return this->geometry.windowExtents; }

 private:
  std::unique_ptr<typename Base::Front> makeFront(ReferenceHost& host) override {
    auto front = std::make_unique<MedianFilterTolk<T, T>>(
        host.getAdaptor(), this->geometry.rank, this->geometry.filterDims.data(), this->geometry.rank,
        this->geometry.inputDims.data(), this->geometry.pad, this->geometry.mode, false);
    host.provideWorkVectors(front->getAllocator());
    return front;
  }
  void bind(typename Base::Front& front, T* input, T* output) override {
    static_cast<MedianFilterTolk<T, T>&>(front).setup(input, output, &padValue, false);
  }

  T padValue;
};

/// A median of integers: that of fixed-point values without fraction, which keeps no statistics.
template <StoredInteger T>
class MedianJob<T> {
 public:
  MedianJob(const Extents& window, const Extents& input, const MedianOptions& options)
      : median(window, input,
               {.input = type, .modes = {.rounding = Rounding::convergent, .gathering = Gathering::nothing}}, options) {
  }

  void run(ArrayView<const T> input, ArrayView<T> output) {
    median.run(FixedView(input, type), MutableFixedView(output, type));
  }
  void setPadValue(double value) { median.setPadValue(value); }
  const Extents& outputExtents() const { return median.outputExtents(); }
  Rectangle positions() const { return median.positions(); }
  const Extents& windowExtents() const { return median.windowExtents(); }

 private:
  static constexpr FixedType type{8 * static_cast<int>(sizeof(T)), 0, std::is_signed_v<T>};
  FixedMedian median;
};

}  // namespace detail

template <class T>
Median<T>::Median(const Extents& window, const Extents& inputExtents, const MedianOptions& options)
    : job(std::make_unique<detail::MedianJob<T>>(window, inputExtents, options), "median") {}

template <class T>
void Median<T>::run(ArrayView<const T> input, ArrayView<T> output) {
  job->run(input, output);
}

template <class T>
Array<T> Median<T>::run(ArrayView<const T> input) {
  Array<T> output(outputExtents());
  run(input, output);
  return output;
}

template <class T>
void Median<T>::setPadValue(double value) {
  job->setPadValue(value);
}

template <class T>
const Extents& Median<T>::outputExtents() const {
  return job->outputExtents();
}

template <class T>
Rectangle Median<T>::positions() const {
  return job->positions();
}

template <class T>
const Extents& Median<T>::windowExtents() const {
  return job->windowExtents();
}

#define ORVANE_DEFINE(T) template class Median<T>;
ORVANE_FOR_MEDIAN_ELEMENTS(ORVANE_DEFINE)
#undef ORVANE_DEFINE

}  // namespace BP::filters
