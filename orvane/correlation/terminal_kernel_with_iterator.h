#pragma once

#include "orvane/core/clever_ptr.h"
#include "orvane/core/element.h"
#include "orvane/core/enums.h"
#include "orvane/exec/terminal_kernel.h"
#include "orvane/plan/sector.h"

namespace BP {

/// The kernel of an algorithm that walks its filter with an iterator, in any number of dimensions. It computes the
/// element at one position into the scratch output; a `LoopIterator` walks the positions. The nine operations on whole
/// sectors are empty. The maker owns the iterator. Each start sets the iterator's range to the filter's.
template <class Out, class Algo, class It, class Alloc>
class TerminalKernelWithIterator : public TerminalKernel<Out, Algo, Alloc> {
 public:
  TerminalKernelWithIterator(Alloc* alloc, Out* scratch, Algo* algo, It* it)
      : TerminalKernel<Out, Algo, Alloc>(alloc, scratch, algo), iterator(it) {}

  void setup(setupModeT stage) override {
    TerminalKernel<Out, Algo, Alloc>::setup(stage);
    const auto& filter = this->getAlgorithm().getFilter();
    if (stage == setupStart || stage == setupResize) iterator->setRange(filter.getStart(), filter.getEnd());
    if (stage == setupAttachWork) iterator->attachWork();
  }

  /// Has vector lanes compute a sector; false, and nothing done, if they do not. Outputs whose window misses the input
  /// are one copied value.
  bool computeByLines(InsideSector& sector, Out& result) { return this->runByLines(sector, nullptr, result); }
  bool computeByLines(BoundarySector& sector, Out& result) { return this->runByLines(sector, &sector, result); }
  bool computeByLines(OutsideSector& /*sector*/, Out& /*result*/) { return false; }

  /// The element at a position whose window lies wholly in the input.
  void computeAt(const InsideSector& /*sector*/, const CleverPtr<int>& position) {
    beginWindow(position);
    this->getAlgorithm().insideAt(*iterator, *this->output);
  }
  /// The element at a position whose window crosses an edge.
  void computeAt(const BoundarySector& sector, const CleverPtr<int>& position) {
    beginWindow(position);
    this->getAlgorithm().boundaryAt(sector, *iterator, *this->output);
  }
  /// The element at any position whose window misses the input: the pad output.
  void computeAt(const OutsideSector& /*sector*/, const CleverPtr<int>& /*position*/) {
    const auto& y1 = this->output->getBlock();
    copyElements(y1.getData().ptr, this->getAlgorithm().getInput().getPadOutput().ptr, y1.getNumElements());
  }

  /// Computes the pad output: the response of the window at `position` with the outside reads of `sector`.
  void computePadOutput(const OutsideSector& sector, const CleverPtr<int>& position) {
    beginWindow(position);
    this->getAlgorithm().padResponseAt(sector, *iterator, *this->output);
    const auto& padOutput = this->getAlgorithm().getInput().getPadOutputBlock();
    copyElements(padOutput.getData().ptr, this->output->getBlock().getData().ptr, padOutput.getNumElements());
  }

 private:
  void beginWindow(const CleverPtr<int>& position) {
    iterator->beginWindow(this->getAlgorithm().getFilter(), this->getAlgorithm().getInput().getBlock(), position);
  }
  template <class T>
  static void copyElements(T* to, T* from, int count) {
    for (int i = 0; i < count; ++i) assign(elementAt(to, i), elementAt(from, i));
  }

  It* iterator;
};

}  // namespace BP
