#pragma once

// Bodies of conv_corr_algorithm.h, which includes this file.

namespace BP {

template <class AllocT, class BlockT, class InputT, class YT, class HT, class UT, int flipFilter, int normalise>
void ConvCorrAlgorithm<AllocT, BlockT, InputT, YT, HT, UT, flipFilter, normalise>::setup(setupModeT mode) {
  Base::setup(mode);
  if constexpr (normalise != 0) {
    if (mode == setupStart || mode == setupInvoke) computeFilterNorm();
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
    sumProducts(taps, [] {});
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

/// sample := sample / (norm of the filter * norm of the window); an energy that is no number gives no number.
template <class AllocT, class BlockT, class InputT, class YT, class HT, class UT, int flipFilter, int normalise>
void ConvCorrAlgorithm<AllocT, BlockT, InputT, YT, HT, UT, flipFilter, normalise>::normaliseSample(YT& sample,
                                                                                                   YT& energy) {
  TemporaryElement<YT, AllocT> root(*this->allocator, "sqrt");
  setRoot(root.get(), energy);
  multiply(energy, root.get(), elementAt(filterNorm.ptr, 0));
  if (isZero(energy)) {
    putZero(sample);
  } else {
    divideBy(sample, energy);
  }
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

}  // namespace BP
