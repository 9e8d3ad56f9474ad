#include "orvane/plan/plan_geometry.h"

#include <algorithm>
#include <cstdint>
#include <limits>

namespace BP {

namespace {

/// base^exponent by repeated squaring, at most the greatest `int`.
int power(double base, int exponent) {
  double result = 1;
  for (; exponent > 0; exponent >>= 1, base *= base) {
    if ((exponent & 1) != 0) result *= base;
  }
  return static_cast<int>(std::min<double>(result, std::numeric_limits<int>::max()));
}

/// a + b * c, at most the greatest `int`.
int saturatedSum(int a, int b, int c) {
  const auto sum = static_cast<std::int64_t>(a) + static_cast<std::int64_t>(b) * c;
  return static_cast<int>(std::min<std::int64_t>(sum, std::numeric_limits<int>::max()));
}

}  // namespace

SectorCapacities capacitiesOf(int numDims, const SectorKinds& kinds) {
  SectorCapacities capacities{0, 0};
  if (kinds.boundary || kinds.all) {
    capacities.boundary = power(3, numDims);
    if (kinds.padUsesData && (kinds.outside || kinds.all))
      capacities.boundary = saturatedSum(capacities.boundary, numDims, power(2, numDims));
    if (kinds.inside || kinds.all) --capacities.boundary;
  }
  if (kinds.outside || kinds.all) capacities.outside = power(5, numDims) - capacities.boundary - 1;
  return capacities;
}

SectorCapacities candidatesOf(int numDims, const SectorKinds& kinds) {
  const int edges = power(3, numDims), mixed = power(2, numDims);
  SectorCapacities candidates{0, 0};
  if (kinds.boundary || kinds.all) candidates.boundary = edges;
  if (kinds.outside || kinds.all) {
    candidates.outside = edges;
    int& withMixed = kinds.padUsesData ? candidates.boundary : candidates.outside;
    withMixed = saturatedSum(withMixed, numDims, mixed);
  }
  return candidates;
}

void fitToBlock(TraversableBlock& y, const Block& block) {
  for (int d = 0; d < y.getNumDims(); ++d) {
    const int yLoc = y.getLoc().ptr[d];
    y.getOrigin().ptr[d] = block.getLoc().ptr[d] - yLoc;
    y.getEnd().ptr[d] = block.getDims().ptr[d] + yLoc - 1;
    y.getDims().ptr[d] = y.getEnd().ptr[d] - yLoc + 1;
  }
}

void fitToBlocks(TraversableBlock& y, const Block& first, const Block& second) {
  bool meet = true;
  for (int d = 0; d < y.getNumDims(); ++d) {
    const int firstLoc = first.getLoc().ptr[d], secondLoc = second.getLoc().ptr[d], yLoc = y.getLoc().ptr[d];
    const int low = std::max(firstLoc, secondLoc);
    const int high = std::min(firstLoc + first.getDims().ptr[d], secondLoc + second.getDims().ptr[d]);
    y.getOrigin().ptr[d] = low - yLoc;
    y.getEnd().ptr[d] = high - y.getOrigin().ptr[d] - 1;
    y.getDims().ptr[d] = y.getEnd().ptr[d] - yLoc + 1;
    meet = meet && y.getDims().ptr[d] >= 1;
  }
  if (meet) return;
  for (int d = 0; d < y.getNumDims(); ++d) y.getOrigin().ptr[d] = second.getLoc().ptr[d];
}

SectorSink::~SectorSink() = default;

PlanGeometry::PlanGeometry(int rank, TraversableBlock* filterBlock, bool exceeds, bool usesData, bool forAll)
    : margins{{widths[0], locs[0]},
              {widths[1], locs[1]},
              {widths[2], locs[2]},
              {widths[3], locs[3]},
              {widths[4], locs[4]}},
      numDims(rank),
      filterExceedsInput(exceeds),
      filter(filterBlock),
      padUsesData(usesData),
      allocateAll(forAll) {}

void PlanGeometry::linkTables() {
  for (int k = 1; k < sectionCount; ++k) {
    widths[k].ptr = widths[0].ptr + k * numDims;
    locs[k].ptr = locs[0].ptr + k * numDims;
  }
}

void PlanGeometry::compareExtents(const Block& u) {
  filterExceedsInput = false;
  for (int d = 0; d < numDims; ++d) {
    filterExceedsInput = filterExceedsInput || filter->getDims().ptr[d] > u.getDims().ptr[d];
    isHgtUpd.ptr[d] = false;
  }
}

void PlanGeometry::chooseKinds(int reach) {
  hasInside = !filterExceedsInput;
  hasBoundary = reach != 0;
  hasOutside = reach != 0 && reach != 1;
}

void PlanGeometry::computeCapacities() {
  const auto [boundary, outside] = capacitiesOf(numDims, getKinds());
  boundaryCapacity = boundary;
  outsideCapacity = outside;
}

/// Whether the pad would read an input that has no elements.
bool PlanGeometry::readsEmptyInput(const Block& u) const {
  const int* uDims = u.getDims().ptr;
  return padUsesData && std::any_of(uDims, uDims + numDims, [](int extent) { return extent < 1; });
}

void PlanGeometry::computeMargins(const TraversableBlock& u, const TraversableBlock& y, const PositionBox& band) {
  const bool nothingToRead = readsEmptyInput(u);
  for (int d = 0; d < numDims; ++d) {
    int first = y.getOrigin().ptr[d], end = y.getEnd().ptr[d], extent = y.getDims().ptr[d];
    if (band.exists()) {
      const int low = std::max(first, band.loc[d]), high = std::min(first + extent, band.loc[d] + band.dims[d]);
      end -= low - first + std::max(first + extent - high, 0);
      extent = high - low;
      first = low;
    }
    const DimensionSections sections =
        sectionsOf({u.getOrigin().ptr[d], u.getEnd().ptr[d], first, end, nothingToRead ? 0 : extent,
                    filter->getLoc().ptr[d], filter->getEnd().ptr[d]});
    if (sections.overlap) isHgtUpd.ptr[d] = true;
    for (int k = 0; k < sectionCount; ++k) {
      locs[k].ptr[d] = sections.loc[k];
      widths[k].ptr[d] = sections.width[k];
    }
  }
}

void PlanGeometry::resetCounts() {
  insideCount = 0;
  boundaryCount = 0;
  outsideCount = 0;
}

void PlanGeometry::generate(SectorSink& sink) {
  if (hasInside) tryInside(SectorGenerator::inside(numDims), sink);
  if (hasBoundary) {
    walk(SectorGenerator::boundary(numDims, filterExceedsInput), &PlanGeometry::tryBoundary, sink);
    if (padUsesData && hasOutside) walkMixed(&PlanGeometry::tryBoundary, sink);
  }
  if (hasOutside) {
    walk(SectorGenerator::outside(numDims), &PlanGeometry::tryOutside, sink);
    if (!padUsesData) walkMixed(&PlanGeometry::tryOutside, sink);
  }
}

void PlanGeometry::tryInside(const SectorGenerator& generator, SectorSink& sink) {
  InsideSector& sector = sink.insideSector();
  if (!fillSector(sector, generator, margins)) return;
  ++insideCount;
  sink.run(sector);
}

void PlanGeometry::tryBoundary(const SectorGenerator& generator, SectorSink& sink) {
  BoundarySector& sector = sink.boundarySector(boundaryCount);
  if (!fillSector(sector, generator, margins, isHgtUpd.ptr)) return;
  ++boundaryCount;
  sink.run(sector);
}

void PlanGeometry::tryOutside(const SectorGenerator& generator, SectorSink& sink) {
  OutsideSector& sector = sink.outsideSector(outsideCount);
  if (!fillSector(sector, generator, margins, isHgtUpd.ptr)) return;
  ++outsideCount;
  sink.run(sector);
}

void PlanGeometry::walk(SectorGenerator generator, Try tryCandidate, SectorSink& sink) {
  do {
    (this->*tryCandidate)(generator, sink);
  } while (generator.next());
}

void PlanGeometry::walkMixed(Try tryCandidate, SectorSink& sink) {
  SectorGenerator generator = SectorGenerator::mixed(numDims);
  for (int k = 0; k < numDims; ++k) {
    generator.startPass(k);
    do {
      (this->*tryCandidate)(generator, sink);
    } while (generator.next());
  }
}

}  // namespace BP
