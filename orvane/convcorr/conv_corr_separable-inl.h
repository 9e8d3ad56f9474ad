#pragma once

#include <algorithm>
#include <limits>
#include <type_traits>

#include "orvane/convcorr/conv_corr_separable.h"
#include "orvane/vendor/zd_filter_loader.h"

namespace BP {

template <class HT, class UT, class YT, class AllocT>
ConvCorrSeparable<HT, UT, YT, AllocT>::ConvCorrSeparable(
    AllocT* alloc, int rank, CleverPtr<int>& firstDims, bool isHgtU1, CleverPtr<int>& secondDims, bool isHgtU2,
    CleverPtr<int>& inputDims, CleverPtr<int>& midMaxDims, OutputModeEnum outMode, AlgorithmModeEnum algorithmMode,
    NormEnum norm, PadTypeEnum pad, CleverPtr<int>& firstCentre, CleverPtr<HT>& first, CleverPtr<int>& secondCentre,
    CleverPtr<HT>& second, CleverPtr<UT>& input, CleverPtr<YT>& output)
    : allocator(alloc),
      nDims(rank),
      outputMode(outMode),
      isReversed(algorithmMode == AlgorithmModeConvolution),
      padType(pad),
      canFuse(isPlain && rank == 2 && norm == NormNone &&
              !(std::is_floating_point_v<UT> && std::is_floating_point_v<HT> && ZdFilterLoader().getAllLoaded())),
      hDims(firstDims),
      h2Dims(secondDims),
      uDims(inputDims),
      hCentre(firstCentre),
      h2Centre(secondCentre),
      h(first),
      h2(second),
      u(input),
      y(output),
      midCapacity(std::min<std::int64_t>(elementCount(rank, midMaxDims.ptr), std::numeric_limits<int>::max())) {
  allocator->allocateArray(midData, static_cast<int>(midCapacity), "output");
  allocator->allocateArray(midDims, nDims, "ignore");
  pass1 = std::make_unique<ConvCorr<HT, UT, YT, AllocT>>(allocator, nDims, hDims, isHgtU1, uDims, outputMode,
                                                         algorithmMode, norm, pad, hCentre, h, u, midData);
  pass2 = std::make_unique<ConvCorr<HT, YT, YT, AllocT>>(allocator, nDims, h2Dims, isHgtU2, midDims, outputMode,
                                                         algorithmMode, norm, pad, h2Centre, h2, midData, y);
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
    if constexpr (isPlain) {
      if (canFuse && hDims.ptr[0] > 0 && h2Dims.ptr[1] > 0) walk.resize(hDims.ptr[0], h2Dims.ptr[1]);
    }
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

/// Both passes in one walk; false, and nothing done, where that cannot be.
template <class HT, class UT, class YT, class AllocT>
bool ConvCorrSeparable<HT, UT, YT, AllocT>::runFused() {
  if constexpr (isPlain) {
    if (!canFuse || !pass1->getIsBuilt() || hDims.ptr[0] < 1 || h2Dims.ptr[1] < 1) return false;
    const auto firstTap = [&](int extent, int centre) {
      return outputMode == OutputModeValid ? 0 : outputMode == OutputModeSame ? -centre : 1 - extent;
    };
    const int* const outDims = pass2->getY().getBlock().getDims().ptr;
    const SeparableGeometry geometry{{outDims[0], outDims[1]},
                                     {firstTap(hDims.ptr[0], hCentre.ptr[0]), firstTap(h2Dims.ptr[1], h2Centre.ptr[1])},
                                     hDims.ptr[0],
                                     h2Dims.ptr[1]};
    return walk.run({u.ptr, uDims.ptr, 2, padType, pass1->getPadValue().ptr}, pass1->getPadOutput().ptr, h.ptr, h2.ptr,
                    isReversed, geometry, y.ptr);
  }
  return false;
}

template <class HT, class UT, class YT, class AllocT>
void ConvCorrSeparable<HT, UT, YT, AllocT>::invoke() {
  if (!intermediateFits() || runFused()) return;
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
