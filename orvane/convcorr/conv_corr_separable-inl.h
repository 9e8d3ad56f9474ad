#pragma once

#include <algorithm>
#include <functional>
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
      if (canFuse) walk.resize(hDims.ptr[0], h2Dims.ptr[1]);
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

/// Whether the first filter is a column and the second a row, with their centres in them.
template <class HT, class UT, class YT, class AllocT>
bool ConvCorrSeparable<HT, UT, YT, AllocT>::filtersAreLines() const {
  const auto isWithin = [](int centre, int extent) { return centre >= 0 && centre < extent; };
  return hDims.ptr[1] == 1 && h2Dims.ptr[0] == 1 && hCentre.ptr[1] == 0 && h2Centre.ptr[0] == 0 &&
         isWithin(hCentre.ptr[0], hDims.ptr[0]) && isWithin(h2Centre.ptr[1], h2Dims.ptr[1]);
}

/// Whether input and output share memory, as they can with the intermediate between them.
template <class HT, class UT, class YT, class AllocT>
bool ConvCorrSeparable<HT, UT, YT, AllocT>::arraysOverlap() const {
  const auto* const from = reinterpret_cast<const char*>(u.ptr);
  const auto* const to = reinterpret_cast<const char*>(y.ptr);
  const std::less<const char*> isBefore;
  return isBefore(from, to + elementCount(2, pass2->getY().getBlock().getDims().ptr) * std::int64_t{sizeof(YT)}) &&
         isBefore(to, from + elementCount(2, uDims.ptr) * std::int64_t{sizeof(UT)});
}

/// Both passes in one walk; false, and nothing done, where that cannot be.
template <class HT, class UT, class YT, class AllocT>
bool ConvCorrSeparable<HT, UT, YT, AllocT>::runFused() {
  if constexpr (isPlain) {
    if (!canFuse || !pass1->getIsBuilt() || !filtersAreLines() || arraysOverlap()) return false;
    const auto firstTap = [&](int extent, int centre) {
      return outputMode == OutputModeValid ? 0 : outputMode == OutputModeSame ? -centre : 1 - extent;
    };
    const int* const outDims = pass2->getY().getBlock().getDims().ptr;
    const SeparableGeometry geometry{{outDims[0], outDims[1]},
                                     {firstTap(hDims.ptr[0], hCentre.ptr[0]), firstTap(h2Dims.ptr[1], h2Centre.ptr[1])},
                                     hDims.ptr[0],
                                     h2Dims.ptr[1]};
    return walk.run({u.ptr, uDims.ptr, 2, padType, pass1->getPadValue().ptr}, pass2->getPadValue().ptr, h.ptr, h2.ptr,
                    isReversed, geometry, y.ptr);
  }
  return false;
}

/// Whether the first pass would take its values from an input that has none, and so leave the intermediate as it is.
template <class HT, class UT, class YT, class AllocT>
bool ConvCorrSeparable<HT, UT, YT, AllocT>::readsNothing() const {
  return padType != PadTypeConstant && std::any_of(uDims.ptr, uDims.ptr + nDims, [](int extent) { return extent < 1; });
}

template <class HT, class UT, class YT, class AllocT>
void ConvCorrSeparable<HT, UT, YT, AllocT>::invoke() {
  if (!intermediateFits() || readsNothing() || runFused()) return;
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
