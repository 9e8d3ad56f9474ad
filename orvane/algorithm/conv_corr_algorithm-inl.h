#pragma once

// Bodies of conv_corr_algorithm.h, which includes this file.

#include <algorithm>
#include <cstdint>

namespace BP {

template <class AllocT, class BlockT, class InputT, class YT, class HT, class UT, int flipFilter, int normalise>
void ConvCorrAlgorithm<AllocT, BlockT, InputT, YT, HT, UT, flipFilter, normalise>::setup(setupModeT mode) {
  Base::setup(mode);
  if constexpr (normalise != 0) {
    if (mode == setupStart || mode == setupInvoke) computeFilterNorm();
  }
  if constexpr (std::is_same_v<Lanes, FixedSums>) {
    if (mode == setupResize || mode == setupStart) laneSums.resize(*this->filter);
    if (mode == setupStart || mode == setupInvoke) {
      laneSums.begin(*this->input->getBlock().getData().ptr, *this->filter->getData().ptr, *accumulator.ptr,
                     flipFilter != 0);
    }
  } else if constexpr (!std::is_same_v<Lanes, NoLanes>) {
    if (mode == setupResize || mode == setupStart)
      laneSums.resize(*this->filter, std::min(this->filter->getNumDims(), 2));
    if constexpr (normalise != 0) {
      laneSums.begin(this->filter->getData().ptr, flipFilter != 0, filterNorm.ptr);
    } else {
      laneSums.begin(this->filter->getData().ptr, flipFilter != 0, nullptr);
    }
  }
  if constexpr (usesVendor && flipFilter == 0) {
    if (mode == setupAttachWork && loader.getAllLoaded()) makeReversedFilter();
  }
  if constexpr (std::is_same_v<YT, Fixpt>) {
    if (mode != setupFinish) return;
    this->allocator->mergeFixptLog(accumulator.ptr, true);
    if constexpr (normalise != 0) this->allocator->mergeFixptLog(filterNorm.ptr, true);
  }
}

template <class AllocT, class BlockT, class InputT, class YT, class HT, class UT, int flipFilter, int normalise>
template <class TapsT>
void ConvCorrAlgorithm<AllocT, BlockT, InputT, YT, HT, UT, flipFilter, normalise>::accumulate(TapsT taps, Out& y1) {
  YT* const result = y1.getBlock().getData().ptr;
  if constexpr (normalise != 0) {
    TemporaryElement<YT, AllocT> energy(*this->allocator, "accumulator");
    {
      RunningElement<YT> running(energy.getStore());
      putZero(running.get());
      sumProducts(taps, [&] { addEnergy(running.get(), taps.read()); });
    }
    assign(elementAt(result, 0), elementAt(accumulator.ptr, 0));
    normaliseSample(elementAt(result, 0), energy.get());
  } else {
    if constexpr (std::is_same_v<UT, Fixpt> && std::is_same_v<TapsT, InsideTaps<UT>>) {
      sumFixedWindow(taps);
    } else {
      sumProducts(taps, [] {});
    }
    assign(elementAt(result, 0), elementAt(accumulator.ptr, 0));
  }
}

/// Sums into the accumulator; `beforeProduct` runs once per tap, ahead of its product.
template <class AllocT, class BlockT, class InputT, class YT, class HT, class UT, int flipFilter, int normalise>
template <class TapsT, class ActionT>
void ConvCorrAlgorithm<AllocT, BlockT, InputT, YT, HT, UT, flipFilter, normalise>::sumProducts(
    TapsT& taps, ActionT&& beforeProduct) {
  HT* const h = this->filter->getData().ptr;
  const int* const end = this->filter->getEnd().ptr;
  const int last = (end[0] + 1) * (end[1] + 1) - 1;
  RunningElement<YT> sum(accumulator.ptr);
  putZero(sum.get());
  forEachTap(taps, *this->filter, [&](int n) {
    beforeProduct();
    addProduct(sum.get(), taps.read(), elementAt(h, flipFilter != 0 ? last - n : n));
  });
}

/// The same for a fixed-point window wholly inside, which is one operation of the value library.
template <class AllocT, class BlockT, class InputT, class YT, class HT, class UT, int flipFilter, int normalise>
void ConvCorrAlgorithm<AllocT, BlockT, InputT, YT, HT, UT, flipFilter, normalise>::sumFixedWindow(
    const InsideTaps<UT>& taps) {
  const int* const end = this->filter->getEnd().ptr;
  const int width = end[0] + 1, height = end[1] + 1;
  HT& h = *this->filter->getData().ptr;
  YT& sum = elementAt(accumulator.ptr, 0);
  putZero(sum);
  const KarnDSPFixpt::FixptWindow backwards{h, width * height - 1, -1, -width}, forwards{h, 0, 1, width};
  sum.addProducts(taps.getWindow(), flipFilter != 0 ? backwards : forwards, width, height);
}

template <class AllocT, class BlockT, class InputT, class YT, class HT, class UT, int flipFilter, int normalise>
void ConvCorrAlgorithm<AllocT, BlockT, InputT, YT, HT, UT, flipFilter, normalise>::addProduct(YT& sum, UT& tap, HT& h) {
  if constexpr (isBoolean) {
    YT& both = elementAt(product.ptr, 0);
    both = static_cast<int>(tap && h);
    add(sum, both);
  } else {
    multiplyAdd(sum, tap, h);
  }
}

/// sample := sample / (norm of the filter * norm of the window); an energy of NaN gives NaN.
template <class AllocT, class BlockT, class InputT, class YT, class HT, class UT, int flipFilter, int normalise>
void ConvCorrAlgorithm<AllocT, BlockT, InputT, YT, HT, UT, flipFilter, normalise>::normaliseSample(YT& sample,
                                                                                                   YT& energy) {
  TemporaryElement<YT, AllocT> root(*this->allocator, "sqrt");
  divideByNorms(sample, energy, root.get(), elementAt(filterNorm.ptr, 0));
}

template <class AllocT, class BlockT, class InputT, class YT, class HT, class UT, int flipFilter, int normalise>
void ConvCorrAlgorithm<AllocT, BlockT, InputT, YT, HT, UT, flipFilter, normalise>::computeFilterNorm() {
  if constexpr (normalise != 0) {
    TemporaryElement<YT, AllocT> energy(*this->allocator, "accumulator");
    putZero(energy.get());
    HT* const h = this->filter->getData().ptr;
    for (int i = 0; i < this->filter->getNumElements(); ++i) addEnergy(energy.get(), elementAt(h, i));
    setRoot(elementAt(filterNorm.ptr, 0), energy.get());
  }
}

template <class AllocT, class BlockT, class InputT, class YT, class HT, class UT, int flipFilter, int normalise>
void ConvCorrAlgorithm<AllocT, BlockT, InputT, YT, HT, UT, flipFilter, normalise>::makeReversedFilter() {
  this->filter->computeStrides();
  reversedFilter.release();
  reversedCapacity = std::max(this->filter->getNumElements(), 0);
  this->allocator->allocateArray(reversedFilter, reversedCapacity, "filter");
}

/// The filter's first plane in the order that the vendor's functions need, which flip it; null if it is empty or has
/// outgrown its reversed copy.
template <class AllocT, class BlockT, class InputT, class YT, class HT, class UT, int flipFilter, int normalise>
const HT* ConvCorrAlgorithm<AllocT, BlockT, InputT, YT, HT, UT, flipFilter, normalise>::vendorKernel() {
  const HT* const h = this->filter->getData().ptr;
  const std::int64_t count = elementCount(2, this->filter->getDims().ptr);
  if (count < 1 || (flipFilter == 0 && count > reversedCapacity)) return nullptr;
  if constexpr (flipFilter != 0) return h;
  std::reverse_copy(h, h + count, reversedFilter.ptr);
  return reversedFilter.ptr;
}

template <class AllocT, class BlockT, class InputT, class YT, class HT, class UT, int flipFilter, int normalise>
bool ConvCorrAlgorithm<AllocT, BlockT, InputT, YT, HT, UT, flipFilter, normalise>::sendToVendor(
    const InsideSector& sector, Out& result) {
  const auto& u = this->input->getBlock();
  const auto& y = result.getBlock();
  if (u.getStored() != Stored::asComputed || y.getStored() != Stored::asComputed) return false;
  const int uPitch = u.getStrides().ptr[1], yPitch = y.getStrides().ptr[1];
  if (std::max(uPitch, yPitch) > ZdFilterLoader::maxPitch) return false;
  const int *const s = sector.getStart().ptr, *const e = sector.getEnd().ptr;
  const int *const hLoc = this->filter->getLoc().ptr, *const hDims = this->filter->getDims().ptr;
  int hCentre[2], offset[2];
  for (int d = 0; d < 2; ++d) {
    hCentre[d] = -hLoc[d];
    if (hCentre[d] < 0 || hCentre[d] >= hDims[d]) return false;
    offset[d] = u.getOrigin().ptr[d] - y.getOrigin().ptr[d];
  }
  const HT* const kernel = vendorKernel();
  if (kernel == nullptr) return false;
  loader.filter(kernel, hDims, hCentre, u.getData().ptr + (s[0] + uPitch * s[1]), uPitch,
                y.getData().ptr + (s[0] + offset[0] + yPitch * (s[1] + offset[1])), yPitch,
                {e[0] - s[0] + 1, e[1] - s[1] + 1});
  return true;
}

}  // namespace BP
