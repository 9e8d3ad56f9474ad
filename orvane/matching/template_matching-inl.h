#pragma once

#include <algorithm>
#include <type_traits>

#include "orvane/algorithm/conv_corr_algorithm.h"
#include "orvane/core/centre.h"
#include "orvane/exec/window_processor-inl.h"
#include "orvane/matching/max_ad_algorithm.h"
#include "orvane/matching/sad_algorithm.h"
#include "orvane/matching/ssd_algorithm.h"
#include "orvane/matching/template_matching.h"

namespace BP {

template <class HT, class UT, class YT, class AllocT>
TemplateMatching<HT, UT, YT, AllocT>::TemplateMatching(
    AllocT* alloc, int rank, CleverPtr<int>& templateDims, bool isHgtU, CleverPtr<int>& imageDims,
    OutputModeEnum outMode, AlgorithmModeEnum algorithmMode, TMModeEnum mode, bool withRoi, bool withRoiValid,
    SearchMethodEnum search, CleverPtr<int>& anchor, CleverPtr<HT>& h, CleverPtr<UT>& u, CleverPtr<int>& roiLoc,
    CleverPtr<int>& roiDims, CleverPtr<YT>& result, CleverPtr<int>& location, CleverPtr<int>& neighborhoodDims,
    CleverPtr<YT>& yNeighborhoodData, CleverPtr<bool>& neighborhoodValid, CleverPtr<bool>& roiValid)
    : Base(alloc, rank, templateDims, imageDims, outMode, anchor, u, result, nullptr),
      tmMode(mode),
      passMode(mode),
      roiEnabled(withRoi),
      roiValidEnabled(withRoiValid),
      searchMethod(search),
      host{roiLoc, roiDims, location, neighborhoodDims, yNeighborhoodData, neighborhoodValid, roiValid},
      roiRegion(std::make_unique<RestrictedRegion>(rank, roiDims, roiLoc)),
      filter(this->template makeWindow<FilterBlock>(h)) {
  alloc->allocateArray(locationShape, std::max(rank, 2), "ignore");
  if (roiEnabled) this->restrictTo(*roiRegion);
  if (hasNeighborhood()) makeNeighborhood();
  build(algorithmMode);
  this->makePlan(isHgtU);
}

template <class HT, class UT, class YT, class AllocT>
void TemplateMatching<HT, UT, YT, AllocT>::makeNeighborhood() {
  this->allocator->allocateArray(neighborhoodStart, this->nDims, "ignore");
  neighborhoodRegion = std::make_unique<RestrictedRegion>(this->nDims, host.neighborhoodDims, neighborhoodStart);
  neighborhoodAllRegion = std::make_unique<UnrestrictedRegion>();
  constexpr int wherever = 2;
  neighborhoodScope = std::make_unique<Scope>(*neighborhoodAllRegion, *neighborhoodRegion, wherever);
  for (CleverPtr<int>* table : {&yNeighborhoodOrigin, &yNeighborhoodLoc, &yNeighborhoodDims}) {
    this->allocator->allocateArray(*table, this->nDims, "ignore");
    std::fill_n(table->ptr, this->nDims, 0);  // set-up reads them before the first pass places the block
  }
  yNeighborhood = std::make_unique<Out>(this->allocator, this->nDims, yNeighborhoodDims, yNeighborhoodOrigin,
                                        yNeighborhoodLoc, host.yNeighborhoodData);
}

/// Chooses the metric: none for an algorithm mode out of range.
template <class HT, class UT, class YT, class AllocT>
void TemplateMatching<HT, UT, YT, AllocT>::build(AlgorithmModeEnum algorithmMode) {
  InputT* const image = this->template makeInput<InputT>();
  switch (algorithmMode) {
    case AlgorithmModeConvolution:
    case AlgorithmModeCorrelation:
      return this->template makeAlgorithm<ConvCorrAlgorithm<AllocT, FilterBlock, InputT, YT, HT, UT, 1, 0>>(filter,
                                                                                                            image);
    case AlgorithmModeSAD:
      return this->template makeAlgorithm<SADAlgorithm<AllocT, FilterBlock, InputT, YT, UT>>(filter, image);
    case AlgorithmModeSSD:
      return this->template makeAlgorithm<SSDAlgorithm<AllocT, FilterBlock, InputT, YT, UT>>(filter, image);
    case AlgorithmModeMaxAD:
      return this->template makeAlgorithm<MaxADAlgorithm<AllocT, FilterBlock, InputT, YT, UT>>(filter, image);
    default: return;
  }
}

template <class HT, class UT, class YT, class AllocT>
void TemplateMatching<HT, UT, YT, AllocT>::setup(setupModeT mode) {
  if (mode == setupResize || mode == setupStart) placeNeighborhood();
  Base::setup(mode);
  if (passMode == TMModeBestMatchNeighborhood && mode != setupInvoke) yNeighborhood->setup(mode);
}

/// Places the neighbourhood at 0 until the first pass has found a position. `locationShape` is for hosts.
template <class HT, class UT, class YT, class AllocT>
void TemplateMatching<HT, UT, YT, AllocT>::placeNeighborhood() {
  for (int d = 0; d < this->nDims && hasNeighborhood(); ++d) {
    neighborhoodStart.ptr[d] = 0;
    yNeighborhoodLoc.ptr[d] = 0;
  }
  locationShape.ptr[0] = 1;
  locationShape.ptr[1] = this->nDims;
}

template <class HT, class UT, class YT, class AllocT>
void TemplateMatching<HT, UT, YT, AllocT>::initializeParameters() {
  placeNeighborhood();
  Base::initializeParameters();
}

template <class HT, class UT, class YT, class AllocT>
bool TemplateMatching<HT, UT, YT, AllocT>::roiIsEmpty() const {
  const int* dims = host.roiDims.ptr;
  return roiEnabled && std::any_of(dims, dims + this->nDims, [](int extent) { return extent <= 0; });
}

template <class HT, class UT, class YT, class AllocT>
void TemplateMatching<HT, UT, YT, AllocT>::clearNeighborhood() {
  *host.neighborhoodValid.ptr = false;
  int count = 1;
  for (int d = 0; d < std::min(this->nDims, 2); ++d) count *= host.neighborhoodDims.ptr[d];
  for (int i = 0; i < count; ++i) putZero(elementAt(host.yNeighborhoodData.ptr, i));
}

/// The order of these statements matters. Until the ROI has been tested, `passMode` is what the last pass left. So
/// after a call with a neighbourhood the next call does not zero the location first, and with an empty ROI it leaves
/// location and neighbourhood as the call before wrote them.
template <class HT, class UT, class YT, class AllocT>
void TemplateMatching<HT, UT, YT, AllocT>::invoke() {
  testRegion();
  if (passMode != TMModeMetric) std::fill_n(host.location.ptr, this->nDims, 0);
  if (roiIsEmpty()) {
    if (roiValidEnabled) *host.roiValid.ptr = false;
    if (passMode == TMModeBestMatchNeighborhood) clearNeighborhood();
    return;
  }
  passMode = tmMode;
  this->runPass(this, *this->y, *this->scope);
  if (passMode != TMModeMetric) placeBest();
}

/// Makes the best index a position, and scores the block around it.
template <class HT, class UT, class YT, class AllocT>
void TemplateMatching<HT, UT, YT, AllocT>::placeBest() {
  for (int d = 0; d < this->nDims; ++d) host.location.ptr[d] += this->tables.yOrigin.ptr[d];
  if (passMode == TMModeBestMatchNeighborhood) scoreNeighborhood();
}

template <class HT, class UT, class YT, class AllocT>
void TemplateMatching<HT, UT, YT, AllocT>::testRegion() {
  if (roiValidEnabled) *host.roiValid.ptr = this->scope->getSecond().isWithinRegion(this->scope->getFirst());
}

template <class HT, class UT, class YT, class AllocT>
void TemplateMatching<HT, UT, YT, AllocT>::beginRun() {
  Base::beginRun();
  testRegion();
  passMode = tmMode;
  leavesInside = false;  // a run that ended early can have left it
}

template <class HT, class UT, class YT, class AllocT>
void TemplateMatching<HT, UT, YT, AllocT>::searchBand(const PositionBox& band, bool isFirst) {
  if (!this->kernel) return;
  if (auto& best = *this->kernel->getBest(); !isFirst && !best.getHasValue()) expectLaterValues(best);
  this->runSectors(this, *this->y, *this->scope, band);
}

template <class HT, class UT, class YT, class AllocT>
void TemplateMatching<HT, UT, YT, AllocT>::adoptBest(AnyTemplateMatching& other) {
  if (this->kernel) feedBest(*this->kernel->getBest(), *static_cast<TemplateMatching&>(other).kernel->getBest());
}

template <class HT, class UT, class YT, class AllocT>
void TemplateMatching<HT, UT, YT, AllocT>::finishSearch() {
  if (!this->kernel) return;
  std::fill_n(host.location.ptr, this->nDims, 0);
  if (auto& best = *this->kernel->getBest(); best.getHasValue()) {
    std::copy_n(best.getIndex().ptr, 2, host.location.ptr);
  }
  leavesInside = true;
  this->runSectors(this, *this->y, *this->scope, {});
  leavesInside = false;
  placeBest();
}

/// The second pass: a block whose centre is the best position.
template <class HT, class UT, class YT, class AllocT>
void TemplateMatching<HT, UT, YT, AllocT>::scoreNeighborhood() {
  for (int d = 0; d < this->nDims; ++d) {
    neighborhoodStart.ptr[d] = host.location.ptr[d] - centreOf(host.neighborhoodDims.ptr[d]);
  }
  *host.neighborhoodValid.ptr = neighborhoodRegion->isWithinRegion(this->scope->getFirst()) &&
                                neighborhoodRegion->isWithinRegion(this->scope->getSecond());
  passMode = TMModeMetric;
  this->runPass(this, *yNeighborhood, *neighborhoodScope);
}

template <class HT, class UT, class YT, class AllocT>
template <class SectorT>
void TemplateMatching<HT, UT, YT, AllocT>::runSector(SectorT& sector) {
  if (!this->kernel || (leavesInside && std::is_same_v<SectorT, InsideSector>)) return;
  Out& output = this->plan->getOutput();
  if (passMode == TMModeMetric) return this->kernel->run(sector, output);
  if (searchMethod == SearchMethodExhaustive) return this->kernel->search(sector, output, host.location);
  this->kernel->stepSearch(sector, output, host.location);
}

}  // namespace BP
