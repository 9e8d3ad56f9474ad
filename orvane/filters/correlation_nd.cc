#include "orvane/filters/correlation_nd.h"

#include <algorithm>
#include <array>
#include <complex>
#include <memory>
#include <utility>
#include <vector>

#include "orvane/core/centre.h"
#include "orvane/correlation/correlation_stand_alone.h"
#include "orvane/filters/checks.h"
#include "orvane/filters/convolution_geometry.h"
#include "orvane/filters/stored_array.h"
#include "orvane/filters/team.h"

namespace BP::filters {

namespace detail {

/// One correlation: fronts that share its runs, with the memory that they use.
template <class T>
class CorrelationNDJob {
 public:
  CorrelationNDJob(ArrayView<const T> newFilter, const Extents& input, const CorrelationNDOptions& options)
      : mode(modeOf(options.mode)),
        pad(padOf(options.pad)),
        inputExtents(input),
        filterExtents(newFilter.extents()),
        outputs(positionsFor(options)),
        filter(copyOf("filter", newFilter, filterExtents)),
        inputDims(dimsOf(input)),
        filterDims(dimsOf(filterExtents)),
        centre(centresOf(filterDims)),
        region(outputs),
        hasRegion(options.region.has_value()),
        padValue(padElement<T>(options.pad.value)),
        crew(options.threads, options.progress),
        team(crew, [this] { return std::make_unique<Member>(*this); }) {}
  CorrelationNDJob(const CorrelationNDJob&) = delete;
  CorrelationNDJob& operator=(const CorrelationNDJob&) = delete;

  /// Returns the number of outputs that were clipped to the output's type.
  std::int64_t run(const StoredArray& input, const StoredArray& output) {
    checkArray("input", input.data, input.layout, inputExtents);
    checkArray("output", output.data, output.layout, outputs.extents);
    if (outputs.isEmpty()) return 0;
    checkDisjoint({input.data, input.layout, storedBytes<T>(input.type)},
                  {output.data, output.layout, storedBytes<T>(output.type)});
    // Fronts only read their input; they take elements that are stored in another type for what they are.
    inputData = static_cast<T*>(const_cast<void*>(input.data));
    outputData = static_cast<T*>(const_cast<void*>(output.data));
    inputType = input.type;
    outputType = output.type;
    inputStrides.set(input.layout);
    outputStrides.set(output.layout);
    team.run(inputExtents.rank(), elementCount(filterExtents));
    std::int64_t clipped = 0;
    team.forEachInRun([&](Member& member) { clipped += member.getProcessor().takeClipped(); });
    return clipped;
  }

  void setFilter(ArrayView<const T> newFilter) {
    checkArray("filter", newFilter, filterExtents);
    copyDense(newFilter, filter.data());
  }

  void setPadValue(double value) { padValue = padElement<T>(value); }

  const Box& positions() const { return outputs; }
  const Extents& windowExtents() const { return filterExtents; }

 private:
  using Dims = std::array<int, Extents::maxRank>;

  /// One front.
  struct Member {
    explicit Member(CorrelationNDJob& owner)
        : job(owner),
          front(static_cast<int>(job.inputExtents.rank()), job.filterDims.data(), job.inputDims.data(), job.pad,
                job.mode, job.centre.data(), job.filter.data(), nullptr, nullptr) {
      if (job.hasRegion) getProcessor().setRegion(job.region.get());
      front.setup();
    }
    AnyBP& getProcessor() { return *front.getProcessor(); }
    void begin() {
      front.setArrays(job.inputData, job.outputData);
      front.setPadValue(job.padValue);
      getProcessor().setStrides(job.inputStrides.get(), job.outputStrides.get());
      getProcessor().setStored(job.inputType, job.outputType);
      getProcessor().takeClipped();  // of a run that ended early
      getProcessor().beginRun();
    }
    template <class Work>
    void compute(Work&& work) {
      work(getProcessor());
    }

    CorrelationNDJob& job;
    CorrelationStandAlone<T> front;
  };

  Box positionsFor(const CorrelationNDOptions& options) const {
    checkedOutputExtents(inputExtents, filterExtents, mode, pad, Extents::maxRank);
    return positionsIn(positionsOf(inputExtents, filterExtents, mode), options.region);
  }
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
  Box outputs;
  std::vector<T> filter;
  Dims inputDims;
  Dims filterDims;
  Dims centre;
  BoxTables region;
  bool hasRegion;
  T padValue;
  T* inputData = nullptr;
  T* outputData = nullptr;
  Stored inputType = Stored::asComputed;
  Stored outputType = Stored::asComputed;
  LineStrides inputStrides, outputStrides;
  Crew crew;
  Team<Member> team;
};

}  // namespace detail

template <class T, class UT>
CorrelationND<T, UT>::CorrelationND(ArrayView<const T> filter, const Extents& inputExtents,
                                    const CorrelationNDOptions& options)
    : job(std::make_unique<detail::CorrelationNDJob<T>>(filter, inputExtents, options), "correlation") {}

template <class T, class UT>
void CorrelationND<T, UT>::run(ArrayView<const UT> input, ArrayView<T> output) {
  job->run(detail::storedArray(input), detail::storedArray(output));
}

template <class T, class UT>
Array<T> CorrelationND<T, UT>::run(ArrayView<const UT> input) {
  Array<T> output(outputExtents());
  run(input, output);
  return output;
}

template <class T, class UT>
std::int64_t CorrelationND<T, UT>::runStored(ArrayView<const UT> input, Stored type, void* output,
                                             const Layout& layout) {
  return job->run(detail::storedArray(input), {output, layout, type});
}

template <class T, class UT>
void CorrelationND<T, UT>::setFilter(ArrayView<const T> filter) {
  job->setFilter(filter);
}

template <class T, class UT>
void CorrelationND<T, UT>::setPadValue(double value) {
  job->setPadValue(value);
}

template <class T, class UT>
const Extents& CorrelationND<T, UT>::outputExtents() const {
  return job->positions().extents;
}

template <class T, class UT>
const Box& CorrelationND<T, UT>::positions() const {
  return job->positions();
}

template <class T, class UT>
const Extents& CorrelationND<T, UT>::windowExtents() const {
  return job->windowExtents();
}

#define ORVANE_DEFINE(T, UT) template class CorrelationND<T, UT>;
ORVANE_FOR_CORRELATION_PAIRS(ORVANE_DEFINE)
#undef ORVANE_DEFINE

}  // namespace BP::filters
