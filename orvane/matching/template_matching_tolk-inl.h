#pragma once

#include <type_traits>

#include "orvane/core/host_data.h"
#include "orvane/core/host_dims.h"
#include "orvane/matching/template_matching_tolk.h"

namespace BP {

template <class HT, class UT, class YT>
template <class RegisterT>
TemplateMatchingTolk<HT, UT, YT>::TemplateMatchingTolk(brekk::BrekkAdaptorTolk* adaptor, int hCount, int* hHost,
                                                       int uCount, int* uHost, PadTypeEnum pad, OutputModeEnum outMode,
                                                       AlgorithmModeEnum algorithm, TMModeEnum mode, bool varSize,
                                                       bool withRoi, bool withRoiValid, SearchMethodEnum search,
                                                       RegisterT&& registerTypes)
    : BlockProcTolkCache(adaptor),
      outputMode(outMode),
      algorithmMode(algorithm),
      tmMode(mode),
      isVarSize(varSize),
      roiEnabled(withRoi),
      roiValidEnabled(withRoiValid),
      searchMethod(search),
      padType(pad) {
  registerTypes(*allocator);
  constructTemplateMatching(hCount, hHost, uCount, uHost);
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
void TemplateMatchingTolk<HT, UT, YT>::constructTemplateMatching(int hCount, int* hHost, int uCount, int* uHost) {
  hNumDims = hCount;
  uNumDims = uCount;
  nDims = commonRank(hNumDims, uNumDims);
  hostHDims.ptr = hHost;
  hostUDims.ptr = uHost;
  for (CleverPtr<int>* table : {&hDims, &uDims, &hCentre}) allocator->allocateArray(*table, nDims, "ignore");
  if (tmMode == TMModeBestMatchNeighborhood) allocator->allocateArray(neighborhoodDims, nDims, "ignore");
  const bool exceeds = isHgtU(hNumDims, uNumDims, hostHDims, hostUDims);
  templateMatching = std::make_unique<TemplateMatching<HT, UT, YT, AllocatorTolk>>(
      allocator.get(), nDims, hDims, exceeds, uDims, outputMode, algorithmMode, tmMode, roiEnabled, roiValidEnabled,
      searchMethod, hCentre, h, u, roiLoc, roiDims, y, location, neighborhoodDims, yNeighborhoodData, neighborhoodValid,
      roiValid);
}

template <class HT, class UT, class YT>
TemplateMatchingTolk<HT, UT, YT>::~TemplateMatchingTolk() {
  forwardFinish();
  replacePadValue<UT>(padValue, nullptr);
  templateMatching.reset();
}

template <class HT, class UT, class YT>
void TemplateMatchingTolk<HT, UT, YT>::setup(HT* pattern, UT* image, int* roi, YT* scores, int* position, int edge,
                                             YT* neighborhood, bool* blockValid, bool* regionValid,
                                             const void* newPadValue, bool isComplex) {
  adoptData(h, pattern);
  adoptData(u, image);
  roiLoc.ptr = roi;
  roiDims.ptr = roi == nullptr ? nullptr : roi + nDims;
  if (scores != nullptr) adoptData(y, scores);
  if (position != nullptr) location.ptr = position;
  neighborhoodSize = edge;
  adoptData(yNeighborhoodData, neighborhood);
  if (blockValid != nullptr) neighborhoodValid.ptr = blockValid;
  if (regionValid != nullptr) roiValid.ptr = regionValid;
  replacePadValue<UT>(padValue, newPadValue);
  padIsComplex = isComplex;
  allocator->refreshWorkVectors();
  templateMatching->setup(setupAttachWork);
  templateMatching->setup(setupLinkTables);
  setup(setupStart);
}

template <class HT, class UT, class YT>
void TemplateMatchingTolk<HT, UT, YT>::setup(setupModeT mode) {
  if (mode == setupFinish) return forwardFinish();
  if (mode == setupResize || mode == setupStart) {
    fillDims(hDims, nDims, hostHDims, hNumDims);
    fillDims(uDims, nDims, hostUDims, uNumDims);
    assignPad();
    computeCentres(hCentre, nDims, hDims);
    for (int d = 0; d < nDims && tmMode == TMModeBestMatchNeighborhood; ++d) {
      neighborhoodDims.ptr[d] = neighborhoodSize;
    }
  }
  templateMatching->setup(mode);
}

template <class HT, class UT, class YT>
void TemplateMatchingTolk<HT, UT, YT>::forwardFinish() {
  templateMatching->setup(setupFinish);
  if constexpr (std::is_same_v<UT, KarnDSPFixpt::Fixpt>) {
    allocator->mergeFixptLog(u.ptr, false);
    allocator->mergeFixptLog(h.ptr, false);
  }
  if constexpr (std::is_same_v<YT, KarnDSPFixpt::Fixpt>) {
    allocator->mergeFixptLog(y.ptr, true);
    allocator->mergeFixptLog(yNeighborhoodData.ptr, true);
  }
  templateMatching->setup(setupFinish);
}

template <class HT, class UT, class YT>
void TemplateMatchingTolk<HT, UT, YT>::assignPad() {
  if (useConstantPad()) templateMatching->assignPadValue(padValue, padIsComplex);
}

template <class HT, class UT, class YT>
void TemplateMatchingTolk<HT, UT, YT>::computeOutputs() {
  assignPad();
  if (isVarSize) setup(setupResize);
  templateMatching->invoke();
}

template <class HT, class UT, class YT>
void TemplateMatchingTolk<HT, UT, YT>::tune(void* first, void* /*second*/, void* third) {
  rebindData(h, first);
  if (third != nullptr) replacePadValue<UT>(padValue, third);
}

template <class HT, class UT, class YT>
void TemplateMatchingTolk<HT, UT, YT>::updateInputPointers(void* first, void* second) {
  rebindData(u, first);
  rebindData(h, second);
}

template <class HT, class UT, class YT>
void TemplateMatchingTolk<HT, UT, YT>::updateOutputPointers(void* a, void* b, void* c, void* d, void* e) {
  rebindData(y, a);
  rebindData(location, b);
  rebindData(yNeighborhoodData, c);
  rebindData(neighborhoodValid, d);
  rebindData(roiValid, e);
}

}  // namespace BP
