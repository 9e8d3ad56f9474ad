#pragma once

#include <algorithm>
#include <cstdio>

#include "orvane/correlation/correlation.h"
#include "orvane/plan/band_in_use.h"

namespace BP {

template <class HT, class UT, class YT, class InputT, class AllocT>
Correlation<HT, UT, YT, InputT, AllocT>::Correlation(AllocT* alloc, int rank, CleverPtr<int>& filterDims,
                                                     bool filterExceedsInput, CleverPtr<int>& inputDims,
                                                     OutputModeEnum outMode, CleverPtr<int>& filterCentre,
                                                     CleverPtr<HT>& h, CleverPtr<UT>& u, CleverPtr<YT>& result)
    : allocator(alloc),
      outputMode(outMode),
      numDims(rank),
      tables(alloc, rank),
      hDims(filterDims),
      hCentre(filterCentre),
      uDims(inputDims),
      innerTraversal(alloc, &step),
      innerIterator(alloc, &innerTraversal, &innerDirection, rank, travOrder),
      rosRegion(rank, tables.rosDims, tables.rosLoc),
      scope(rosRegion, allRegion, reachOf(outMode)),
      wantedRegion(rank, wantedDims, wantedLoc),
      wantedScope(rosRegion, wantedRegion, reachOf(outMode)),
      y(alloc, rank, tables.yDims, tables.yOrigin, tables.yLoc, result),
      outerTraversal(alloc, &step),
      outerIterator(alloc, &outerTraversal, &outerDirection, rank, travOrder),
      loop(&outerIterator),
      filter(alloc, rank, filterDims, tables.hOrigin, tables.hLoc, tables.hStart, tables.hEnd, h),
      input(alloc, rank, inputDims, tables.uOrigin, tables.uLoc, u),
      algorithm(alloc, &filter, &input),
      y1(alloc, rank, tables.y1Dims, tables.y1Origin, tables.y1Loc, y1Data),
      kernel(alloc, &y1, &algorithm, &innerIterator),
      loopIterator(&kernel, &loop) {
  allocator->allocateArray(travOrder, numDims, "ignore", "travOrder");
  allocator->allocateArray(y1Data, 1, "accumulator", "y1Data");
  plan = std::make_unique<Plan>(allocator, numDims, &filter, filterExceedsInput, &input, &y, &scope, false);
}

template <class HT, class UT, class YT, class InputT, class AllocT>
Correlation<HT, UT, YT, InputT, AllocT>::~Correlation() = default;

/// The order matters: the plan fits the output to what the processor and the kernel have computed.
template <class HT, class UT, class YT, class InputT, class AllocT>
void Correlation<HT, UT, YT, InputT, AllocT>::setup(setupModeT mode) {
  if (mode == setupAttachWork) attachWork();
  if (mode == setupStart || mode == setupResize) initializeParameters();
  kernel.setup(mode);
  y.setup(mode);
  plan->setup(mode);
  if (mode == setupAttachWork) outerIterator.attachWork();
  loopIterator.getKernel().setup(mode);
}

template <class HT, class UT, class YT, class InputT, class AllocT>
void Correlation<HT, UT, YT, InputT, AllocT>::attachWork() {
  for (CleverPtr<int>* table : {&travOrder, &tables.rosLoc, &tables.rosDims, &tables.hOrigin, &tables.hLoc,
                                &tables.hStart, &tables.hEnd, &tables.uOrigin, &tables.uLoc, &tables.yOrigin,
                                &tables.yLoc, &tables.yDims, &tables.y1Origin, &tables.y1Loc, &tables.y1Dims}) {
    allocator->attachWorkVector(*table);
  }
  allocator->attachWorkVector(y1Data);
}

template <class HT, class UT, class YT, class InputT, class AllocT>
void Correlation<HT, UT, YT, InputT, AllocT>::initializeParameters() {
  for (int d = 0; d < numDims; ++d) travOrder.ptr[d] = d;
  tables.place(numDims, hCentre);
  computeROS();
}

template <class HT, class UT, class YT, class InputT, class AllocT>
void Correlation<HT, UT, YT, InputT, AllocT>::computeROS() {
  tables.computeROS(outputMode, numDims, hDims, uDims);
}

template <class HT, class UT, class YT, class InputT, class AllocT>
void Correlation<HT, UT, YT, InputT, AllocT>::invoke() {
  if (plan->getHasInside()) invokeInside();
  if (plan->getHasBoundary()) invokeBoundary();
  if (plan->getHasOutside()) invokeOutside();
}

template <class HT, class UT, class YT, class InputT, class AllocT>
void Correlation<HT, UT, YT, InputT, AllocT>::invokeInside() {
  if (plan->getInsideCount() > 0) loopIterator.run(plan->getInsideSector(), y);
}

template <class HT, class UT, class YT, class InputT, class AllocT>
void Correlation<HT, UT, YT, InputT, AllocT>::invokeBoundary() {
  for (int i = 0; i < plan->getBoundaryCount(); ++i) loopIterator.run(plan->getBoundarySector(i), y);
}

template <class HT, class UT, class YT, class InputT, class AllocT>
void Correlation<HT, UT, YT, InputT, AllocT>::invokeOutside() {
  if (plan->getOutsideCount() < 1) return;
  kernel.computePadOutput(plan->getOutsideSector(0), outerIterator.getTIdxA());
  for (int i = 0; i < plan->getOutsideCount(); ++i) loopIterator.run(plan->getOutsideSector(i), y);
}

template <class HT, class UT, class YT, class InputT, class AllocT>
void Correlation<HT, UT, YT, InputT, AllocT>::assignPadValue(const void* value, bool isComplex) {
  UT& padValue = elementAt(input.padValues().ptr, 0);
  assignFrom(padValue, value, isComplex);
  std::printf("ALLOCATOR Pad Value: %f \n", static_cast<double>(padValue));
}

template <class HT, class UT, class YT, class InputT, class AllocT>
void Correlation<HT, UT, YT, InputT, AllocT>::setStrides(const int* inputStrides, const int* outputStrides) {
  input.getBlock().setStrides(inputStrides);
  y.getBlock().setStrides(outputStrides);
}

template <class HT, class UT, class YT, class InputT, class AllocT>
void Correlation<HT, UT, YT, InputT, AllocT>::setStored(Stored inputType, Stored outputType) {
  input.getBlock().setStored(inputType);
  y.getBlock().setStored(outputType);
}

template <class HT, class UT, class YT, class InputT, class AllocT>
void Correlation<HT, UT, YT, InputT, AllocT>::setRegion(const PositionBox& region) {
  wantedLoc.ptr = const_cast<int*>(region.loc);  // regions only read their tables
  wantedDims.ptr = const_cast<int*>(region.dims);
  plan->setScope(region.exists() ? &wantedScope : &scope);
}

template <class HT, class UT, class YT, class InputT, class AllocT>
void Correlation<HT, UT, YT, InputT, AllocT>::beginRun() {
  kernel.setup(setupInvoke);
}

template <class HT, class UT, class YT, class InputT, class AllocT>
void Correlation<HT, UT, YT, InputT, AllocT>::getPhaseBox(int /*phase*/, int* loc, int* dims) {
  plan->setBand({});
  plan->setup(setupInvoke);
  std::copy_n(tables.yOrigin.ptr, numDims, loc);
  std::copy_n(tables.yDims.ptr, numDims, dims);
}

/// The stage makes the plan's lists of sectors anew, for the band alone.
template <class HT, class UT, class YT, class InputT, class AllocT>
void Correlation<HT, UT, YT, InputT, AllocT>::runBand(int /*phase*/, const PositionBox& band) {
  const BandInUse inUse(*plan, band);
  plan->setup(setupStart);
  invoke();
}

template <class HT, class UT, class YT, class InputT, class AllocT>
typename Correlation<HT, UT, YT, InputT, AllocT>::Plan& Correlation<HT, UT, YT, InputT, AllocT>::getPlan() const {
  return *plan;
}

}  // namespace BP
