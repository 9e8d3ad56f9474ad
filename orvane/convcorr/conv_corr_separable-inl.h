#pragma once

#include <algorithm>
#include <cstddef>
#include <functional>
#include <limits>
#include <type_traits>

#include "orvane/convcorr/conv_corr_separable.h"
#include "orvane/input/pad_redirector.h"
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
  for (CleverPtr<int>* table : {&midLoc, &outLoc, &outDims, &regionLoc, &bandLoc}) {
    allocator->allocateArray(*table, nDims, "ignore");
    std::fill_n(table->ptr, nDims, 0);
  }
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
  const std::ptrdiff_t fromBytes =
      std::ptrdiff_t{pass1->getInput()->getBlock().getNumElements()} *
      static_cast<std::ptrdiff_t>(storedBytes<UT>(pass1->getInput()->getBlock().getStored()));
  const std::ptrdiff_t toBytes = std::ptrdiff_t{pass2->getY().getBlock().getNumElements()} *
                                 static_cast<std::ptrdiff_t>(storedBytes<YT>(pass2->getY().getBlock().getStored()));
  const std::less<const char*> isBefore;
  return isBefore(from, to + toBytes) && isBefore(to, from + fromBytes);
}

/// Whether both passes run in one walk.
template <class HT, class UT, class YT, class AllocT>
bool ConvCorrSeparable<HT, UT, YT, AllocT>::runsFused() const {
  if constexpr (isPlain) {
    const bool hasInput = std::all_of(uDims.ptr, uDims.ptr + nDims, [](int extent) { return extent > 0; });
    return canFuse && hasInput && pass1->getIsBuilt() && walk.canRun() && filtersAreLines() && !arraysOverlap();
  }
  return false;
}

template <class HT, class UT, class YT, class AllocT>
void ConvCorrSeparable<HT, UT, YT, AllocT>::runFused(const PositionBox& band) {
  if constexpr (isPlain) {
    const auto& from = pass1->getInput()->getBlock();
    const auto& to = pass2->getY().getBlock();
    const int* const strides = to.getStrides().ptr;
    int first[2], count[2];
    std::ptrdiff_t offset = 0;
    for (int d = 0; d < 2; ++d) {
      int end = outLoc.ptr[d] + outDims.ptr[d];
      first[d] = outLoc.ptr[d];
      if (band.exists()) {
        const int bandFirst = band.loc[d] - midLoc.ptr[d];
        first[d] = std::max(first[d], bandFirst);
        end = std::min(end, bandFirst + band.dims[d]);
      }
      count[d] = end - first[d];
      if (count[d] < 1) return;
      offset += std::ptrdiff_t{strides[d]} * (first[d] - outLoc.ptr[d]);
    }
    const SeparableGeometry geometry{{count[0], count[1]},
                                     {first[0] + midLoc.ptr[0] - hCentre.ptr[0], first[1] - h2Centre.ptr[1]},
                                     hDims.ptr[0],
                                     h2Dims.ptr[1]};
    // Elements of the output can have another size in memory than YT.
    auto* const target =
        reinterpret_cast<std::byte*>(y.ptr) + offset * static_cast<std::ptrdiff_t>(storedBytes<YT>(to.getStored()));
    walk.run({u.ptr, uDims.ptr, from.getStrides().ptr, 2, padType, pass1->getPadValue().ptr, from.getStored()},
             pass2->getPadValue().ptr, h.ptr, h2.ptr, isReversed, geometry,
             {reinterpret_cast<YT*>(target), strides, to.getStored(), &to.countClipped()});
  }
}

/// Whether the first pass would take its values from an input that has none, and so leave the intermediate as it is.
template <class HT, class UT, class YT, class AllocT>
bool ConvCorrSeparable<HT, UT, YT, AllocT>::readsNothing() const {
  return padType != PadTypeConstant && std::any_of(uDims.ptr, uDims.ptr + nDims, [](int extent) { return extent < 1; });
}

template <class HT, class UT, class YT, class AllocT>
void ConvCorrSeparable<HT, UT, YT, AllocT>::beginRun() {
  isRunning = intermediateFits() && !readsNothing();
  if (!isRunning) return;
  pass1->beginRun();
  pass2->beginRun();
  pass1->getPhaseBox(0, midLoc.ptr, midDims.ptr);
  for (int d = 0; d < nDims && region.exists(); ++d) regionLoc.ptr[d] = region.loc[d] - midLoc.ptr[d];
  pass2->getPhaseBox(0, outLoc.ptr, outDims.ptr);
  isFused = runsFused();
}

