#pragma once

#include "orvane/core/any_bp.h"
#include "orvane/core/clever_ptr.h"
#include "orvane/core/enums.h"
#include "orvane/plan/block.h"
#include "orvane/plan/margins.h"
#include "orvane/plan/sector.h"
#include "orvane/plan/sector_generator.h"
#include "orvane/platform/export.h"

namespace BP {

/// Numbers of sectors of an N-dimensional plan for which there is room.
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
  bool all;          ///< room for every kind, whatever the other flags are
};

/// 3^N combinations of boundary and centre sections, N 2^N mixed ones if these are boundary sectors, and for outside
/// sectors the rest of all 5^N. The all-centre combination is left out where it is the inside sector.
ORVANE_API SectorCapacities capacitiesOf(int numDims, const SectorKinds& kinds);

/// The most candidates that the generators of these kinds can produce, also if the filter exceeds the input: 3^N
/// boundary combinations, 3^N outside ones, and N 2^N mixed ones, which count as the one or the other. No plan has more
/// sectors of a kind than this; `capacitiesOf` can give less.
ORVANE_API SectorCapacities candidatesOf(int numDims, const SectorKinds& kinds);

/// Gives `y` the extent and the place of `block`.
ORVANE_API void fitToBlock(TraversableBlock& y, const Block& block);

/// Gives `y` the extent and the place of the intersection of two blocks. If they do not intersect, `y` gets an extent
/// below 1 and the place of the second.
ORVANE_API void fitToBlocks(TraversableBlock& y, const Block& first, const Block& second);

/// Provides a plan with sector objects, and runs the filled ones.
class ORVANE_API SectorSink {
 public:
  SectorSink() = default;
  SectorSink(const SectorSink&) = delete;
  SectorSink& operator=(const SectorSink&) = delete;
  virtual ~SectorSink();
  virtual InsideSector& insideSector() = 0;
  virtual BoundarySector& boundarySector(int index) = 0;
  virtual OutsideSector& outsideSector(int index) = 0;
  virtual void run(InsideSector& sector) = 0;
  virtual void run(BoundarySector& sector) = 0;
  virtual void run(OutsideSector& sector) = 0;
};

/// The part of a plan that does not depend on element types: the sections of each dimension, and the sectors made of
/// them.
///
/// `Plan` gives it the blocks of filter, input and output, and binds its tables.
class ORVANE_API PlanGeometry {
 public:
  PlanGeometry(int rank, TraversableBlock* filterBlock, bool exceeds, bool usesData, bool forAll);
  PlanGeometry(const PlanGeometry&) = delete;
  PlanGeometry& operator=(const PlanGeometry&) = delete;

  /// Points the tables of sections 1 to 4 at their slices of those of section 0.
  void linkTables();
  /// The first step of planning: compares the filter with the input, and clears the marks of dimensions in which
  /// windows cross both edges.
  void compareExtents(const Block& u);
  /// Cuts each dimension of output `y` into its sections; with `band`, that part of it which lies there.
  void computeMargins(const TraversableBlock& u, const TraversableBlock& y, const PositionBox& band);
  /// Decides which kinds of sector are wanted for the reach of a scope.
  void chooseKinds(int reach);
  void computeCapacities();
  /// Sets the counts of sectors to 0.
  void resetCounts();
  /// Fills one sector after the other, counts it, and has `sink` run it before it fills the next.
  void generate(SectorSink& sink);

  SectorKinds getKinds() const { return {hasInside, hasBoundary, hasOutside, padUsesData, allocateAll}; }

  CleverPtr<int> widths[sectionCount];  ///< the first holds the storage of all
  CleverPtr<int> locs[sectionCount];    ///< likewise
  Margins margins[sectionCount];
  CleverPtr<int> sCnt;  ///< nothing reads it; hosts know it by name
  CleverPtr<bool> isHgtUpd;
  int numDims;
  bool filterExceedsInput;
  int insideCount = 0;
  bool hasInside = false;
  int boundaryCount = 0;
  int boundaryCapacity = 0;
  bool hasBoundary = false;
  int outsideCount = 0;
  int outsideCapacity = 0;
  bool hasOutside = false;

 private:
  bool readsEmptyInput(const Block& u) const;
  void tryInside(const SectorGenerator& generator, SectorSink& sink);
  void tryBoundary(const SectorGenerator& generator, SectorSink& sink);
  void tryOutside(const SectorGenerator& generator, SectorSink& sink);
  using Try = void (PlanGeometry::*)(const SectorGenerator&, SectorSink&);
  void walk(SectorGenerator generator, Try tryCandidate, SectorSink& sink);
  void walkMixed(Try tryCandidate, SectorSink& sink);

  TraversableBlock* filter;
  bool padUsesData;
  bool allocateAll;
};

}  // namespace BP
