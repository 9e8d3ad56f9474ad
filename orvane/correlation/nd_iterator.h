#pragma once

#include <algorithm>

#include "orvane/core/clever_ptr.h"
#include "orvane/plan/block.h"
#include "orvane/plan/sector.h"

/// Walks over index vectors of any number of dimensions.
///
/// A walk has two frames. It counts in the first, and the same position has another index vector in the second. For a
/// walk over outputs the first frame has the absolute positions of a sector, the second the indices of the output. For
/// a walk over a filter at one position the first frame has the filter's indices, the second the coordinates of the
/// input elements under them. The frames differ by an offset in each dimension, which is constant during a walk.
namespace BP {

/// Abstract root of the ways to step.
class AnyTraversal {
 public:
  virtual ~AnyTraversal() = default;
};

/// Base of the ways to step.
template <class Alloc>
class Traversal : public AnyTraversal {};

/// A step of 1 in every dimension.
class UnitStep {};

/// Steps of `UnitStepT`. `NDIterator` always steps by 1, so that type is only a name so far.
template <class UnitStepT, class Alloc>
class StepTraversal : public Traversal<Alloc> {
 public:
  StepTraversal(Alloc* alloc, UnitStepT* unitStep) : allocator(alloc), step(unitStep) {}

  /// Relates the frames of two blocks: offset := second.loc - first.loc - first.origin + second.origin.
  void fixFrame(const Block& first, const Block& second, CleverPtr<int>& offset) const {
    for (int d = 0; d < first.getNumDims(); ++d) {
      offset.ptr[d] =
          second.getLoc().ptr[d] - first.getLoc().ptr[d] - first.getOrigin().ptr[d] + second.getOrigin().ptr[d];
    }
  }

 private:
  Alloc* allocator;
  UnitStepT* step;
};

/// The direction of a walk.
class Direction {
 public:
  virtual ~Direction() = default;
};

/// From first to last, the only direction of `NDIterator`.
class ForwardDirection : public Direction {};

/// Abstract root of the iterators.
class AnyIterator {
 public:
  AnyIterator() = default;
  AnyIterator(const AnyIterator&) = delete;
  AnyIterator& operator=(const AnyIterator&) = delete;
  virtual ~AnyIterator() = default;
};

/// The state of a walk: its range, the position in both frames, and whether it is over. Only its destructor is virtual.
template <class Trav, class Dir, class Alloc>
class Iterator : public AnyIterator {
 public:
  Iterator(Alloc* alloc, Trav* trav, Dir* dir, int rank)
      : allocator(alloc), traversal(trav), direction(dir), numDims(rank) {
    const auto make = [&](CleverPtr<int>& table, const char* name) {
      allocator->allocateArray(table, numDims, "ignore", name);
      std::fill_n(table.ptr, numDims, 0);  // a pad response can be requested before any walk
    };
    make(tIdxA, "tIdxA");
    make(tIdxB, "tIdxB");
    make(tStart, "tStart");
    make(tEnd, "tEnd");
    make(tOffset, "tOffset");
  }

  /// Sets the range of the next walks, both ends inclusive.
  void setRange(const CleverPtr<int>& first, const CleverPtr<int>& last) {
    rangeIsEmpty = false;
    for (int d = 0; d < numDims; ++d) {
      tStart.ptr[d] = first.ptr[d];
      tEnd.ptr[d] = last.ptr[d];
      rangeIsEmpty = rangeIsEmpty || tStart.ptr[d] > tEnd.ptr[d];
    }
  }

  /// Begins a walk over the output positions of `sector`, for the blocks of input and output.
  void begin(const Block& input, const Block& output, const Sector& sector) {
    setRange(sector.getStart(), sector.getEnd());
    traversal->fixFrame(input, output, tOffset);
    restart();
  }

  /// Moves `filter` to `position` and begins a walk over the range set before.
  void beginWindow(const Block& filter, const Block& input, const CleverPtr<int>& position) {
    std::copy_n(position.ptr, numDims, filter.getOrigin().ptr);
    traversal->fixFrame(filter, input, tOffset);
    restart();
  }

  /// Rebinds the tables to the allocator's work vectors, without releasing the old arrays.
  void attachWork() {
    for (CleverPtr<int>* table : {&tIdxA, &tIdxB, &tStart, &tEnd, &tOffset}) allocator->attachWorkVector(*table);
  }

  bool getDone() const { return done; }
  /// The position in the frame that the walk counts in.
  CleverPtr<int>& getTIdxA() { return tIdxA; }
  /// The same position in the other frame. A change of an entry lasts until the walk moves in that dimension.
  CleverPtr<int>& getTIdxB() { return tIdxB; }

 protected:
  void moveTo(int d, int index) {
    tIdxA.ptr[d] = index;
    tIdxB.ptr[d] = index - tOffset.ptr[d];
  }

  Alloc* allocator;
  Trav* traversal;
  Dir* direction;
  int numDims;
  bool done = false;
  CleverPtr<int> tStart;
  CleverPtr<int> tEnd;
  CleverPtr<int> tIdxA;
  CleverPtr<int> tIdxB;
  CleverPtr<int> tOffset;

 private:
  void restart() {
    for (int d = 0; d < numDims; ++d) moveTo(d, tStart.ptr[d]);
    done = rangeIsEmpty;
  }

  bool rangeIsEmpty = false;
};

/// An odometer: the first dimension in `travOrder` changes fastest. The maker owns `travOrder`.
template <class Trav, class Dir, class Alloc>
class NDIterator : public Iterator<Trav, Dir, Alloc> {
 public:
  NDIterator(Alloc* alloc, Trav* trav, Dir* dir, int rank, CleverPtr<int>& order)
      : Iterator<Trav, Dir, Alloc>(alloc, trav, dir, rank), travOrder(&order) {}

  /// Goes to the next position. After the last one the walk is done, and the position is the first one again.
  void next() {
    for (int i = 0; i < this->numDims; ++i) {
      const int d = travOrder->ptr[i];
      const int index = this->tIdxA.ptr[d] + 1;
      if (index <= this->tEnd.ptr[d]) return this->moveTo(d, index);
      this->moveTo(d, this->tStart.ptr[d]);
    }
    this->done = true;
  }

 private:
  CleverPtr<int>* travOrder;
};

}  // namespace BP
