#pragma once

#include "orvane/core/clever_ptr.h"
#include "orvane/core/enums.h"
#include "orvane/input/input.h"
#include "orvane/input/output.h"
#include "orvane/plan/any_plan.h"
#include "orvane/plan/block.h"
#include "orvane/plan/margins.h"
#include "orvane/plan/scope.h"
#include "orvane/plan/sector.h"
#include "orvane/plan/sector_generator.h"

namespace BP {

/// The most sectors that an N-dimensional plan of a given kind can have.
struct SectorCapacities {
  int boundary;
  int outside;
};

/// What decides how many sectors there can be.
struct SectorKinds {
  bool inside;
  bool boundary;
  bool outside;
  bool padUsesData;  ///< reads beyond the edge yield elements of the input
  bool all;          ///< room for every kind, whatever the others say
};

/// 3^N boundary combinations, those of them mixed with outside sections, and the rest of 5^N.
SectorCapacities capacitiesOf(int numDims, const SectorKinds& kinds);

/// The most candidates that the generators of these kinds can turn out, whether or not the filter exceeds the input:
/// 3^N boundary combinations, 3^N outside ones, and N 2^N mixed ones with the one or the other. No plan has more
/// sectors; it can have more of a kind than its capacity says.
SectorCapacities candidatesOf(int numDims, const SectorKinds& kinds);

/// Cuts the output of a filter into sectors and hands these out in a fixed order: inside, boundary, outside.
///
/// Each dimension has five sections (see margins.h); a sector is one choice of section per dimension. Sectors in which
/// an outside section meets a boundary section are boundary sectors if the pad's values come from the input, since a
/// window there still reads it, and outside sectors if the pad is one value. The plan also fits the output's extent
/// and place to the scope's two regions. Geometry that leaves no position yields no sector; nothing is reported.
///
/// U and Y are the element types of input and output, which play no part here. All arguments belong to the maker.
template <class U, class Y, class Alloc>
class Plan : public AnyPlan {
 public:
  Plan(Alloc* allocator, int numDims, TraversableBlock* filter, bool filterExceedsInput, Input<U, Y, Alloc>* input,
       Output<Y, Alloc>* output, const Scope* scope, bool allocateAll);

  void setup(setupModeT stage) override;
  void restrictNone(AnyPlan& plan, const Region& second) override;
  void restrictByBlock(const Block& block, const void* unused) override;
  void restrictByBlocks(const Block& firstBlock, const Block& secondBlock) override;
  virtual InsideSector& getInsideSector() = 0;
  virtual BoundarySector& getBoundarySector(int index) = 0;
  virtual OutsideSector& getOutsideSector(int index) = 0;

  /// Fills every sector in turn and has `processor` run it, by `runSector(sector)` for the sector's class, before the
  /// next is filled. With null the sectors are filled and counted.
  template <class ProcessorT>
  void forEachSector(ProcessorT* processor);
  void forEachSector(std::nullptr_t) { forEachSector(static_cast<NoProcessor*>(nullptr)); }

  void setOutput(Output<Y, Alloc>* value) { output = value; }
  void setScope(const Scope* value) { scope = value; }
  Output<Y, Alloc>& getOutput() const { return *output; }
  const Scope& getScope() const { return *scope; }
  const Margins& getMargins(SectionCode code) const { return margins[code]; }
  bool getIsHgtUpd(int d) const { return isHgtUpd.ptr[d]; }
  bool getFilterExceedsInput() const { return filterExceedsInput; }
  bool getHasInside() const { return hasInside; }
  bool getHasBoundary() const { return hasBoundary; }
  bool getHasOutside() const { return hasOutside; }
  int getInsideCount() const { return insideCount; }
  int getBoundaryCount() const { return boundaryCount; }
  int getOutsideCount() const { return outsideCount; }
  int getBoundaryCapacity() const { return boundaryCapacity; }
  int getOutsideCapacity() const { return outsideCapacity; }

 protected:
  void computeCapacities();

  Alloc* getAllocator() const { return allocator; }
  int getNumDims() const { return numDims; }
  bool getAllocateAll() const { return allocateAll; }
  SectorKinds getKinds() const { return {hasInside, hasBoundary, hasOutside, padUsesData, allocateAll}; }

 private:
  struct NoProcessor {
    template <class SectorT>
    void runSector(SectorT&) {}
  };

  void replan(setupModeT stage);
  void chooseKinds();
  void computeMargins();
  bool readsEmptyInput() const;

  template <class ProcessorT>
  void tryInside(const SectorGenerator& generator, ProcessorT* processor);
  template <class ProcessorT>
  void tryBoundary(const SectorGenerator& generator, ProcessorT* processor);
  template <class ProcessorT>
  void tryOutside(const SectorGenerator& generator, ProcessorT* processor);
  template <class TryT>
  void walk(SectorGenerator generator, TryT&& tryCandidate);
  template <class TryT>
  void walkMixed(TryT&& tryCandidate);

  CleverPtr<int> widths[sectionCount];  // the first of each holds the storage of all
  CleverPtr<int> locs[sectionCount];
  Margins margins[sectionCount];
  Alloc* allocator;
  int numDims;
  TraversableBlock* filter;
  Input<U, Y, Alloc>* input;
  Output<Y, Alloc>* output;
  const Scope* scope;
  CleverPtr<int> sCnt;
  bool padUsesData;
  CleverPtr<bool> isHgtUpd;
  bool filterExceedsInput;
  int insideCount = 0;
  bool hasInside = false;
  int boundaryCount = 0;
  int boundaryCapacity = 0;
  bool hasBoundary = false;
  int outsideCount = 0;
  int outsideCapacity = 0;
  bool hasOutside = false;
  bool allocateAll;
};

}  // namespace BP

#include "orvane/plan/plan-inl.h"
