#pragma once

#include "orvane/core/element.h"
#include "orvane/plan/block.h"

namespace BP {

/// Abstract root of the loops.
class AnyLoop {
 public:
  virtual ~AnyLoop() = default;
};

/// A loop over the positions of an iterator that belongs to the maker.
template <class It, class Alloc>
class Loop : public AnyLoop {
 public:
  explicit Loop(It* it) : iterator(it) {}
  It& getIterator() const { return *iterator; }

 protected:
  It* iterator;
};

/// Runs a body at each position until the walk is done; the test comes first.
template <class It, class Alloc>
class WhileLoop : public Loop<It, Alloc> {
 public:
  using Loop<It, Alloc>::Loop;

  template <class BodyT>
  void run(BodyT&& body) {
    for (; !this->iterator->getDone(); this->iterator->next()) body();
  }
};

/// Abstract root of the loops that run a kernel.
class AnyLoopIterator {
 public:
  virtual ~AnyLoopIterator() = default;
};

/// Runs whole sectors: the kernel computes them line by line, or one element at each position, which then goes to its
/// place in the result.
/// Kernel and loop belong to the maker; no call in the loop is virtual.
template <class Out, class Lp, class Kern, class Alloc>
class LoopIterator : public AnyLoopIterator {
 public:
  LoopIterator(Kern* kern, Lp* positions) : kernel(kern), loop(positions) {}

  template <class SectorT>
  void run(SectorT& sector, Out& result) {
    if (kernel->computeByLines(sector, result)) return;
    auto& position = loop->getIterator();
    const auto& y = result.getBlock();
    auto* const from = kernel->getScratch().getBlock().getData().ptr;
    position.begin(kernel->getAlgorithm().getInput().getBlock(), y, sector);
    loop->run([&] {
      kernel->computeAt(sector, position.getTIdxA());
      y.put(linearIndex(y, position.getTIdxB()), elementAt(from, 0));
    });
  }

  Kern& getKernel() const { return *kernel; }
  Lp& getLoop() const { return *loop; }

 private:
  Kern* kernel;
  Lp* loop;
};

}  // namespace BP
