#pragma once

#include <algorithm>

#include "orvane/correlation/sector_list.h"
#include "orvane/plan/plan.h"

namespace BP {

/// The plan of processors whose region of support does not change between starts. Set-up generates all sectors into
/// lists, and a run walks the lists in the order of generation.
///
/// `setupLinkTables` comes before the first `setupStart` or `setupResize`, which fill the lists. After these,
/// `getInsideCount`, `getBoundaryCount` and `getOutsideCount` say how many sectors of each kind there are. The lists
/// can have room for more, because other extents, with a filter that exceeds the input or no longer does, have other
/// sectors. The boundary and the outside list exist if the first scope reaches them, or with `allocateAll`. A later
/// scope must not reach further.
///
/// Between two fillings the lists are only read. Memory: 4 N ints and a sector object for each place in a list; an
/// N-dimensional plan has up to 3^N boundary places and 5^N outside places. Throws `std::bad_alloc` if memory cannot
/// hold them.
template <class U, class Y, class Alloc>
class StationaryROIPlan : public Plan<U, Y, Alloc> {
 public:
  StationaryROIPlan(Alloc* alloc, int rank, TraversableBlock* filterBlock, bool exceeds, Input<U, Y, Alloc>* in,
                    Output<Y, Alloc>* out, const Scope* firstScope, bool forAll)
      : Plan<U, Y, Alloc>(alloc, rank, filterBlock, exceeds, in, out, firstScope, forAll),
        insideSector(rank, insideStart, insideEnd),
        boundarySectors(alloc, rank, std::max(this->getBoundaryCapacity(), candidates().boundary),
                        {"bSStart", "bSEnd", "bSPreEdg", "bSPstEdg"}),
        outsideSectors(alloc, rank, std::max(this->getOutsideCapacity(), candidates().outside),
                       {"oSStart", "oSecEnd", "oSPreEdg", "oSPstEdg"}) {
    alloc->registerWorkVector(insideStart, rank, "inSStart", "ignore", 1);
    alloc->registerWorkVector(insideEnd, rank, "inSEnd", "ignore", 1);
  }

  void setup(setupModeT stage) override;

  InsideSector& getInsideSector() override { return insideSector; }
  BoundarySector& getBoundarySector(int index) override { return boundarySectors[index]; }
  OutsideSector& getOutsideSector(int index) override { return outsideSectors[index]; }

  /// Numbers of places in the lists.
  int getBoundaryRoom() const { return boundarySectors.size(); }
  int getOutsideRoom() const { return outsideSectors.size(); }

 private:
  SectorCapacities candidates() const { return candidatesOf(this->getNumDims(), this->getKinds()); }

  CleverPtr<int> insideStart, insideEnd;
  InsideSector insideSector;
  SectorList<BoundarySector> boundarySectors;
  SectorList<OutsideSector> outsideSectors;
};

template <class U, class Y, class Alloc>
void StationaryROIPlan<U, Y, Alloc>::setup(setupModeT stage) {
  Plan<U, Y, Alloc>::setup(stage);
  switch (stage) {
    case setupAttachWork:
      this->getAllocator()->attachWorkVector(insideStart);
      this->getAllocator()->attachWorkVector(insideEnd);
      boundarySectors.attach(this->getAllocator());
      outsideSectors.attach(this->getAllocator());
      break;
    case setupLinkTables:
      boundarySectors.link();
      outsideSectors.link();
      break;
    case setupResize:
    case setupStart: this->forEachSector(nullptr); break;
    case setupInvoke:
      if (this->getAllocateAll()) this->forEachSector(nullptr);
      break;
    default: break;
  }
}

}  // namespace BP
