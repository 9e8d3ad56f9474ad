#pragma once

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
    : Base(adaptor, outMode, varSize), separable(true) {
  this->allocator->registerTypeName("input", input);
  this->allocator->registerTypeName("output", output);
  this->allocator->registerTypeName("filter", filter);
  this->allocator->registerTypeName("accumulator", accumulator);
  constructConvCorr(hCount, hHost, h2Count, h2Host, uCount, uHost, pad, mode);
}

template <class HT, class UT, class YT>
ConvCorrTolk<HT, UT, YT>::ConvCorrTolk(brekk::BrekkAdaptorTolk* adaptor, int hCount, int* hHost, int h2Count,
                                       int* h2Host, int uCount, int* uHost, PadTypeEnum pad, OutputModeEnum outMode,
                                       AlgorithmModeEnum mode, bool varSize)
    : Base(adaptor, outMode, varSize), separable(true) {
  constructConvCorr(hCount, hHost, h2Count, h2Host, uCount, uHost, pad, mode);
}

template <class HT, class UT, class YT>
ConvCorrTolk<HT, UT, YT>::ConvCorrTolk(brekk::BrekkAdaptorTolk* adaptor, int hCount, int* hHost, int uCount, int* uHost,
                                       PadTypeEnum pad, OutputModeEnum outMode, AlgorithmModeEnum mode, NormEnum norm,
                                       bool varSize, const Handle& input, const Handle& output, const Handle& filter,
                                       const Handle& accumulator, const Handle& sqrt)
    : Base(adaptor, outMode, varSize), separable(false) {
  this->allocator->registerTypeName("input", input);
  this->allocator->registerTypeName("output", output);
  this->allocator->registerTypeName("filter", filter);
  this->allocator->registerTypeName("accumulator", accumulator);
  this->allocator->registerTypeName("sqrt", sqrt);
  constructConvCorr(hCount, hHost, uCount, uHost, pad, mode, norm);
}

template <class HT, class UT, class YT>
ConvCorrTolk<HT, UT, YT>::ConvCorrTolk(brekk::BrekkAdaptorTolk* adaptor, int hCount, int* hHost, int uCount, int* uHost,
                                       PadTypeEnum pad, OutputModeEnum outMode, AlgorithmModeEnum mode, NormEnum norm,
                                       bool varSize, const Handle& input, const Handle& output, const Handle& filter,
                                       const Handle& accumulator)
    : Base(adaptor, outMode, varSize), separable(false) {
  this->allocator->registerTypeName("input", input);
  this->allocator->registerTypeName("output", output);
  this->allocator->registerTypeName("filter", filter);
  this->allocator->registerTypeName("accumulator", accumulator);
  constructConvCorr(hCount, hHost, uCount, uHost, pad, mode, norm);
}

template <class HT, class UT, class YT>
ConvCorrTolk<HT, UT, YT>::ConvCorrTolk(brekk::BrekkAdaptorTolk* adaptor, int hCount, int* hHost, int uCount, int* uHost,
                                       PadTypeEnum pad, OutputModeEnum outMode, AlgorithmModeEnum mode, NormEnum norm,
                                       bool varSize)
    : Base(adaptor, outMode, varSize), separable(false) {
  constructConvCorr(hCount, hHost, uCount, uHost, pad, mode, norm);
}

template <class HT, class UT, class YT>
ConvCorrTolk<HT, UT, YT>::~ConvCorrTolk() {
  this->end();
}

template <class HT, class UT, class YT>
void ConvCorrTolk<HT, UT, YT>::constructConvCorr(int hCount, int* hHost, int uCount, int* uHost, PadTypeEnum pad,
                                                 AlgorithmModeEnum mode, NormEnum norm) {
  auto& filter = this->addWindow(hCount, hHost);
  keepAllStatistics();
  this->openTables(uCount, uHost, pad);
  this->processor = std::make_unique<ConvCorr<HT, UT, YT, AllocatorTolk>>(
      this->allocator.get(), this->nDims, filter.dims, this->exceedsInput(filter), this->uDims, this->outputMode, mode,
      norm, pad, filter.centre, h, this->u, this->y);
}

template <class HT, class UT, class YT>
void ConvCorrTolk<HT, UT, YT>::constructConvCorr(int hCount, int* hHost, int h2Count, int* h2Host, int uCount,
                                                 int* uHost, PadTypeEnum pad, AlgorithmModeEnum mode) {
  auto& column = this->addWindow(hCount, hHost, 0);
  auto& row = this->addWindow(h2Count, h2Host, 1);
  keepAllStatistics();
  this->openTables(uCount, uHost, pad);
  this->fillAllDims();
  CleverPtr<int> mid;
  this->allocator->allocateArray(mid, this->nDims, "ignore");
  computeMidMaxDims(mid, column.dims);
  const bool exceeds1 = isHgtU(hCount, uCount, column.dims, this->hostUDims);
  const bool exceeds2 = isHgtU(h2Count, this->nDims, row.dims, mid);
  this->processor = std::make_unique<ConvCorrSeparable<HT, UT, YT, AllocatorTolk>>(
      this->allocator.get(), this->nDims, column.dims, exceeds1, row.dims, exceeds2, this->uDims, mid, this->outputMode,
      mode, NormNone, pad, column.centre, h, row.centre, h2, this->u, this->y);
}

template <class HT, class UT, class YT>
void ConvCorrTolk<HT, UT, YT>::keepAllStatistics() {
  this->keepStatistics(this->u, false);
  this->keepStatistics(h, false);
  if (separable) this->keepStatistics(h2, false);
  this->keepStatistics(this->y, true);
}

/// The largest extents that the intermediate array can have, for the first filter folded into a column. If sizes vary,
/// the smallest filter gives the largest valid output.
template <class HT, class UT, class YT>
void ConvCorrTolk<HT, UT, YT>::computeMidMaxDims(CleverPtr<int>& mid, const CleverPtr<int>& first) const {
  fillDims(mid, this->nDims, this->hostUDims, this->uNumDims);
  for (int i = 0; i < this->nDims; ++i) {
    const int d = this->isVarSize && this->outputMode == OutputModeValid ? 1 : first.ptr[i];
    if (this->outputMode == OutputModeValid) mid.ptr[i] += 1 - d;
    if (this->outputMode == OutputModeFull) mid.ptr[i] += d - 1;
  }
}

template <class HT, class UT, class YT>
void ConvCorrTolk<HT, UT, YT>::setup(HT* filter, UT* input, YT* output, const void* newPadValue, bool isComplex) {
  adoptData(h, filter);
  adoptData(this->y, output);
  this->start(input, newPadValue, isComplex);
}

template <class HT, class UT, class YT>
void ConvCorrTolk<HT, UT, YT>::setup(HT* filter, HT* secondFilter, UT* input, YT* output, const void* newPadValue,
                                     bool isComplex) {
  adoptData(h2, secondFilter);
  setup(filter, input, output, newPadValue, isComplex);
}

template <class HT, class UT, class YT>
void ConvCorrTolk<HT, UT, YT>::tune(void* first, void* second, void* third) {
  rebindData(h, first);
  if (separable) rebindData(h2, second);
  this->tunePadValue(third);
}

}  // namespace BP
