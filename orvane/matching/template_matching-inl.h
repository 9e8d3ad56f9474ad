#pragma once

#include <algorithm>

#include "orvane/algorithm/conv_corr_algorithm.h"
#include "orvane/exec/terminal_kernel.h"
#include "orvane/matching/max_ad_algorithm.h"
#include "orvane/matching/sad_algorithm.h"
#include "orvane/matching/ssd_algorithm.h"
#include "orvane/matching/template_matching.h"

namespace BP {

template <class HT, class UT, class YT, class AllocT>
TemplateMatching<HT, UT, YT, AllocT>::TemplateMatching(
    AllocT* alloc, int rank, CleverPtr<int>& hDims, bool isHgtU, CleverPtr<int>& uDims, OutputModeEnum outMode,
    AlgorithmModeEnum algorithmMode, TMModeEnum mode, bool withRoi, bool withRoiValid, SearchMethodEnum search,
    CleverPtr<int>& hCentre, CleverPtr<HT>& h, CleverPtr<UT>& u, CleverPtr<int>& roiLoc, CleverPtr<int>& roiDims,
    CleverPtr<YT>& result, CleverPtr<int>& location, CleverPtr<int>& neighborhoodDims, CleverPtr<YT>& yNeighborhoodData,
    CleverPtr<bool>& neighborhoodValid, CleverPtr<bool>& roiValid)
    : allocator(alloc),
      outputMode(outMode),
      tmMode(mode),
      passMode(mode),
      roiEnabled(withRoi),
      roiValidEnabled(withRoiValid),
      searchMethod(search),
      nDims(rank),
      tables(alloc, rank),
      host{hDims,
           uDims,
           hCentre,
           h,
           u,
           roiLoc,
           roiDims,
           result,
           location,
           neighborhoodDims,
           yNeighborhoodData,
           neighborhoodValid,
           roiValid} {
  allocator->allocateArray(y1Data, 1, "accumulator");
  allocator->allocateArray(locationShape, std::max(nDims, 2), "ignore");
  input = std::make_unique<InputT>(allocator, nDims, host.uDims, tables.uOrigin, tables.uLoc, host.u);
  rosRegion = std::make_unique<RestrictedRegion>(nDims, tables.rosDims, tables.rosLoc);
  roiRegion = std::make_unique<RestrictedRegion>(nDims, host.roiDims, host.roiLoc);
  neighborhoodAllRegion = std::make_unique<UnrestrictedRegion>();
  allRegion = std::make_unique<UnrestrictedRegion>();
  const Region& second = roiEnabled ? static_cast<const Region&>(*roiRegion) : *allRegion;
  scope = std::make_unique<Scope>(*rosRegion, second, reachOf(outputMode));
  y = std::make_unique<Out>(allocator, nDims, tables.yDims, tables.yOrigin, tables.yLoc, host.y);
  y1 = std::make_unique<Out>(allocator, nDims, tables.y1Dims, tables.y1Origin, tables.y1Loc, y1Data);
  if (hasNeighborhood()) makeNeighborhood();
  filter = std::make_unique<FilterBlock>(allocator, nDims, host.hDims, tables.hOrigin, tables.hLoc, tables.hStart,
                                         tables.hEnd, host.h);
  build(algorithmMode);
  plan = std::make_unique<MovingROIPlan<UT, YT, AllocT>>(allocator, nDims, filter.get(), isHgtU, input.get(), y.get(),
                                                         scope.get());
}

template <class HT, class UT, class YT, class AllocT>
void TemplateMatching<HT, UT, YT, AllocT>::makeNeighborhood() {
  allocator->allocateArray(neighborhoodStart, nDims, "ignore");
  neighborhoodRegion = std::make_unique<RestrictedRegion>(nDims, host.neighborhoodDims, neighborhoodStart);
  constexpr int wherever = 2;
  neighborhoodScope = std::make_unique<Scope>(*neighborhoodAllRegion, *neighborhoodRegion, wherever);
  for (CleverPtr<int>* table : {&yNeighborhoodOrigin, &yNeighborhoodLoc, &yNeighborhoodDims}) {
    allocator->allocateArray(*table, nDims, "ignore");
    std::fill_n(table->ptr, nDims, 0);  // set-up reads them before the first pass places the block
  }
  yNeighborhood = std::make_unique<Out>(allocator, nDims, yNeighborhoodDims, yNeighborhoodOrigin, yNeighborhoodLoc,
                                        host.yNeighborhoodData);
}

/// Chooses the metric: none for an algorithm mode out of range.
template <class HT, class UT, class YT, class AllocT>
void TemplateMatching<HT, UT, YT, AllocT>::build(AlgorithmModeEnum algorithmMode) {
  switch (algorithmMode) {
    case AlgorithmModeConvolution:
    case AlgorithmModeCorrelation: return buildFor<ConvCorrAlgorithm<AllocT, FilterBlock, InputT, YT, HT, UT, 1, 0>>();
    case AlgorithmModeSAD: return buildFor<SADAlgorithm<AllocT, FilterBlock, InputT, YT, UT>>();
    case AlgorithmModeSSD: return buildFor<SSDAlgorithm<AllocT, FilterBlock, InputT, YT, UT>>();
    case AlgorithmModeMaxAD: return buildFor<MaxADAlgorithm<AllocT, FilterBlock, InputT, YT, UT>>();
    default: return;
  }
}

template <class HT, class UT, class YT, class AllocT>
template <class AlgoT>
void TemplateMatching<HT, UT, YT, AllocT>::buildFor() {
  auto metric = std::make_unique<AlgoT>(allocator, filter.get(), input.get());
  kernel = std::make_unique<TerminalKernel<Out, AlgoT, AllocT>>(allocator, y1.get(), metric.get());
  algorithm = std::move(metric);
}

template <class HT, class UT, class YT, class AllocT>
TemplateMatching<HT, UT, YT, AllocT>::~TemplateMatching() {
  plan.reset();
  kernel.reset();
  algorithm.reset();
}

template <class HT, class UT, class YT, class AllocT>
void TemplateMatching<HT, UT, YT, AllocT>::setup(setupModeT mode) {
  if (mode == setupResize || mode == setupStart) initializeParameters();
  if (kernel) kernel->setup(mode);
  plan->setup(mode);
  if (passMode == TMModeBestMatchNeighborhood && mode != setupInvoke) yNeighborhood->setup(mode);
}

template <class HT, class UT, class YT, class AllocT>
void TemplateMatching<HT, UT, YT, AllocT>::initializeParameters() {
  tables.place(nDims, host.hCentre);
  for (int d = 0; d < nDims && hasNeighborhood(); ++d) {
    neighborhoodStart.ptr[d] = 0;
    yNeighborhoodLoc.ptr[d] = 0;
  }
  locationShape.ptr[0] = 1;
  locationShape.ptr[1] = nDims;
  computeHStart();
  computeHEnd();
  computeROS();
}

template <class HT, class UT, class YT, class AllocT>
void TemplateMatching<HT, UT, YT, AllocT>::computeHStart() {
  tables.computeHStart(nDims);
}

template <class HT, class UT, class YT, class AllocT>
void TemplateMatching<HT, UT, YT, AllocT>::computeHEnd() {
  tables.computeHEnd(nDims, host.hDims);
}

template <class HT, class UT, class YT, class AllocT>
void TemplateMatching<HT, UT, YT, AllocT>::computeROS() {
  tables.computeROS(outputMode, nDims, host.hDims, host.uDims);
}

template <class HT, class UT, class YT, class AllocT>
bool TemplateMatching<HT, UT, YT, AllocT>::roiIsEmpty() const {
  const int* dims = host.roiDims.ptr;
  return roiEnabled && std::any_of(dims, dims + nDims, [](int extent) { return extent <= 0; });
}

template <class HT, class UT, class YT, class AllocT>
void TemplateMatching<HT, UT, YT, AllocT>::clearNeighborhood() {
  *host.neighborhoodValid.ptr = false;
  const int count = host.neighborhoodDims.ptr[0] * host.neighborhoodDims.ptr[1];
  for (int i = 0; i < count; ++i) putZero(elementAt(host.yNeighborhoodData.ptr, i));
}

template <class HT, class UT, class YT, class AllocT>
void TemplateMatching<HT, UT, YT, AllocT>::runPass(Out& output, const Scope& passScope) {
  plan->setOutput(&output);
  plan->setScope(&passScope);
  setup(setupInvoke);
  plan->forEachSector(this);
}

/// The order of these statements is kept with care: `passMode` stays as the last pass left it until the ROI has been
/// looked at. So after a call with a neighbourhood the location is no longer zeroed on entry, and an empty ROI then
/// leaves location and neighbourhood as the call before wrote them.
template <class HT, class UT, class YT, class AllocT>
void TemplateMatching<HT, UT, YT, AllocT>::invoke() {
  plan->setOutput(y.get());
  plan->setScope(scope.get());
  if (roiValidEnabled) *host.roiValid.ptr = scope->getSecond().isWithinRegion(scope->getFirst());
  if (passMode != TMModeMetric) std::fill_n(host.location.ptr, nDims, 0);
  if (roiIsEmpty()) {
    if (roiValidEnabled) *host.roiValid.ptr = false;
    if (passMode == TMModeBestMatchNeighborhood) clearNeighborhood();
    return;
  }
  passMode = tmMode;
  runPass(*y, *scope);
  if (passMode == TMModeMetric) return;
  for (int d = 0; d < nDims; ++d) host.location.ptr[d] += tables.yOrigin.ptr[d];
  if (passMode == TMModeBestMatchNeighborhood) scoreNeighborhood();
}

/// The second pass: a block around the best position, with as many elements before it as after it, one fewer if even.
template <class HT, class UT, class YT, class AllocT>
void TemplateMatching<HT, UT, YT, AllocT>::scoreNeighborhood() {
  for (int d = 0; d < nDims; ++d) {
    const int n = host.neighborhoodDims.ptr[d];
    neighborhoodStart.ptr[d] = host.location.ptr[d] - ((n >> 1) - ((n & 1) == 0 ? 1 : 0));
  }
  *host.neighborhoodValid.ptr =
      neighborhoodRegion->isWithinRegion(scope->getFirst()) && neighborhoodRegion->isWithinRegion(scope->getSecond());
  passMode = TMModeMetric;
  runPass(*yNeighborhood, *neighborhoodScope);
}

template <class HT, class UT, class YT, class AllocT>
void TemplateMatching<HT, UT, YT, AllocT>::runSector(InsideSector& sector) {
  if (!kernel) return;
  if (passMode == TMModeMetric) return kernel->runInside(sector, plan->getOutput());
  if (searchMethod == SearchMethodExhaustive) return kernel->searchInside(sector, plan->getOutput(), host.location);
  kernel->stepSearchInside(sector, plan->getOutput(), host.location);
}

template <class HT, class UT, class YT, class AllocT>
void TemplateMatching<HT, UT, YT, AllocT>::runSector(BoundarySector& sector) {
  if (!kernel) return;
  if (passMode == TMModeMetric) return kernel->runBoundary(sector, plan->getOutput());
  if (searchMethod == SearchMethodExhaustive) return kernel->searchBoundary(sector, plan->getOutput(), host.location);
  kernel->stepSearchBoundary(sector, plan->getOutput(), host.location);
}

template <class HT, class UT, class YT, class AllocT>
void TemplateMatching<HT, UT, YT, AllocT>::runSector(OutsideSector& sector) {
  if (!kernel) return;
  if (passMode == TMModeMetric) return kernel->runOutside(sector, plan->getOutput());
  if (searchMethod == SearchMethodExhaustive) return kernel->searchOutside(sector, plan->getOutput(), host.location);
  kernel->stepSearchOutside(sector, plan->getOutput(), host.location);
}

template <class HT, class UT, class YT, class AllocT>
void TemplateMatching<HT, UT, YT, AllocT>::assignPadValue(const void* value, bool isComplex) {
  assignFrom(elementAt(input->padValues().ptr, 0), value, isComplex);
}

template <class HT, class UT, class YT, class AllocT>
AnyPlan& TemplateMatching<HT, UT, YT, AllocT>::getPlan() const {
  return *plan;
}

}  // namespace BP
