#pragma once

#include <memory>

#include "orvane/algorithm/collector.h"
#include "orvane/core/element.h"
#include "orvane/core/enums.h"
#include "orvane/plan/block.h"

namespace BP {

/// Abstract root of the algorithms: what computes one output from one window, and knows nothing of sectors.
template <class AllocT>
class Algorithm {
 public:
  explicit Algorithm(AllocT* alloc) : allocator(alloc) {}
  Algorithm(const Algorithm&) = delete;
  Algorithm& operator=(const Algorithm&) = delete;
  virtual ~Algorithm() = default;

  AllocT* getAllocator() const { return allocator; }
  /// Whether a `setupStart` has run.
  bool getIsStarted() const { return isStarted; }

 protected:
  AllocT* allocator;
  bool isStarted = false;
};

/// Common set-up of algorithms that walk a filter over an input.
///
/// At `setupStart` the pad output is cleared, so a processor that wants one computes it afterwards. At stages 2 to 4
/// the filter's walk is set to all its indices, at 2 and 3 its strides and element count are worked out: a new filter
/// size needs one of these. `filter` and `input` belong to the processor.
template <class AllocT, class BlockT, class InputT>
class WindowAlgorithm : public Algorithm<AllocT> {
 public:
  using AllocatorType = AllocT;
  using InputType = InputT;

  WindowAlgorithm(AllocT* alloc, BlockT* filterBlock, InputT* in)
      : Algorithm<AllocT>(alloc), filter(filterBlock), input(in) {}

  void setup(setupModeT mode) {
    if (mode == setupStart) {
      putZero(elementAt(input->getPadOutput().ptr, 0));
      this->isStarted = true;
    }
    const bool isLayingOut = mode == setupResize || mode == setupStart;
    if (isLayingOut || mode == setupInvoke) walkWholeFilter();
    input->setup(mode);
    if constexpr (requires { filter->computeStrides(); }) {
      if (isLayingOut) filter->computeStrides();
    }
  }

  BlockT& getFilter() const { return *filter; }
  InputT& getInput() const { return *input; }

 protected:
  BlockT* filter;
  InputT* input;

 private:
  void walkWholeFilter() {
    int* hStart = filter->getStart().ptr;
    for (int d = 0; d < filter->getNumDims(); ++d) {
      hStart[d] = 0;
      filter->getEnd().ptr[d] = hStart[d] + filter->getDims().ptr[d] - 1;
    }
  }
};

/// Base of every algorithm of the two-dimensional kernels; scores are of type YT, inputs of type UT.
///
/// A derived class gives the kernels, by name and not by virtual calls, `scoreAt` for windows wholly inside, and where
/// its input can pad `boundaryAt` and `outsideAt`; each leaves its result in element 0 of a scratch output.
template <class AllocT, class BlockT, class InputT, class YT, class UT>
class DistanceMetricAlgorithm : public WindowAlgorithm<AllocT, BlockT, InputT> {
 public:
  using Value = YT;

  DistanceMetricAlgorithm(AllocT* alloc, BlockT* filterBlock, InputT* in)
      : WindowAlgorithm<AllocT, BlockT, InputT>(alloc, filterBlock, in),
        minIdxCollector(std::make_unique<MinIdxCollector<AllocT, YT>>(alloc)) {}

  /// The common set-up; the best match so far is forgotten at `setupStart` and `setupInvoke`.
  void setup(setupModeT mode) {
    WindowAlgorithm<AllocT, BlockT, InputT>::setup(mode);
    if (mode == setupStart || mode == setupInvoke) minIdxCollector->setHasValue(false);
  }

  MinIdxCollector<AllocT, YT>& getMinIdxCollector() { return *minIdxCollector; }

 private:
  std::unique_ptr<MinIdxCollector<AllocT, YT>> minIdxCollector;
};

}  // namespace BP
