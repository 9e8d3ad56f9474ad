#pragma once

#include <cstddef>

#include "orvane/core/enums.h"
#include "orvane/plan/any_plan.h"
#include "orvane/plan/block.h"
#include "orvane/plan/input.h"
#include "orvane/plan/margins.h"
#include "orvane/plan/output.h"
#include "orvane/plan/plan_geometry.h"
#include "orvane/plan/scope.h"
#include "orvane/plan/sector.h"

namespace BP {

/// Cuts the output of a filter into sectors and gives them out in a fixed order: inside, boundary, outside.
///
/// Each dimension has five sections (see margins.h); a sector is one choice of section per dimension. A sector with
/// both outside and boundary sections is a boundary sector if the pad's values come from the input, because its windows
/// still read the input. With a constant pad it is an outside sector. The plan also fits the output's extent and place
/// to the scope's two regions. Geometry that leaves no position yields no sector and no message.
///
/// U and Y are the element types of input and output. `PlanGeometry` does the work and does not depend on them. The
/// maker owns all arguments. Without an input there is no sector.
template <class U, class Y, class Alloc>
class Plan : public AnyPlan {
 public:
  Plan(Alloc* alloc, int rank, TraversableBlock* filter, bool filterExceedsInput, Input<U, Y, Alloc>* in,
       Output<Y, Alloc>* out, const Scope* firstScope, bool allocateAll)
      : allocator(alloc),
        input(in),
        output(out),
        scope(firstScope),
        geometry(rank, filter, filterExceedsInput, in != nullptr && in->isDistanceBased(), allocateAll) {
    allocator->registerWorkVector(geometry.widths[0], sectionCount * rank, "mWidth", "ignore", 1);
    allocator->registerWorkVector(geometry.locs[0], sectionCount * rank, "mLoc", "ignore", 1);
    allocator->registerWorkVector(geometry.sCnt, rank, "sCnt", "ignore", 1);
    allocator->registerWorkVector(geometry.isHgtUpd, rank, "isHgtUpd", "ignore", 1);
    geometry.chooseKinds(scope->getReach());
    geometry.computeCapacities();
  }

  void setup(setupModeT stage) override;
  void restrictNone(AnyPlan& /*plan*/, const Region& /*second*/) override {}
  void restrictByBlock(const Block& block, const void* /*unused*/) override { fitToBlock(output->getBlock(), block); }
  void restrictByBlocks(const Block& firstBlock, const Block& secondBlock) override {
    fitToBlocks(output->getBlock(), firstBlock, secondBlock);
  }
  virtual InsideSector& getInsideSector() = 0;
  virtual BoundarySector& getBoundarySector(int index) = 0;
  virtual OutsideSector& getOutsideSector(int index) = 0;

  /// Fills one sector after the other. Before it fills the next it calls `processor->runSector(sector)`, with the
  /// sector's own class. With null the sectors are only filled and counted.
  template <class ProcessorT>
  void forEachSector(ProcessorT* processor);
  void forEachSector(std::nullptr_t) { forEachSector(static_cast<NoProcessor*>(nullptr)); }

  void setOutput(Output<Y, Alloc>* value) { output = value; }
  void setScope(const Scope* value) { scope = value; }
  /// Restricts the sectors of later runs to a box of positions, and none lifts that. The output's extents and its place
  /// stay those of the scope, so that several plans, each with a band of its own, can share one output array.
  void setBand(const PositionBox& value) { band = value; }
  Output<Y, Alloc>& getOutput() const { return *output; }
  const Scope& getScope() const { return *scope; }
  const Margins& getMargins(SectionCode code) const { return geometry.margins[code]; }
  bool getIsHgtUpd(int d) const { return geometry.isHgtUpd.ptr[d]; }
  bool getFilterExceedsInput() const { return geometry.filterExceedsInput; }
  bool getHasInside() const { return geometry.hasInside; }
  bool getHasBoundary() const { return geometry.hasBoundary; }
  bool getHasOutside() const { return geometry.hasOutside; }
  int getInsideCount() const { return geometry.insideCount; }
  int getBoundaryCount() const { return geometry.boundaryCount; }
  int getOutsideCount() const { return geometry.outsideCount; }
  int getBoundaryCapacity() const { return geometry.boundaryCapacity; }
  int getOutsideCapacity() const { return geometry.outsideCapacity; }

 protected:
  void computeCapacities() { geometry.computeCapacities(); }

  Alloc* getAllocator() const { return allocator; }
  int getNumDims() const { return geometry.numDims; }
  bool getAllocateAll() const { return getKinds().all; }
  SectorKinds getKinds() const { return geometry.getKinds(); }

 private:
  struct NoProcessor {
    template <class SectorT>
    void runSector(SectorT&) {}
  };

  /// Gives out the plan's own sector objects and has a processor run them.
  template <class ProcessorT>
  class ProcessorSink final : public SectorSink {
   public:
    ProcessorSink(Plan& owner, ProcessorT* runner) : plan(owner), processor(runner) {}
    InsideSector& insideSector() override { return plan.getInsideSector(); }
    BoundarySector& boundarySector(int index) override { return plan.getBoundarySector(index); }
    OutsideSector& outsideSector(int index) override { return plan.getOutsideSector(index); }
    void run(InsideSector& sector) override { runWith(sector); }
    void run(BoundarySector& sector) override { runWith(sector); }
    void run(OutsideSector& sector) override { runWith(sector); }

   private:
    template <class SectorT>
    void runWith(SectorT& sector) {
      if (processor != nullptr) processor->runSector(sector);
    }
    Plan& plan;
    ProcessorT* processor;
  };

  void replan(setupModeT stage);

  Alloc* allocator;
  Input<U, Y, Alloc>* input;
  Output<Y, Alloc>* output;
  const Scope* scope;
  PositionBox band;
  PlanGeometry geometry;
};

template <class U, class Y, class Alloc>
void Plan<U, Y, Alloc>::setup(setupModeT stage) {
  switch (stage) {
    case setupAttachWork:
      allocator->attachWorkVector(geometry.sCnt);
      allocator->attachWorkVector(geometry.isHgtUpd);
      output->setup(stage);
      allocator->attachWorkVector(geometry.widths[0]);
      allocator->attachWorkVector(geometry.locs[0]);
      break;
    case setupLinkTables:
      geometry.linkTables();
      output->setup(stage);
      break;
    case setupResize:
    case setupStart:
    case setupInvoke: replan(stage); break;
    default: break;
  }
}

template <class U, class Y, class Alloc>
void Plan<U, Y, Alloc>::replan(setupModeT stage) {
  if (input == nullptr) return;  // a processor that was made with a pad type out of range
  geometry.compareExtents(input->getBlock());
  scope->getFirst().restrict(*this, scope->getSecond());
  output->setup(stage);
  geometry.computeMargins(input->getBlock(), output->getBlock(), band);
  geometry.chooseKinds(scope->getReach());
}

template <class U, class Y, class Alloc>
template <class ProcessorT>
void Plan<U, Y, Alloc>::forEachSector(ProcessorT* processor) {
  geometry.resetCounts();
  if (input == nullptr) return;
  ProcessorSink<ProcessorT> sink(*this, processor);
  geometry.generate(sink);
}

}  // namespace BP
