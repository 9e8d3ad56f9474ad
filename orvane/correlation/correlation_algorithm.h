#pragma once

#include <cfloat>

#include "orvane/algorithm/algorithm.h"
#include "orvane/algorithm/lane_sums.h"
#include "orvane/core/clever_ptr.h"
#include "orvane/core/element.h"
#include "orvane/core/enums.h"
#include "orvane/input/pad.h"
#include "orvane/plan/block.h"
#include "orvane/plan/output.h"
#include "orvane/plan/sector.h"

namespace BP {

static_assert(FLT_EVAL_METHOD == 0, "sums must round to their own type after every operation");

/// Correlation at one position, in any number of dimensions: the sum of products of the input's elements under the
/// filter and the filter's elements, in the order of the iterator that walks the filter, from its first element to its
/// last.
///
///     y = (...((0 + u(0) * h(0)) + u(1) * h(1)) + ...)
///
/// Each operation takes that iterator at the start of its walk (`beginWindow`). The iterator's first frame has the
/// filter's indices, its second the input's coordinates. The operation walks it to its end and leaves the sum in
/// element 0 of the scratch output `y1`. Filter, input and sum are of type T; every product and every sum rounds once,
/// in T. Nothing is normalised.
template <class AllocT, class BlockT, class InputT, class T>
class CorrelationAlgorithm : public WindowAlgorithm<AllocT, BlockT, InputT> {
 public:
  /// Tells `TerminalKernel` that it has no two-dimensional walk for this algorithm.
  static constexpr bool walksByIterator = true;
  using Out = Output<T, AllocT>;

  CorrelationAlgorithm(AllocT* alloc, BlockT* filterBlock, InputT* in)
      : WindowAlgorithm<AllocT, BlockT, InputT>(alloc, filterBlock, in) {
    alloc->allocateArray(accumulator, 1, "accumulator");
  }

  /// The common set-up.
  void setup(setupModeT mode) {
    WindowAlgorithm<AllocT, BlockT, InputT>::setup(mode);
    if (mode == setupResize || mode == setupStart) laneSums.resize(*this->filter, this->filter->getNumDims());
    laneSums.begin(this->filter->getData().ptr, false, nullptr);
  }

  /// The same sums in vector lanes.
  using Lanes = LaneSums<T, T, T, 0>;
  Lanes& getLaneSums() { return laneSums; }

  /// The sum of a window wholly inside the input.
  template <class It>
  void insideAt(It& window, Out& y1) {
    const auto& u = this->input->getBlock();
    sumProducts(window, y1, [&](const int* index) { return elementOf(u, u.getNumDims(), index); });
  }

  /// The sum of a window that crosses an edge. The pad redirects the iterator's coordinates in place. This is harmless
  /// here: a redirected coordinate lies in the input, so the next read leaves it alone.
  template <class It>
  void boundaryAt(const BoundarySector& sector, It& window, Out& y1) {
    const auto& u = this->input->getBlock();
    sumProducts(window, y1,
                [&](int* index) { return this->input->getPad().readBoundary(u, sector, u.getNumDims(), index); });
  }

  /// The sum for all windows beyond the edge. A constant pad takes the products with its value. Other pads take the
  /// products with the elements that outside reads of `sector` give at the window. A coordinate that the walk does not
  /// change between two taps is redirected again at the second tap.
  template <class It>
  void padResponseAt(const OutsideSector& sector, It& window, Out& y1) {
    const auto& u = this->input->getBlock();
    sumProducts(window, y1, [&](int* index) {
      if constexpr (InputT::padType == PadTypeConstant) {
        return &elementAt(this->input->padValues().ptr, 0);
      } else {
        return this->input->getPad().readOutside(u, sector, u.getNumDims(), index);
      }
    });
  }

 private:
  template <class It, class ReadT>
  void sumProducts(It& window, Out& y1, ReadT&& read) {
    T* const h = this->filter->getData().ptr;
    {
      RunningElement<T> sum(accumulator.ptr);
      putZero(sum.get());
      for (; !window.getDone(); window.next()) {
        const T* const tap = read(window.getTIdxB().ptr);
        multiplyAdd(sum.get(), *tap, elementAt(h, linearIndex(*this->filter, window.getTIdxA())));
      }
    }
    assign(elementAt(y1.getBlock().getData().ptr, 0), elementAt(accumulator.ptr, 0));
  }

  CleverPtr<T> accumulator;
  Lanes laneSums;
};

}  // namespace BP
