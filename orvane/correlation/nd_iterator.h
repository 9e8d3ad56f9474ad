#pragma once

#include <algorithm>

#include "orvane/core/clever_ptr.h"
#include "orvane/plan/block.h"
#include "orvane/plan/sector.h"

/// Walks over index vectors of any number of dimensions.
///
/// A walk has two frames: the one that it counts in, and the one in which the same position has another index vector.
/// Over output positions these are the absolute positions of a sector and the indices of the output; over a filter at
/// one position they are the filter's indices and the coordinates of the input elements under them. In each dimension
/// the two differ by an offset that stays for the whole walk.
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

/// Stepping by `UnitStepT`, which so far stands for its place in the type: `NDIterator` steps by 1.
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

/// The sense of a walk.
class Direction {
 public:
  virtual ~Direction() = default;
};

/// From first to last; `NDIterator` goes this way and no other.
class ForwardDirection : public Direction {};

/// Abstract root of the iterators.
class AnyIterator {
 public:
  AnyIterator() = default;
  AnyIterator(const AnyIterator&) = delete;
  AnyIterator& operator=(const AnyIterator&) = delete;
  virtual ~AnyIterator() = default;
};

/// The state of a walk: its range, the position in both frames, and whether it is over. Nothing else in it is virtual.
template <class Trav, class Dir, class Alloc>
class Iterator : public AnyIterator {
 public:
  Iterator(Alloc* alloc, Trav* trav, Dir* dir, int rank)
      : allocator(alloc), traversal(trav), direction(dir), numDims(rank) {
    const auto make = [&](CleverPtr<int>& table, const char* name) {
      allocator->allocateArray(table, numDims, "ignore", name);
      std::fill_n(table.ptr, numDims, 0);  // a pad response is asked for at the present position, even before any walk
    };
    make(tIdxA, "tIdxA");
    make(tIdxB, "tIdxB");
    make(tStart, "tStart");
    make(tEnd, "tEnd");
    make(tOffset, "tOffset");
  }

  /// Sets the range of the walks to come, both ends inclusive.
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

  /// Begins a walk over `filter`, in the range set before, with the filter moved to `position`.
  void beginWindow(const Block& filter, const Block& input, const CleverPtr<int>& position) {
    std::copy_n(position.ptr, numDims, filter.getOrigin().ptr);
    traversal->fixFrame(filter, input, tOffset);
    restart();
  }

  /// Lets go of the arrays, unreleased, as a host's work vectors would be.
  void attachWork() {
    for (CleverPtr<int>* table : {&tIdxA, &tIdxB, &tStart, &tEnd, &tOffset}) allocator->attachWorkVector(*table);
  }

  bool getDone() const { return done; }
  /// The position in the frame that the walk counts in.
  CleverPtr<int>& getTIdxA() { return tIdxA; }
  /// The same position in the other frame. What is changed here stays until the walk moves in that dimension.
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

/// An odometer: the dimension that `travOrder` names first turns fastest. `travOrder` belongs to the maker.
template <class Trav, class Dir, class Alloc>
class NDIterator : public Iterator<Trav, Dir, Alloc> {
 public:
  NDIterator(Alloc* alloc, Trav* trav, Dir* dir, int rank, CleverPtr<int>& order)
      : Iterator<Trav, Dir, Alloc>(alloc, trav, dir, rank), travOrder(&order) {}

  /// Goes to the next position; after the last the walk is done, and the position is the first again.
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
