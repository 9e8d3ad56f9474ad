#include "orvane/filters/median.h"

#include <utility>

#include "orvane/filters/convolution_front.h"
#include "orvane/median/median_filter_tolk.h"

namespace BP::filters {

namespace detail {

/// One median filter with the memory that its front uses: extents, pad value, work vectors.
template <class T>
class MedianJob {
 public:
  MedianJob(const Extents& window, const Extents& input, const MedianOptions<T>& options)
      : geometry(input, window, {.mode = options.mode, .pad = options.pad}, maxIndex, "window"),
        padValue(options.padValue),
        front(host.getAdaptor(), geometry.rank, geometry.filterDims.data(), geometry.rank, geometry.inputDims.data(),
              geometry.pad, geometry.mode, false) {
    host.provideWorkVectors(front.getAllocator());
  }

  void run(ArrayView<const T> input, ArrayView<T> output) {
    checkArray("input", input, geometry.inputExtents);
    checkArray("output", output, geometry.outputExtents);
    checkDisjoint(input, output);
    bind(const_cast<T*>(input.data()), output.data());  // the front only reads it
    runFront(front, host);
  }

  void setPadValue(T value) { padValue = value; }

  const Extents& outputExtents() const { return geometry.outputExtents; }

 private:
  /// Starts the front over these arrays, unless the last run used the same ones. Every run reads the pad value.
  void bind(T* input, T* output) {
    if (input == boundInput && output == boundOutput) return;
    front.setup(input, output, &padValue, false);
    boundInput = input;
    boundOutput = output;
  }

  ConvolutionGeometry geometry;
  T padValue;
  T* boundInput = nullptr;
  T* boundOutput = nullptr;
  ReferenceHost host;
  MedianFilterTolk<T, T> front;  // destroyed before the memory that it uses
};

}  // namespace detail

template <class T>
Median<T>::Median(const Extents& window, const Extents& inputExtents, const MedianOptions<T>& options)
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
void Median<T>::setPadValue(T value) {
  job->setPadValue(value);
}

template <class T>
const Extents& Median<T>::outputExtents() const {
  return job->outputExtents();
}

template class Median<float>;
template class Median<double>;
template class Median<bool>;

}  // namespace BP::filters
