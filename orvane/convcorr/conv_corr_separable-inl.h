#pragma once

#include <algorithm>
#include <limits>
#include <type_traits>

#include "orvane/convcorr/conv_corr_separable.h"

namespace BP {

template <class HT, class UT, class YT, class AllocT>
ConvCorrSeparable<HT, UT, YT, AllocT>::ConvCorrSeparable(AllocT* alloc, int rank, CleverPtr<int>& hDims, bool isHgtU1,
                                                         CleverPtr<int>& h2Dims, bool isHgtU2, CleverPtr<int>& uDims,
                                                         CleverPtr<int>& midMaxDims, OutputModeEnum outputMode,
                                                         AlgorithmModeEnum algorithmMode, NormEnum norm,
                                                         PadTypeEnum padType, CleverPtr<int>& hCentre, CleverPtr<HT>& h,
                                                         CleverPtr<int>& h2Centre, CleverPtr<HT>& h2, CleverPtr<UT>& u,
                                                         CleverPtr<YT>& y)
    : allocator(alloc),
      nDims(rank),
      midCapacity(std::min<std::int64_t>(elementCount(rank, midMaxDims.ptr), std::numeric_limits<int>::max())) {
  allocator->allocateArray(midData, static_cast<int>(midCapacity), "output");
  allocator->allocateArray(midDims, nDims, "ignore");
  pass1 = std::make_unique<ConvCorr<HT, UT, YT, AllocT>>(allocator, nDims, hDims, isHgtU1, uDims, outputMode,
                                                         algorithmMode, norm, padType, hCentre, h, u, midData);
  pass2 = std::make_unique<ConvCorr<HT, YT, YT, AllocT>>(allocator, nDims, h2Dims, isHgtU2, midDims, outputMode,
                                                         algorithmMode, norm, padType, h2Centre, h2, midData, y);
}

template <class HT, class UT, class YT, class AllocT>
ConvCorrSeparable<HT, UT, YT, AllocT>::~ConvCorrSeparable() {
  pass1.reset();
  pass2.reset();
}

template <class HT, class UT, class YT, class AllocT>
void ConvCorrSeparable<HT, UT, YT, AllocT>::setup(setupModeT mode) {
  pass1->setup(mode);
  if (mode == setupResize || mode == setupStart) {
    std::copy_n(pass1->getY().getBlock().getDims().ptr, nDims, midDims.ptr);
  }
  if constexpr (std::is_same_v<YT, Fixpt>) {
    if (mode == setupFinish) allocator->mergeFixptLog(midData.ptr, false);
  }
  pass2->setup(mode);
}

template <class HT, class UT, class YT, class AllocT>
bool ConvCorrSeparable<HT, UT, YT, AllocT>::intermediateFits() const {
  return elementCount(nDims, midDims.ptr) <= midCapacity;
}

template <class HT, class UT, class YT, class AllocT>
void ConvCorrSeparable<HT, UT, YT, AllocT>::invoke() {
  if (!intermediateFits()) return;
  pass1->invoke();
  pass2->invoke();
}

template <class HT, class UT, class YT, class AllocT>
void ConvCorrSeparable<HT, UT, YT, AllocT>::assignPadValue(const void* value, bool isComplex) {
  if (!pass1->getIsBuilt()) return;
  pass1->assignPadValue(value, isComplex);
  pass1->computePadOutput();
  pass2->setPadValue(pass1->getPadOutput());
}

template <class HT, class UT, class YT, class AllocT>
const AnyCorrelation* ConvCorrSeparable<HT, UT, YT, AllocT>::getConvCorr1() const {
  return pass1.get();
}

template <class HT, class UT, class YT, class AllocT>
const AnyCorrelation* ConvCorrSeparable<HT, UT, YT, AllocT>::getConvCorr2() const {
  return pass2.get();
}

}  // namespace BP
