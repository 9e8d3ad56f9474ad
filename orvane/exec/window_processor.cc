#include "orvane/exec/window_processor.h"

#include <algorithm>

#include "orvane/exec/window_processor-inl.h"

namespace BP {

template <class RootT, class UT, class YT, class AllocT>
WindowProcessor<RootT, UT, YT, AllocT>::WindowProcessor(AllocT* alloc, int rank, CleverPtr<int>& windowDims,
                                                        CleverPtr<int>& inputDims, OutputModeEnum outMode,
                                                        CleverPtr<int>& windowCentre, CleverPtr<UT>& u,
                                                        CleverPtr<YT>& result, const Region* regionOfInterest)
    : allocator(alloc),
      nDims(rank),
      hDims(windowDims),
      tables(alloc, rank),
      outputMode(outMode),
      hCentre(windowCentre),
      uDims(inputDims),
      uData(u),
      yData(result) {
  allocator->allocateArray(y1Data, 1, "accumulator", "y1Data");
  rosRegion = std::make_unique<RestrictedRegion>(nDims, tables.rosDims, tables.rosLoc);
  allRegion = std::make_unique<UnrestrictedRegion>();
  restrictTo(regionOfInterest != nullptr ? *regionOfInterest : *allRegion);
  y = std::make_unique<Out>(allocator, nDims, tables.yDims, tables.yOrigin, tables.yLoc, yData);
  y1 = std::make_unique<Out>(allocator, nDims, tables.y1Dims, tables.y1Origin, tables.y1Loc, y1Data);
}

template <class RootT, class UT, class YT, class AllocT>
void WindowProcessor<RootT, UT, YT, AllocT>::restrictTo(const Region& region) {
  scope = std::make_unique<Scope>(*rosRegion, region, reachOf(outputMode));
}

template <class RootT, class UT, class YT, class AllocT>
void WindowProcessor<RootT, UT, YT, AllocT>::makePlan(bool isHgtU) {
  plan = std::make_unique<MovingROIPlan<UT, YT, AllocT>>(allocator, nDims, windowBlock.get(), isHgtU, input.get(),
                                                         y.get(), scope.get());
}

template <class RootT, class UT, class YT, class AllocT>
WindowProcessor<RootT, UT, YT, AllocT>::~WindowProcessor() {
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

template <class RootT, class UT, class YT, class AllocT>
void WindowProcessor<RootT, UT, YT, AllocT>::setup(setupModeT mode) {
  if (mode == setupResize || mode == setupStart) initializeParameters();
  if (kernel) kernel->setup(mode);
  plan->setup(mode);
}

template <class RootT, class UT, class YT, class AllocT>
void WindowProcessor<RootT, UT, YT, AllocT>::initializeParameters() {
  tables.place(nDims, hCentre);
  computeHStart();
  computeHEnd();
  computeROS();
}

template <class RootT, class UT, class YT, class AllocT>
void WindowProcessor<RootT, UT, YT, AllocT>::invoke() {
  runPass(this, *y, *scope);
}

template <class RootT, class UT, class YT, class AllocT>
void WindowProcessor<RootT, UT, YT, AllocT>::assignPadValue(const void* value, bool isComplex) {
  if (input) assignFrom(elementAt(input->padValues().ptr, 0), value, isComplex);
}

template <class RootT, class UT, class YT, class AllocT>
AnyPlan& WindowProcessor<RootT, UT, YT, AllocT>::getPlan() const {
  return *plan;
}

template <class RootT, class UT, class YT, class AllocT>
void WindowProcessor<RootT, UT, YT, AllocT>::setStrides(const int* inputStrides, const int* outputStrides) {
  if (input) input->getBlock().setStrides(inputStrides);
  y->getBlock().setStrides(outputStrides);
}

template <class RootT, class UT, class YT, class AllocT>
void WindowProcessor<RootT, UT, YT, AllocT>::setStored(Stored inputType, Stored outputType) {
  if (input) input->getBlock().setStored(inputType);
  y->getBlock().setStored(outputType);
}

template <class RootT, class UT, class YT, class AllocT>
void WindowProcessor<RootT, UT, YT, AllocT>::beginRun() {
  if (kernel) kernel->setup(setupInvoke);
}

template <class RootT, class UT, class YT, class AllocT>
void WindowProcessor<RootT, UT, YT, AllocT>::getPhaseBox(int /*phase*/, int* loc, int* dims) {
  plan->setOutput(y.get());
  plan->setScope(scope.get());
  plan->setBand({});
  plan->setup(setupInvoke);
  std::copy_n(tables.yOrigin.ptr, nDims, loc);
  std::copy_n(tables.yDims.ptr, nDims, dims);
}

template <class RootT, class UT, class YT, class AllocT>
void WindowProcessor<RootT, UT, YT, AllocT>::runBand(int /*phase*/, const PositionBox& band) {
  runSectors(this, *y, *scope, band);
}

template <class RootT, class UT, class YT, class AllocT>
void WindowProcessor<RootT, UT, YT, AllocT>::setRegion(const PositionBox& region) {
  boxLoc.ptr = const_cast<int*>(region.loc);  // regions only read their tables
  boxDims.ptr = const_cast<int*>(region.dims);
  if (!boxRegion) boxRegion = std::make_unique<RestrictedRegion>(nDims, boxDims, boxLoc);
  restrictTo(region.exists() ? static_cast<const Region&>(*boxRegion) : *allRegion);
  plan->setScope(scope.get());
}

#define ORVANE_DEFINE(UT, YT) template class WindowProcessor<AnyCorrelation, UT, YT, AllocatorTolk>;
ORVANE_FOR_ELEMENT_PAIRS(ORVANE_DEFINE)
#undef ORVANE_DEFINE
#define ORVANE_DEFINE(UT, YT) template class WindowProcessor<AnyTemplateMatching, UT, YT, AllocatorTolk>;
ORVANE_FOR_MATCHING_PAIRS(ORVANE_DEFINE)
#undef ORVANE_DEFINE

}  // namespace BP
