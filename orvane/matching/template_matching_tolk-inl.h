#pragma once

#include <algorithm>
#include <memory>

#include "orvane/core/host_data.h"
#include "orvane/matching/template_matching_tolk.h"

namespace BP {

template <class HT, class UT, class YT>
template <class RegisterT>
TemplateMatchingTolk<HT, UT, YT>::TemplateMatchingTolk(brekk::BrekkAdaptorTolk* adaptor, int hCount, int* hHost,
                                                       int uCount, int* uHost, PadTypeEnum pad, OutputModeEnum outMode,
                                                       AlgorithmModeEnum algorithm, TMModeEnum mode, bool varSize,
                                                       bool withRoi, bool withRoiValid, SearchMethodEnum search,
                                                       RegisterT&& registerTypes)
    : Base(adaptor, outMode, varSize, setupStart) {
  registerTypes(*this->allocator);
  auto& window = this->addWindow(hCount, hHost);
  this->openTables(uCount, uHost, pad);
  if (mode == TMModeBestMatchNeighborhood) this->allocator->allocateArray(neighborhoodDims, this->nDims, "ignore");
  this->processor = std::make_unique<TemplateMatching<HT, UT, YT, AllocatorTolk>>(
      this->allocator.get(), this->nDims, window.dims, this->exceedsInput(window), this->uDims, outMode, algorithm,
      mode, withRoi, withRoiValid, search, window.centre, h, this->u, roiLoc, roiDims, this->y, location,
      neighborhoodDims, yNeighborhoodData, neighborhoodValid, roiValid);
  this->keepStatistics(this->u, false);
  this->keepStatistics(h, false);
  this->keepStatistics(this->y, true);
  this->keepStatistics(yNeighborhoodData, true);
}

template <class HT, class UT, class YT>
TemplateMatchingTolk<HT, UT, YT>::TemplateMatchingTolk(brekk::BrekkAdaptorTolk* adaptor, int hCount, int* hHost,
                                                       int uCount, int* uHost, PadTypeEnum pad, OutputModeEnum outMode,
                                                       AlgorithmModeEnum algorithm, TMModeEnum mode, bool varSize,
                                                       bool withRoi, bool withRoiValid, SearchMethodEnum search)
    : TemplateMatchingTolk(adaptor, hCount, hHost, uCount, uHost, pad, outMode, algorithm, mode, varSize, withRoi,
                           withRoiValid, search, [](AllocatorTolk& /*plain elements have no types*/) {}) {}

template <class HT, class UT, class YT>
TemplateMatchingTolk<HT, UT, YT>::TemplateMatchingTolk(brekk::BrekkAdaptorTolk* adaptor, int hCount, int* hHost,
                                                       int uCount, int* uHost, PadTypeEnum pad, OutputModeEnum outMode,
                                                       AlgorithmModeEnum algorithm, TMModeEnum mode, bool varSize,
                                                       bool withRoi, bool withRoiValid, SearchMethodEnum search,
                                                       const Handle& accumulator, const Handle& input,
                                                       const Handle& output, const Handle& filter)
    : TemplateMatchingTolk(
          adaptor, hCount, hHost, uCount, uHost, pad, outMode, algorithm, mode, varSize, withRoi, withRoiValid, search,
          [&](AllocatorTolk& roles) {
            roles.registerTypeName("accumulator", accumulator);
            roles.registerTypeName("input", input);
            roles.registerTypeName("output", output);
            roles.registerTypeName("filter", filter);
            roles.registerTypeName(
                "uint8", Handle(8, 0, 8, 0, 8, 0, adaptor, fxpModeOverflow_tag(0), fxpModeRounding_tag(3), false, false,
                                "uint8", "Product output", "Accumulator", KarnSimCommon::overrideDType(2)));
          }) {}

template <class HT, class UT, class YT>
TemplateMatchingTolk<HT, UT, YT>::~TemplateMatchingTolk() {
  this->end();
}

/// Main output, location and flags that are not given stay as they are.
template <class HT, class UT, class YT>
void TemplateMatchingTolk<HT, UT, YT>::bindResults(YT* scores, int* position, YT* neighborhood, bool* blockValid,
                                                   bool* regionValid) {
  if (scores != nullptr) adoptData(this->y, scores);
  if (position != nullptr) location.ptr = position;
  adoptData(yNeighborhoodData, neighborhood);
  if (blockValid != nullptr) neighborhoodValid.ptr = blockValid;
  if (regionValid != nullptr) roiValid.ptr = regionValid;
}

template <class HT, class UT, class YT>
void TemplateMatchingTolk<HT, UT, YT>::setup(HT* pattern, UT* image, int* roi, YT* scores, int* position, int edge,
                                             YT* neighborhood, bool* blockValid, bool* regionValid,
                                             const void* newPadValue, bool isComplex) {
  adoptData(h, pattern);
  roiLoc.ptr = roi;
  roiDims.ptr = roi == nullptr ? nullptr : roi + this->nDims;
  bindResults(scores, position, neighborhood, blockValid, regionValid);
  if (neighborhoodDims.ptr != nullptr) std::fill_n(neighborhoodDims.ptr, this->nDims, edge);
  this->start(image, newPadValue, isComplex);
}

template <class HT, class UT, class YT>
void TemplateMatchingTolk<HT, UT, YT>::tune(void* first, void* /*second*/, void* third) {
  rebindData(h, first);
  this->tunePadValue(third);
}

template <class HT, class UT, class YT>
void TemplateMatchingTolk<HT, UT, YT>::updateInputPointers(void* first, void* second) {
  rebindData(this->u, first);
  rebindData(h, second);
}

template <class HT, class UT, class YT>
void TemplateMatchingTolk<HT, UT, YT>::updateOutputPointers(void* a, void* b, void* c, void* d, void* e) {
  rebindData(this->y, a);
  rebindData(location, b);
  rebindData(yNeighborhoodData, c);
  rebindData(neighborhoodValid, d);
  rebindData(roiValid, e);
}

}  // namespace BP
