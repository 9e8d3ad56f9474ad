#pragma once

#include <memory>

#include "orvane/algorithm/collector.h"
#include "orvane/core/element.h"
#include "orvane/core/enums.h"
#include "orvane/plan/block.h"

namespace BP {

/// Abstract root of the algorithms. An algorithm computes one output from one window.
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

/// The lane sums of an algorithm that has none.
struct NoLanes {};

/// Common set-up of algorithms that walk a filter over an input.
///
/// `setupStart` clears the pad output, so a processor that needs one computes it afterwards. Stages 2 to 4 set the
/// filter's range to all its indices. Stages 2 and 3 compute its strides and element count, so a new filter size needs
/// one of these. The processor owns `filter` and `input`.
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

  /// What vector lanes compute for the algorithm: nothing, unless a derived class says so.
  using Lanes = NoLanes;
  NoLanes& getLaneSums() { return noLanes; }

  BlockT& getFilter() const { return *filter; }
  InputT& getInput() const { return *input; }

 protected:
  BlockT* filter;
  InputT* input;

 private:
  [[no_unique_address]] NoLanes noLanes;

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
/// Kernels call three functions of a derived class, none of them virtual: `scoreAt` for windows wholly inside and, if
/// its input can pad, `boundaryAt` and `outsideAt`. Each leaves its result in element 0 of a scratch output.
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

  MinIdxCollector<AllocT, YT>& getMinIdxCollector() const { return *minIdxCollector; }

 private:
  std::unique_ptr<MinIdxCollector<AllocT, YT>> minIdxCollector;
};

}  // namespace BP
