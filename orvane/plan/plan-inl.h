#pragma once

#include <algorithm>
#include <utility>

// Bodies of plan.h, which includes this file.

namespace BP {

template <class U, class Y, class Alloc>
Plan<U, Y, Alloc>::Plan(Alloc* alloc, int rank, TraversableBlock* filterBlock, bool exceeds, Input<U, Y, Alloc>* in,
                        Output<Y, Alloc>* out, const Scope* firstScope, bool forAll)
    : margins{{widths[0], locs[0]},
              {widths[1], locs[1]},
              {widths[2], locs[2]},
              {widths[3], locs[3]},
              {widths[4], locs[4]}},
      allocator(alloc),
      numDims(rank),
      filter(filterBlock),
      input(in),
      output(out),
      scope(firstScope),
      padUsesData(input != nullptr && input->isDistanceBased()),
      filterExceedsInput(exceeds),
      allocateAll(forAll) {
  allocator->registerWorkVector(widths[0], sectionCount * numDims, "mWidth", "ignore", 1);
  allocator->registerWorkVector(locs[0], sectionCount * numDims, "mLoc", "ignore", 1);
  allocator->registerWorkVector(sCnt, numDims, "sCnt", "ignore", 1);
  allocator->registerWorkVector(isHgtUpd, numDims, "isHgtUpd", "ignore", 1);
  chooseKinds();
  computeCapacities();
}

template <class U, class Y, class Alloc>
void Plan<U, Y, Alloc>::setup(setupModeT stage) {
  switch (stage) {
    case setupAttachWork:
      allocator->attachWorkVector(sCnt);
      allocator->attachWorkVector(isHgtUpd);
      output->setup(stage);
      allocator->attachWorkVector(widths[0]);
      allocator->attachWorkVector(locs[0]);
      break;
    case setupLinkTables:
      for (int k = 1; k < sectionCount; ++k) {
        widths[k].ptr = widths[0].ptr + k * numDims;
        locs[k].ptr = locs[0].ptr + k * numDims;
      }
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
  const int* hDims = filter->getDims().ptr;
  const int* uDims = input->getBlock().getDims().ptr;
  filterExceedsInput = false;
  for (int d = 0; d < numDims; ++d) {
    filterExceedsInput = filterExceedsInput || hDims[d] > uDims[d];
    isHgtUpd.ptr[d] = false;
  }
  scope->getFirst().restrict(*this, scope->getSecond());
  output->setup(stage);
  computeMargins();
  chooseKinds();
}

template <class U, class Y, class Alloc>
void Plan<U, Y, Alloc>::chooseKinds() {
  hasInside = !filterExceedsInput;
  hasBoundary = scope->getReach() != 0;
  hasOutside = scope->getReach() != 0 && scope->getReach() != 1;
}

template <class U, class Y, class Alloc>
void Plan<U, Y, Alloc>::computeCapacities() {
  const auto [boundary, outside] = capacitiesOf(numDims, getKinds());
  boundaryCapacity = boundary;
  outsideCapacity = outside;
}

template <class U, class Y, class Alloc>
void Plan<U, Y, Alloc>::restrictNone(AnyPlan& /*plan*/, const Region& /*second*/) {}

template <class U, class Y, class Alloc>
void Plan<U, Y, Alloc>::restrictByBlock(const Block& block, const void* /*unused*/) {
  TraversableBlock& y = output->getBlock();
  for (int d = 0; d < numDims; ++d) {
    const int yLoc = y.getLoc().ptr[d];
    y.getOrigin().ptr[d] = block.getLoc().ptr[d] - yLoc;
    y.getEnd().ptr[d] = block.getDims().ptr[d] + yLoc - 1;
    y.getDims().ptr[d] = y.getEnd().ptr[d] - yLoc + 1;
  }
}

template <class U, class Y, class Alloc>
void Plan<U, Y, Alloc>::restrictByBlocks(const Block& first, const Block& second) {
  TraversableBlock& y = output->getBlock();
  bool meet = true;
  for (int d = 0; d < numDims; ++d) {
    const int firstLoc = first.getLoc().ptr[d], secondLoc = second.getLoc().ptr[d], yLoc = y.getLoc().ptr[d];
    const int low = std::max(firstLoc, secondLoc);
    const int high = std::min(firstLoc + first.getDims().ptr[d], secondLoc + second.getDims().ptr[d]);
    y.getOrigin().ptr[d] = low - yLoc;
    y.getEnd().ptr[d] = high - y.getOrigin().ptr[d] - 1;
    y.getDims().ptr[d] = y.getEnd().ptr[d] - yLoc + 1;
    meet = meet && y.getDims().ptr[d] >= 1;
  }
  if (meet) return;
  for (int d = 0; d < numDims; ++d) y.getOrigin().ptr[d] = second.getLoc().ptr[d];
}

/// Whether a window would have to take its values from an input that has none.
template <class U, class Y, class Alloc>
bool Plan<U, Y, Alloc>::readsEmptyInput() const {
  const int* uDims = input->getBlock().getDims().ptr;
  return padUsesData && std::any_of(uDims, uDims + numDims, [](int extent) { return extent < 1; });
}

template <class U, class Y, class Alloc>
void Plan<U, Y, Alloc>::computeMargins() {
  const TraversableBlock& u = input->getBlock();
  const TraversableBlock& y = output->getBlock();
  const bool nothingToRead = readsEmptyInput();
  for (int d = 0; d < numDims; ++d) {
    const DimensionSections sections =
        sectionsOf({u.getOrigin().ptr[d], u.getEnd().ptr[d], y.getOrigin().ptr[d], y.getEnd().ptr[d],
                    nothingToRead ? 0 : y.getDims().ptr[d], filter->getLoc().ptr[d], filter->getEnd().ptr[d]});
    if (sections.overlap) isHgtUpd.ptr[d] = true;
    for (int k = 0; k < sectionCount; ++k) {
      locs[k].ptr[d] = sections.loc[k];
      widths[k].ptr[d] = sections.width[k];
    }
  }
}

template <class U, class Y, class Alloc>
template <class ProcessorT>
void Plan<U, Y, Alloc>::forEachSector(ProcessorT* processor) {
  insideCount = 0;
  boundaryCount = 0;
  outsideCount = 0;
  if (input == nullptr) return;
  const auto tryB = [&](const SectorGenerator& generator) { tryBoundary(generator, processor); };
  const auto tryO = [&](const SectorGenerator& generator) { tryOutside(generator, processor); };
  if (hasInside) tryInside(SectorGenerator::inside(numDims), processor);
  if (hasBoundary) {
    walk(SectorGenerator::boundary(numDims, filterExceedsInput), tryB);
    if (padUsesData && hasOutside) walkMixed(tryB);
  }
  if (hasOutside) {
    walk(SectorGenerator::outside(numDims), tryO);
    if (!padUsesData) walkMixed(tryO);
  }
}

template <class U, class Y, class Alloc>
template <class ProcessorT>
void Plan<U, Y, Alloc>::tryInside(const SectorGenerator& generator, ProcessorT* processor) {
  InsideSector& sector = getInsideSector();
  if (!fillSector(sector, generator, margins)) return;
  ++insideCount;
  if (processor != nullptr) processor->runSector(sector);
}

template <class U, class Y, class Alloc>
template <class ProcessorT>
void Plan<U, Y, Alloc>::tryBoundary(const SectorGenerator& generator, ProcessorT* processor) {
  BoundarySector& sector = getBoundarySector(boundaryCount);
  if (!fillSector(sector, generator, margins, isHgtUpd.ptr)) return;
  ++boundaryCount;
  if (processor != nullptr) processor->runSector(sector);
}

template <class U, class Y, class Alloc>
template <class ProcessorT>
void Plan<U, Y, Alloc>::tryOutside(const SectorGenerator& generator, ProcessorT* processor) {
  OutsideSector& sector = getOutsideSector(outsideCount);
  if (!fillSector(sector, generator, margins, isHgtUpd.ptr)) return;
  ++outsideCount;
  if (processor != nullptr) processor->runSector(sector);
}

template <class U, class Y, class Alloc>
template <class TryT>
void Plan<U, Y, Alloc>::walk(SectorGenerator generator, TryT&& tryCandidate) {
  do {
    tryCandidate(generator);
  } while (generator.next());
}

template <class U, class Y, class Alloc>
template <class TryT>
void Plan<U, Y, Alloc>::walkMixed(TryT&& tryCandidate) {
  SectorGenerator generator = SectorGenerator::mixed(numDims);
  for (int k = 0; k < numDims; ++k) {
    generator.startPass(k);
    do {
      tryCandidate(generator);
    } while (generator.next());
  }
}

}  // namespace BP
