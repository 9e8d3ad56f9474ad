#pragma once

#include <type_traits>

#include "orvane/convcorr/conv_corr_separable.h"
#include "orvane/convcorr/conv_corr_tolk.h"
#include "orvane/core/host_data.h"
#include "orvane/core/host_dims.h"

namespace BP {

template <class HT, class UT, class YT>
ConvCorrTolk<HT, UT, YT>::ConvCorrTolk(brekk::BrekkAdaptorTolk* adaptor, int hCount, int* hHost, int h2Count,
                                       int* h2Host, int uCount, int* uHost, PadTypeEnum pad, OutputModeEnum outMode,
                                       AlgorithmModeEnum mode, bool varSize, const Handle& input, const Handle& output,
                                       const Handle& filter, const Handle& accumulator)
    : BlockProcTolkCache(adaptor), outputMode(outMode), isVarSize(varSize), separable(true) {
  allocator->registerTypeName("input", input);
  allocator->registerTypeName("output", output);
  allocator->registerTypeName("filter", filter);
  allocator->registerTypeName("accumulator", accumulator);
  constructConvCorr(hCount, hHost, h2Count, h2Host, uCount, uHost, pad, mode);
}

template <class HT, class UT, class YT>
ConvCorrTolk<HT, UT, YT>::ConvCorrTolk(brekk::BrekkAdaptorTolk* adaptor, int hCount, int* hHost, int h2Count,
                                       int* h2Host, int uCount, int* uHost, PadTypeEnum pad, OutputModeEnum outMode,
                                       AlgorithmModeEnum mode, bool varSize)
    : BlockProcTolkCache(adaptor), outputMode(outMode), isVarSize(varSize), separable(true) {
  constructConvCorr(hCount, hHost, h2Count, h2Host, uCount, uHost, pad, mode);
}

template <class HT, class UT, class YT>
ConvCorrTolk<HT, UT, YT>::ConvCorrTolk(brekk::BrekkAdaptorTolk* adaptor, int hCount, int* hHost, int uCount, int* uHost,
                                       PadTypeEnum pad, OutputModeEnum outMode, AlgorithmModeEnum mode, NormEnum norm,
                                       bool varSize, const Handle& input, const Handle& output, const Handle& filter,
                                       const Handle& accumulator, const Handle& sqrt)
    : BlockProcTolkCache(adaptor), outputMode(outMode), isVarSize(varSize), separable(false) {
  allocator->registerTypeName("input", input);
  allocator->registerTypeName("output", output);
  allocator->registerTypeName("filter", filter);
  allocator->registerTypeName("accumulator", accumulator);
  allocator->registerTypeName("sqrt", sqrt);
  constructConvCorr(hCount, hHost, uCount, uHost, pad, mode, norm);
}

template <class HT, class UT, class YT>
ConvCorrTolk<HT, UT, YT>::ConvCorrTolk(brekk::BrekkAdaptorTolk* adaptor, int hCount, int* hHost, int uCount, int* uHost,
                                       PadTypeEnum pad, OutputModeEnum outMode, AlgorithmModeEnum mode, NormEnum norm,
                                       bool varSize, const Handle& input, const Handle& output, const Handle& filter,
                                       const Handle& accumulator)
    : BlockProcTolkCache(adaptor), outputMode(outMode), isVarSize(varSize), separable(false) {
  allocator->registerTypeName("input", input);
  allocator->registerTypeName("output", output);
  allocator->registerTypeName("filter", filter);
  allocator->registerTypeName("accumulator", accumulator);
  constructConvCorr(hCount, hHost, uCount, uHost, pad, mode, norm);
}

template <class HT, class UT, class YT>
ConvCorrTolk<HT, UT, YT>::ConvCorrTolk(brekk::BrekkAdaptorTolk* adaptor, int hCount, int* hHost, int uCount, int* uHost,
                                       PadTypeEnum pad, OutputModeEnum outMode, AlgorithmModeEnum mode, NormEnum norm,
                                       bool varSize)
    : BlockProcTolkCache(adaptor), outputMode(outMode), isVarSize(varSize), separable(false) {
  constructConvCorr(hCount, hHost, uCount, uHost, pad, mode, norm);
}

template <class HT, class UT, class YT>
ConvCorrTolk<HT, UT, YT>::~ConvCorrTolk() {
  forwardFinish();
  replacePadValue<UT>(padValue, nullptr);
  processor.reset();
}

template <class HT, class UT, class YT>
void ConvCorrTolk<HT, UT, YT>::storeHost(int hCount, int* hHost, int uCount, int* uHost, PadTypeEnum pad) {
  hNumDims = hCount;
  uNumDims = uCount;
  hostHDims.ptr = hHost;
  hostUDims.ptr = uHost;
  padType = pad;
}

template <class HT, class UT, class YT>
void ConvCorrTolk<HT, UT, YT>::constructConvCorr(int hCount, int* hHost, int uCount, int* uHost, PadTypeEnum pad,
                                                 AlgorithmModeEnum mode, NormEnum norm) {
  storeHost(hCount, hHost, uCount, uHost, pad);
  nDims = commonRank(hNumDims, uNumDims);
  for (CleverPtr<int>* table : {&hDims, &uDims, &hCentre}) allocator->allocateArray(*table, nDims, "ignore");
  const bool exceeds = isHgtU(hNumDims, uNumDims, hostHDims, hostUDims);
  processor = std::make_unique<ConvCorr<HT, UT, YT, AllocatorTolk>>(allocator.get(), nDims, hDims, exceeds, uDims,
                                                                    outputMode, mode, norm, padType, hCentre, h, u, y);
}

template <class HT, class UT, class YT>
void ConvCorrTolk<HT, UT, YT>::constructConvCorr(int hCount, int* hHost, int h2Count, int* h2Host, int uCount,
                                                 int* uHost, PadTypeEnum pad, AlgorithmModeEnum mode) {
  storeHost(hCount, hHost, uCount, uHost, pad);
  h2NumDims = h2Count;
  hostH2Dims.ptr = h2Host;
  nDims = commonRank(std::max(hNumDims, h2NumDims), uNumDims);
  for (CleverPtr<int>* table : {&hDims, &h2Dims, &uDims, &hCentre, &h2Centre}) {
    allocator->allocateArray(*table, nDims, "ignore");
  }
  CleverPtr<int> first, second, mid;
  for (CleverPtr<int>* table : {&first, &second, &mid}) allocator->allocateArray(*table, nDims, "ignore");
  fillDims(first, nDims, hostHDims, hNumDims);
  fillDims(second, nDims, hostH2Dims, h2NumDims);
  foldDims(first, nDims, 0);
  foldDims(second, nDims, 1);
  computeMidMaxDims(mid, first);
  const bool exceeds1 = isHgtU(hNumDims, uNumDims, first, hostUDims);
  const bool exceeds2 = isHgtU(h2NumDims, nDims, second, mid);
  processor = std::make_unique<ConvCorrSeparable<HT, UT, YT, AllocatorTolk>>(
      allocator.get(), nDims, hDims, exceeds1, h2Dims, exceeds2, uDims, mid, outputMode, mode, NormNone, padType,
      hCentre, h, h2Centre, h2, u, y);
}

/// The largest extents that the intermediate array can come to have, for the first filter folded into a column: with
/// sizes that vary, the smallest filter gives the largest valid output.
template <class HT, class UT, class YT>
void ConvCorrTolk<HT, UT, YT>::computeMidMaxDims(CleverPtr<int>& mid, CleverPtr<int>& first) const {
  fillDims(mid, nDims, hostUDims, uNumDims);
  for (int i = 0; i < nDims; ++i) {
    const int d = isVarSize && outputMode == OutputModeValid ? 1 : first.ptr[i];
    if (outputMode == OutputModeValid) mid.ptr[i] += 1 - d;
    if (outputMode == OutputModeFull) mid.ptr[i] += d - 1;
  }
}

template <class HT, class UT, class YT>
void ConvCorrTolk<HT, UT, YT>::fillAllDims() {
  fillDims(hDims, nDims, hostHDims, hNumDims);
  fillDims(uDims, nDims, hostUDims, uNumDims);
  if (!separable) return;
  fillDims(h2Dims, nDims, hostH2Dims, h2NumDims);
  foldDims(hDims, nDims, 0);
  foldDims(h2Dims, nDims, 1);
}

template <class HT, class UT, class YT>
void ConvCorrTolk<HT, UT, YT>::assignPad() {
  if (useConstantPad()) processor->assignPadValue(padValue, padIsComplex);
}

template <class HT, class UT, class YT>
void ConvCorrTolk<HT, UT, YT>::computeAllCentres() {
  computeCentres(hCentre, nDims, hDims);
  if (separable) computeCentres(h2Centre, nDims, h2Dims);
}

template <class HT, class UT, class YT>
void ConvCorrTolk<HT, UT, YT>::forwardFinish() {
  processor->setup(setupFinish);
  if constexpr (std::is_same_v<HT, KarnDSPFixpt::Fixpt>) {
    allocator->mergeFixptLog(u.ptr, false);
    allocator->mergeFixptLog(h.ptr, false);
    if (separable) allocator->mergeFixptLog(h2.ptr, false);
    allocator->mergeFixptLog(y.ptr, true);
  }
  processor->setup(setupFinish);
}

template <class HT, class UT, class YT>
void ConvCorrTolk<HT, UT, YT>::setup(setupModeT mode) {
  switch (mode) {
    case setupFinish: return forwardFinish();
    case setupAttachWork: fillAllDims(); break;
    case setupResize: fillAllDims(); [[fallthrough]];
    case setupStart:
      assignPad();
      computeAllCentres();
      break;
    default: break;
  }
  processor->setup(mode);
}

template <class HT, class UT, class YT>
void ConvCorrTolk<HT, UT, YT>::setup(HT* filter, UT* input, YT* output, const void* newPadValue, bool isComplex) {
  adoptData(h, filter);
  adoptData(u, input);
  adoptData(y, output);
  replacePadValue<UT>(padValue, newPadValue);
  padIsComplex = isComplex;
  allocator->refreshWorkVectors();
  setup(setupAttachWork);
  setup(setupLinkTables);
  setup(setupStart);
}

template <class HT, class UT, class YT>
void ConvCorrTolk<HT, UT, YT>::setup(HT* filter, HT* secondFilter, UT* input, YT* output, const void* newPadValue,
                                     bool isComplex) {
  adoptData(h2, secondFilter);
  setup(filter, input, output, newPadValue, isComplex);
}

template <class HT, class UT, class YT>
void ConvCorrTolk<HT, UT, YT>::computeOutputs() {
  assignPad();
  if (isVarSize) setup(setupResize);
  processor->invoke();
}

template <class HT, class UT, class YT>
void ConvCorrTolk<HT, UT, YT>::tune(void* first, void* second, void* third) {
  rebindData(h, first);
  if (separable) rebindData(h2, second);
  if (third != nullptr) replacePadValue<UT>(padValue, third);
}

}  // namespace BP
