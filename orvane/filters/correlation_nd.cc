#include "orvane/filters/correlation_nd.h"

#include <algorithm>
#include <array>
#include <utility>
#include <vector>

#include "orvane/core/centre.h"
#include "orvane/correlation/correlation_stand_alone.h"
#include "orvane/filters/checks.h"
#include "orvane/filters/convolution_geometry.h"

namespace BP::filters {

/// One correlation with the memory that its front uses.
template <class T>
class CorrelationND<T>::Job {
 public:
  Job(ArrayView<const T> newFilter, const Extents& input, const CorrelationNDOptions& options)
      : mode(detail::modeOf(options.mode)),
        pad(detail::padOf(options.pad)),
        inputExtents(input),
        filterExtents(newFilter.extents()),
        outputs(detail::checkedOutputExtents(input, filterExtents, mode, pad, Extents::maxRank)),
        filter(detail::copyOf("filter", newFilter, filterExtents)),
        inputDims(dimsOf(input)),
        filterDims(dimsOf(filterExtents)),
        centre(centresOf(filterDims)),
        front(static_cast<int>(input.rank()), filterDims.data(), inputDims.data(), pad, mode, centre.data(),
              filter.data(), nullptr, nullptr) {
    setPadValue(options.padValue);
    front.setup();
  }
  Job(const Job&) = delete;
  Job& operator=(const Job&) = delete;

  void run(ArrayView<const T> input, ArrayView<T> output) {
    detail::checkArray("input", input, inputExtents);
    detail::checkArray("output", output, outputs);
    detail::checkDisjoint(input, output);
    front.setArrays(const_cast<T*>(input.data()), output.data());  // the front only reads the input
    front.invoke();
  }

  void setFilter(ArrayView<const T> newFilter) {
    detail::checkArray("filter", newFilter, filterExtents);
    std::copy_n(newFilter.data(), filter.size(), filter.data());
  }

  void setPadValue(double value) { front.setPadValue(detail::padPart<T>(value)); }

  const Extents& outputExtents() const { return outputs; }

 private:
  using Dims = std::array<int, Extents::maxRank>;

  static Dims dimsOf(const Extents& extents) {
    Dims dims{};
    std::ranges::transform(extents, dims.begin(), [](std::int64_t extent) { return static_cast<int>(extent); });
    return dims;
  }
  static Dims centresOf(const Dims& extents) {
    Dims centres{};
    std::ranges::transform(extents, centres.begin(), [](int extent) { return centreOf(extent); });
    return centres;
  }

  OutputModeEnum mode;
  PadTypeEnum pad;
  Extents inputExtents;
  Extents filterExtents;
  Extents outputs;
  std::vector<T> filter;
  Dims inputDims;
  Dims filterDims;
  Dims centre;
  CorrelationStandAlone<T> front;
};

template <class T>
CorrelationND<T>::CorrelationND(ArrayView<const T> filter, const Extents& inputExtents,
                                const CorrelationNDOptions& options)
    : job(std::make_unique<Job>(filter, inputExtents, options), "correlation") {}

template <class T>
void CorrelationND<T>::run(ArrayView<const T> input, ArrayView<T> output) {
  job->run(input, output);
}

template <class T>
Array<T> CorrelationND<T>::run(ArrayView<const T> input) {
  Array<T> output(outputExtents());
  run(input, output);
  return output;
}

template <class T>
void CorrelationND<T>::setFilter(ArrayView<const T> filter) {
  job->setFilter(filter);
}

template <class T>
void CorrelationND<T>::setPadValue(double value) {
  job->setPadValue(value);
}

template <class T>
const Extents& CorrelationND<T>::outputExtents() const {
  return job->outputExtents();
}

template class CorrelationND<float>;
template class CorrelationND<double>;

}  // namespace BP::filters