/// The rows of the intermediate from the first to the last that the outputs depend on. Rows beyond its edges stand for
/// others, which can lie far away, or for the pad value.
template <class HT, class UT, class YT, class AllocT>
void ConvCorrSeparable<HT, UT, YT, AllocT>::computeNeededRows(int& first, int& count) const {
  const int rows = midDims.ptr[1], begin = outLoc.ptr[1] - h2Centre.ptr[1];
  const int end = begin + outDims.ptr[1] + h2Dims.ptr[1] - 1;
  int low = std::clamp(begin, 0, rows), high = std::clamp(end, low, rows);
  const auto take = [&](int from, int to) {
    for (int i = from; i < to && padType != PadTypeConstant; ++i) {
      const int row = redirectedInto(rows, padType, i);
      low = low == high ? row : std::min(low, row);
      high = std::max(high, row + 1);
    }
  };
  take(begin, std::min(0, end));
  take(std::max(rows, begin), end);
  first = low;
  count = high - low;
}

template <class HT, class UT, class YT, class AllocT>
void ConvCorrSeparable<HT, UT, YT, AllocT>::getPhaseBox(int phase, int* loc, int* dims) {
  if (!isRunning) {
    std::fill_n(loc, nDims, 0);
    std::fill_n(dims, nDims, 0);
    return;
  }
  const bool isFirst = phase == 0 && !isFused;
  for (int d = 0; d < nDims; ++d) {
    loc[d] = isFirst ? midLoc.ptr[d] : outLoc.ptr[d] + midLoc.ptr[d];
    dims[d] = isFirst ? midDims.ptr[d] : outDims.ptr[d];
  }
  if (!isFirst || nDims < 2 || !pass1->getIsBuilt() || !filtersAreLines()) return;
  loc[0] = outLoc.ptr[0] + midLoc.ptr[0];
  dims[0] = outDims.ptr[0];
  computeNeededRows(loc[1], dims[1]);
  loc[1] += midLoc.ptr[1];
}

template <class HT, class UT, class YT, class AllocT>
void ConvCorrSeparable<HT, UT, YT, AllocT>::runBand(int phase, const PositionBox& band) {
  if (!isRunning) return;
  if (isFused) return runFused(band);
  if (phase == 0) return pass1->runBand(0, band);
  for (int d = 0; d < nDims && band.exists(); ++d) bandLoc.ptr[d] = band.loc[d] - midLoc.ptr[d];
  pass2->runBand(0, {band.exists() ? bandLoc.ptr : nullptr, band.dims});
}

template <class HT, class UT, class YT, class AllocT>
void ConvCorrSeparable<HT, UT, YT, AllocT>::invoke() {
  beginRun();
  if (isFused || !region.exists()) {
    for (int phase = 0; phase < getPhaseCount(); ++phase) runBand(phase, {});
    return;
  }
  CleverPtr<int> loc, dims;
  for (CleverPtr<int>* table : {&loc, &dims}) allocator->allocateArray(*table, nDims, "ignore");
  getPhaseBox(0, loc.ptr, dims.ptr);
  runBand(0, {loc.ptr, dims.ptr});
  runBand(1, {});
}

template <class HT, class UT, class YT, class AllocT>
void ConvCorrSeparable<HT, UT, YT, AllocT>::setRegion(const PositionBox& newRegion) {
  region = newRegion;
  pass2->setRegion({region.exists() ? regionLoc.ptr : nullptr, region.dims});
}

template <class HT, class UT, class YT, class AllocT>
void ConvCorrSeparable<HT, UT, YT, AllocT>::shareIntermediate(AnyCorrelation& other) {
  CleverPtr<YT>& shared = static_cast<ConvCorrSeparable&>(other).midData;
  if constexpr (isPlain) {
    midData.release();
    midData.ptr = shared.ptr;
  } else {
    midData.ptr->setValPtr(shared.ptr->data());
  }
}

template <class HT, class UT, class YT, class AllocT>
void ConvCorrSeparable<HT, UT, YT, AllocT>::assignPadValue(const void* value, bool isComplex) {
  if (!pass1->getIsBuilt()) return;
  pass1->assignPadValue(value, isComplex);
  pass1->computePadOutput();
  pass2->setPadValue(pass1->getPadOutput());
}

template <class HT, class UT, class YT, class AllocT>
void ConvCorrSeparable<HT, UT, YT, AllocT>::setStrides(const int* input, const int* output) {
  pass1->setStrides(input, nullptr);
  pass2->setStrides(nullptr, output);
}

template <class HT, class UT, class YT, class AllocT>
void ConvCorrSeparable<HT, UT, YT, AllocT>::setStored(Stored input, Stored output) {
  pass1->setStored(input, Stored::asComputed);
  pass2->setStored(Stored::asComputed, output);
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
