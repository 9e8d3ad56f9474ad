#include "orvane/plan/sector_generator.h"

#include <algorithm>
#include <cstddef>

#include "orvane/plan/margins.h"

namespace BP {

namespace {

constexpr int byCode[] = {0, 1, 2, 3, 4};
constexpr int byParity[] = {0, 1, 3, 2, 4};  // even counters: centre and outside; odd ones: the boundaries

std::size_t index(int d) { return static_cast<std::size_t>(d); }

}  // namespace

SectorGenerator::SectorGenerator(const int* codes, int numDims, int first, int increment, int carryAt)
    : table(codes), counters(index(numDims), 0), resets(index(numDims), 0), step(increment), carry(carryAt) {
  if (numDims > 0) counters[0] = first;
}

SectorGenerator SectorGenerator::inside(int numDims) { return {byCode, numDims, 0, 1, 0}; }

SectorGenerator SectorGenerator::boundary(int numDims, bool withCentre) {
  return {byCode, numDims, withCentre ? 0 : 1, 1, 3};
}

SectorGenerator SectorGenerator::outside(int numDims) { return {byParity, numDims, 2, 2, 5}; }

SectorGenerator SectorGenerator::mixed(int numDims) { return {byParity, numDims, 0, 2, 5}; }

void SectorGenerator::startPass(int k) {
  std::fill(resets.begin(), resets.end(), 1);
  resets[index(k)] = 2;
  counters = resets;
}

int SectorGenerator::section(int d) const { return table[counters[index(d)]]; }

bool SectorGenerator::next() {
  for (std::size_t d = 0; d < counters.size(); ++d) {
    counters[d] += step;
    if (counters[d] < carry) return true;
    counters[d] = resets[d];
  }
  return false;
}

bool fillSector(Sector& sector, const SectorGenerator& generator, const Margins* margins) {
  for (int d = 0; d < sector.getNumDims(); ++d) {
    if (margins[generator.section(d)].getWidth().ptr[d] < 1) return false;
  }
  sector.setIsEmpty(false);
  for (int d = 0; d < sector.getNumDims(); ++d) {
    const Margins& section = margins[generator.section(d)];
    sector.getStart().ptr[d] = section.getLoc().ptr[d];
    sector.getEnd().ptr[d] = section.getLoc().ptr[d] + section.getWidth().ptr[d] - 1;
  }
  return true;
}

bool fillSector(OuterSector& sector, const SectorGenerator& generator, const Margins* margins, const bool* overlaps) {
  sector.reset(setupInvoke);
  if (!fillSector(static_cast<Sector&>(sector), generator, margins)) return false;
  int preEdges = 0, postEdges = 0;
  for (int d = 0; d < sector.getNumDims(); ++d) {
    const int code = generator.section(d);
    const bool crossesBoth = code == SectionCentre && overlaps[d];
    if (code == SectionLowBoundary || code == SectionLowOutside || crossesBoth) {
      sector.getPreEdge().ptr[preEdges++] = d;
    }
    if (code == SectionHighBoundary || code == SectionHighOutside || crossesBoth) {
      sector.getPostEdge().ptr[postEdges++] = d;
    }
  }
  sector.setPreEdgeCount(preEdges);
  sector.setPostEdgeCount(postEdges);
  return true;
}

}  // namespace BP
