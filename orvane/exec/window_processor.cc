#include "orvane/exec/window_processor.h"

namespace BP {

template <class UT, class YT, class AllocT>
WindowProcessor<UT, YT, AllocT>::WindowProcessor(AllocT* alloc, int rank, CleverPtr<int>& windowDims,
                                                 CleverPtr<int>& inputDims, OutputModeEnum outMode,
                                                 CleverPtr<int>& windowCentre, CleverPtr<UT>& u, CleverPtr<YT>& result,
                                                 const Region* regionOfInterest)
    : allocator(alloc),
      nDims(rank),
      hDims(windowDims),
      outputMode(outMode),
      tables(alloc, rank),
      hCentre(windowCentre),
      uDims(inputDims),
      uData(u),
      yData(result) {
  allocator->allocateArray(y1Data, 1, "accumulator", "y1Data");
  rosRegion = std::make_unique<RestrictedRegion>(nDims, tables.rosDims, tables.rosLoc);
  allRegion = std::make_unique<UnrestrictedRegion>();
  const Region& second = regionOfInterest != nullptr ? *regionOfInterest : *allRegion;
  scope = std::make_unique<Scope>(*rosRegion, second, reachOf(outputMode));
  y = std::make_unique<Out>(allocator, nDims, tables.yDims, tables.yOrigin, tables.yLoc, yData);
  y1 = std::make_unique<Out>(allocator, nDims, tables.y1Dims, tables.y1Origin, tables.y1Loc, y1Data);
}

template <class UT, class YT, class AllocT>
void WindowProcessor<UT, YT, AllocT>::makePlan(bool isHgtU) {
  plan = std::make_unique<MovingROIPlan<UT, YT, AllocT>>(allocator, nDims, windowBlock.get(), isHgtU, input.get(),
                                                         y.get(), scope.get());
}

template <class UT, class YT, class AllocT>
WindowProcessor<UT, YT, AllocT>::~WindowProcessor() {
  plan.reset();
  kernel.reset();
  algorithm.reset();
  windowBlock.reset();
  y1.reset();
  y.reset();
  scope.reset();
  allRegion.reset();
  rosRegion.reset();
  input.reset();
}

template <class UT, class YT, class AllocT>
void WindowProcessor<UT, YT, AllocT>::setup(setupModeT mode) {
  if (mode == setupResize || mode == setupStart) initializeParameters();
  if (kernel) kernel->setup(mode);
  plan->setup(mode);
}

template <class UT, class YT, class AllocT>
void WindowProcessor<UT, YT, AllocT>::initializeParameters() {
  tables.place(nDims, hCentre);
  tables.computeHStart(nDims);
  tables.computeHEnd(nDims, hDims);
  computeROS();
}

template <class UT, class YT, class AllocT>
void WindowProcessor<UT, YT, AllocT>::computeROS() {
  tables.computeROS(outputMode, nDims, hDims, uDims);
}

template <class UT, class YT, class AllocT>
void WindowProcessor<UT, YT, AllocT>::invoke() {
  plan->setOutput(y.get());
  plan->setScope(scope.get());
  setup(setupInvoke);
  if (nDims < 2) return;  // kernels read the first two entries of every table
  plan->forEachSector(this);
}

template <class UT, class YT, class AllocT>
void WindowProcessor<UT, YT, AllocT>::runSector(InsideSector& sector) {
  kernel->runInside(sector, plan->getOutput());
}

template <class UT, class YT, class AllocT>
void WindowProcessor<UT, YT, AllocT>::runSector(BoundarySector& sector) {
  kernel->runBoundary(sector, plan->getOutput());
}

template <class UT, class YT, class AllocT>
void WindowProcessor<UT, YT, AllocT>::runSector(OutsideSector& sector) {
  kernel->runOutside(sector, plan->getOutput());
}

template <class UT, class YT, class AllocT>
void WindowProcessor<UT, YT, AllocT>::assignPadValue(const void* value, bool isComplex) {
  if (input) assignFrom(elementAt(input->padValues().ptr, 0), value, isComplex);
}

template <class UT, class YT, class AllocT>
AnyPlan& WindowProcessor<UT, YT, AllocT>::getPlan() const {
  return *plan;
}

#define ORVANE_DEFINE(UT, YT) template class WindowProcessor<UT, YT, AllocatorTolk>;
ORVANE_FOR_ELEMENT_PAIRS(ORVANE_DEFINE)
#undef ORVANE_DEFINE

}  // namespace BP
