#pragma once

#include <algorithm>

#include "orvane/core/clever_ptr.h"
#include "orvane/core/element.h"
#include "orvane/core/enums.h"
#include "orvane/input/pad_redirector.h"
#include "orvane/plan/block.h"
#include "orvane/plan/sector.h"
#include "orvane/platform/export.h"

/// Pads: what a read beyond the input's edge yields.
///
/// `readBoundary` and `readOutside` take the input's block, the sector being run, and the `rank` coordinates of a tap.
/// They ignore dimensions from `rank` on in the sector's edge lists. They return the element's address, or for fixed
/// point the array with its cursor set. No read makes a virtual call.
namespace BP {

/// Base of the pads over elements UT.
template <class UT, class AllocT>
class ORVANE_API Pad {
 public:
  Pad(AllocT* alloc, bool distanceBased) : allocator(alloc), isDistanceBased(distanceBased) {}
  Pad(const Pad&) = delete;
  Pad& operator=(const Pad&) = delete;
  virtual ~Pad() = default;

  bool getIsDistanceBased() const { return isDistanceBased; }

 protected:
  AllocT* allocator;

 private:
  bool isDistanceBased;
};

/// The element of `block` at the first `rank` coordinates of `index`.
template <class UT, class AllocT>
inline UT* elementOf(const TraversableDataBlock<UT, AllocT>& block, int rank, const int* index) {
  return &block.at(linearIndex(block.getStrides().ptr, rank, index));
}

/// One stored value beyond every edge.
template <class UT, class YT, class AllocT>
class ORVANE_API ConstantPad : public Pad<UT, AllocT> {
 public:
  explicit ConstantPad(AllocT* alloc) : Pad<UT, AllocT>(alloc, false) { alloc->allocateArray(padValue, 1, "input"); }

  /// The pad value if `index` lies beyond a listed edge, otherwise the element at `index`. It does not change `index`.
  /// There is no outside read, because outputs whose windows miss the input take the input's pad output.
  UT* readBoundary(const TraversableDataBlock<UT, AllocT>& block, const OuterSector& sector, int rank, int* index) {
    bool isBeyond = false;
    forEachEdge(sector, rank, [&](int d, bool below) {
      isBeyond = isBeyond || (below ? index[d] < 0 : index[d] > block.getEnd().ptr[d]);
    });
    return isBeyond ? &elementAt(padValue.ptr, 0) : elementOf(block, rank, index);
  }

  CleverPtr<UT>& getPadValue() { return padValue; }

 private:
  CleverPtr<UT> padValue;
};

/// An element of the input beyond every edge, chosen by a redirector. Reads redirect `index` in place. A coordinate
/// that the caller does not write again enters its next read as the last read left it.
template <class UT, class YT, class AllocT, int padType>
class ORVANE_API DataBasedPad : public Pad<UT, AllocT> {
 public:
  using Redirector = typename RedirectorOf<padType>::type;

  explicit DataBasedPad(AllocT* alloc) : Pad<UT, AllocT>(alloc, Redirector().getIsDistanceBased()) {}

  /// Redirects the coordinates that lie beyond a listed edge, and reads there.
  UT* readBoundary(const TraversableDataBlock<UT, AllocT>& block, const OuterSector& sector, int rank, int* index) {
    redirectBoundary<Redirector>(block, sector, rank, index);
    return elementOf(block, rank, index);
  }

  /// Redirects every listed coordinate without a test, and reads there.
  ///
  /// Under every rule but replicate, a coordinate that was redirected before and not written since can be moved out of
  /// the array. `index` keeps the formula's result, and later reads start from it. The element returned is then the
  /// nearest one of the array, so memory beyond it is never read.
  UT* readOutside(const TraversableDataBlock<UT, AllocT>& block, const OuterSector& sector, int rank, int* index) {
    redirectOutside<Redirector>(block, sector, rank, index);
    int linear = 0;
    for (int d = 0; d < rank; ++d) {
      const int nearest = std::clamp(index[d], block.getStart().ptr[d], block.getEnd().ptr[d]);
      linear += block.getStrides().ptr[d] * nearest;
    }
    return &block.at(linear);
  }

  const Redirector& getRedirector() const { return redirector; }

 private:
  Redirector redirector;
};

}  // namespace BP
