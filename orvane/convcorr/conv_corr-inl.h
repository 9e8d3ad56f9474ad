#pragma once

#include "orvane/algorithm/conv_corr_algorithm.h"
#include "orvane/convcorr/conv_corr.h"
#include "orvane/core/visit_enumerator.h"
#include "orvane/exec/window_processor-inl.h"
#include "orvane/input/pad_extended_input.h"

namespace BP {

template <class HT, class UT, class YT, class AllocT>
ConvCorr<HT, UT, YT, AllocT>::ConvCorr(AllocT* alloc, int rank, CleverPtr<int>& filterDims, bool isHgtU,
                                       CleverPtr<int>& inputDims, OutputModeEnum outMode,
                                       AlgorithmModeEnum algorithmMode, NormEnum norm, PadTypeEnum padType,
                                       CleverPtr<int>& filterCentre, CleverPtr<HT>& h, CleverPtr<UT>& u,
                                       CleverPtr<YT>& result, const Region* regionOfInterest)
    : Base(alloc, rank, filterDims, inputDims, outMode, filterCentre, u, result, regionOfInterest),
      filter(this->template makeWindow<FilterBlock>(h)) {
  build(algorithmMode, norm, padType);
  this->makePlan(isHgtU);
}

/// Makes input and algorithm, or neither for a pad type or an algorithm mode out of range.
template <class HT, class UT, class YT, class AllocT>
void ConvCorr<HT, UT, YT, AllocT>::build(AlgorithmModeEnum algorithmMode, NormEnum norm, PadTypeEnum padType) {
  visitPadType(padType, [&](auto pad) {
    visitEnumerator<AlgorithmModeConvolution, AlgorithmModeCorrelation>(algorithmMode, [&](auto mode) {
      visitEnumerator<0, 1>(norm != NormNone ? 1 : 0, [&](auto normalise) {
        using InputT = PadExtendedInput<UT, YT, AllocT, pad()>;
        constexpr int flipFilter = mode() == AlgorithmModeConvolution ? 1 : 0;
        using Algo = ConvCorrAlgorithm<AllocT, FilterBlock, InputT, YT, HT, UT, flipFilter, normalise()>;
        this->template makeAlgorithm<Algo>(filter, this->template makeInput<InputT>());
      });
    });
  });
}

template <class HT, class UT, class YT, class AllocT>
void ConvCorr<HT, UT, YT, AllocT>::computePadOutput() {
  if (!this->input) return;
  HT* const h = filter->getData().ptr;
  YT& padOutput = elementAt(this->input->getPadOutput().ptr, 0);
  int count = 1;
  for (int d = 0; d < this->nDims; ++d) count *= this->hDims.ptr[d];
  if (count < 1) return putZero(padOutput);
  assign(padOutput, elementAt(h, 0));
  for (int i = 1; i < count; ++i) padOutput += elementAt(h, i);
  multiply(padOutput, padOutput, elementAt(this->input->padValues().ptr, 0));
}

template <class HT, class UT, class YT, class AllocT>
const CleverPtr<YT>& ConvCorr<HT, UT, YT, AllocT>::getPadOutput() {
  return this->input->getPadOutput();
}

template <class HT, class UT, class YT, class AllocT>
void ConvCorr<HT, UT, YT, AllocT>::setPadValue(const CleverPtr<UT>& value) {
  if (this->input) this->input->setPadValue(value);
}

}  // namespace BP
