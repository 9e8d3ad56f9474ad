#pragma once

#include <array>

#include "orvane/core/allocator_tolk.h"
#include "orvane/plan/plan.h"

namespace BP {

/// The plan of processors with a host. It keeps nothing between runs except the tables in the host's work vectors.
///
/// The region of support may move from run to run, so every run computes the margins again. There is one sector object
/// of each kind. It is filled for each candidate in turn, and is run before the next candidate overwrites it.
template <class U, class Y, class Alloc>
class MovingROIPlan : public Plan<U, Y, Alloc> {
 public:
  MovingROIPlan(Alloc* alloc, int rank, TraversableBlock* filterBlock, bool exceeds, Input<U, Y, Alloc>* in,
                Output<Y, Alloc>* out, const Scope* firstScope)
      : Plan<U, Y, Alloc>(alloc, rank, filterBlock, exceeds, in, out, firstScope, true),
        insideSector(rank, insideStart, insideEnd),
        boundarySector(rank, boundaryStart, boundaryEnd, boundaryPreEdge, boundaryPostEdge),
        outsideSector(rank, outsideStart, outsideEnd, outsidePreEdge, outsidePostEdge) {
    this->computeCapacities();
    for (const NamedTable& table : tables()) alloc->registerWorkVector(table.handle, rank, table.name, "ignore", 1);
  }

  void setup(setupModeT stage) override {
    Plan<U, Y, Alloc>::setup(stage);
    if (stage != setupAttachWork) return;
    for (const NamedTable& table : tables()) this->getAllocator()->attachWorkVector(table.handle);
  }

  InsideSector& getInsideSector() override { return insideSector; }
  BoundarySector& getBoundarySector(int /*index*/) override { return boundarySector; }
  OutsideSector& getOutsideSector(int /*index*/) override { return outsideSector; }

 private:
  struct NamedTable {
    CleverPtr<int>& handle;
    const char* name;
  };

  /// The sectors' tables in the order of their registration, with the names of their work vectors.
  std::array<NamedTable, 10> tables() {
    return {{{insideStart, "inSStart"},
             {insideEnd, "inSEnd"},
             {boundaryStart, "bSStart"},
             {boundaryEnd, "bSEnd"},
             {boundaryPreEdge, "bSPreEdg"},
             {boundaryPostEdge, "bSPstEdg"},
             {outsideStart, "oSStart"},
             {outsideEnd, "oSecEnd"},
             {outsidePreEdge, "oSPreEdg"},
             {outsidePostEdge, "oSPstEdg"}}};
  }

  CleverPtr<int> insideStart, insideEnd;
  CleverPtr<int> boundaryStart, boundaryEnd, boundaryPreEdge, boundaryPostEdge;
  CleverPtr<int> outsideStart, outsideEnd, outsidePreEdge, outsidePostEdge;
  InsideSector insideSector;
  BoundarySector boundarySector;
  OutsideSector outsideSector;
};

}  // namespace BP
