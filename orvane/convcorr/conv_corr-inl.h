#pragma once

#include "orvane/algorithm/conv_corr_algorithm.h"
#include "orvane/convcorr/conv_corr.h"
#include "orvane/core/visit_enumerator.h"
#include "orvane/exec/terminal_kernel.h"
#include "orvane/input/pad_extended_input.h"

namespace BP {

template <class HT, class UT, class YT, class AllocT>
ConvCorr<HT, UT, YT, AllocT>::ConvCorr(AllocT* alloc, int rank, CleverPtr<int>& filterDims, bool isHgtU,
                                       CleverPtr<int>& inputDims, OutputModeEnum outMode,
                                       AlgorithmModeEnum algorithmMode, NormEnum norm, PadTypeEnum padType,
                                       CleverPtr<int>& filterCentre, CleverPtr<HT>& h, CleverPtr<UT>& u,
                                       CleverPtr<YT>& result, const Region* regionOfInterest)
    : allocator(alloc),
      outputMode(outMode),
      nDims(rank),
      tables(alloc, rank),
      hDims(filterDims),
      hCentre(filterCentre),
      uDims(inputDims),
      uData(u),
      yData(result) {
  allocator->allocateArray(y1Data, 1, "accumulator", "y1Data");
  rosRegion = std::make_unique<RestrictedRegion>(nDims, tables.rosDims, tables.rosLoc);
  allRegion = std::make_unique<UnrestrictedRegion>();
  const Region& second = regionOfInterest != nullptr ? *regionOfInterest : *allRegion;
  scope = std::make_unique<Scope>(*rosRegion, second, reachOf(outputMode));
  y = std::make_unique<Out>(allocator, nDims, tables.yDims, tables.yOrigin, tables.yLoc, yData);
  y1 = std::make_unique<Out>(allocator, nDims, tables.y1Dims, tables.y1Origin, tables.y1Loc, y1Data);
  filter = std::make_unique<FilterBlock>(allocator, nDims, hDims, tables.hOrigin, tables.hLoc, tables.hStart,
                                         tables.hEnd, h);
  build(algorithmMode, norm, padType);
  plan = std::make_unique<MovingROIPlan<UT, YT, AllocT>>(allocator, nDims, filter.get(), isHgtU, input.get(), y.get(),
                                                         scope.get());
}

/// Chooses the classes: none for a pad type or an algorithm mode out of range.
template <class HT, class UT, class YT, class AllocT>
void ConvCorr<HT, UT, YT, AllocT>::build(AlgorithmModeEnum algorithmMode, NormEnum norm, PadTypeEnum padType) {
  visitEnumerator<PadTypeConstant, PadTypeReplicate, PadTypeSymmetric, PadTypeCircular>(padType, [&](auto pad) {
    visitEnumerator<AlgorithmModeConvolution, AlgorithmModeCorrelation>(algorithmMode, [&](auto mode) {
      visitEnumerator<0, 1>(norm != NormNone ? 1 : 0, [&](auto normalise) {
        buildFor<pad(), mode() == AlgorithmModeConvolution ? 1 : 0, normalise()>();
      });
    });
  });
}

template <class HT, class UT, class YT, class AllocT>
template <int padType, int flipFilter, int normalise>
void ConvCorr<HT, UT, YT, AllocT>::buildFor() {
  using InputT = PadExtendedInput<UT, YT, AllocT, padType>;
  using Algo = ConvCorrAlgorithm<AllocT, FilterBlock, InputT, YT, HT, UT, flipFilter, normalise>;
  auto paddedInput = std::make_unique<InputT>(allocator, nDims, uDims, tables.uOrigin, tables.uLoc, uData);
  auto sums = std::make_unique<Algo>(allocator, filter.get(), paddedInput.get());
  kernel = std::make_unique<TerminalKernel<Out, Algo, AllocT>>(allocator, y1.get(), sums.get());
  algorithm = std::move(sums);
  input = std::move(paddedInput);
}

template <class HT, class UT, class YT, class AllocT>
ConvCorr<HT, UT, YT, AllocT>::~ConvCorr() {
  plan.reset();
  kernel.reset();
  algorithm.reset();
  filter.reset();
  y1.reset();
  y.reset();
  scope.reset();
  allRegion.reset();
  rosRegion.reset();
  input.reset();
}

template <class HT, class UT, class YT, class AllocT>
void ConvCorr<HT, UT, YT, AllocT>::setup(setupModeT mode) {
  if (mode == setupResize || mode == setupStart) initializeParameters();
  if (kernel) kernel->setup(mode);
  plan->setup(mode);
}

template <class HT, class UT, class YT, class AllocT>
void ConvCorr<HT, UT, YT, AllocT>::initializeParameters() {
  tables.place(nDims, hCentre);
  tables.computeHStart(nDims);
  tables.computeHEnd(nDims, hDims);
  computeROS();
}

template <class HT, class UT, class YT, class AllocT>
void ConvCorr<HT, UT, YT, AllocT>::computeROS() {
  tables.computeROS(outputMode, nDims, hDims, uDims);
}

template <class HT, class UT, class YT, class AllocT>
void ConvCorr<HT, UT, YT, AllocT>::invoke() {
  plan->setOutput(y.get());
  plan->setScope(scope.get());
  setup(setupInvoke);
  plan->forEachSector(this);
}

template <class HT, class UT, class YT, class AllocT>
void ConvCorr<HT, UT, YT, AllocT>::runSector(InsideSector& sector) {
  kernel->runInside(sector, plan->getOutput());
}

template <class HT, class UT, class YT, class AllocT>
void ConvCorr<HT, UT, YT, AllocT>::runSector(BoundarySector& sector) {
  kernel->runBoundary(sector, plan->getOutput());
}

template <class HT, class UT, class YT, class AllocT>
void ConvCorr<HT, UT, YT, AllocT>::runSector(OutsideSector& sector) {
  kernel->runOutside(sector, plan->getOutput());
}

template <class HT, class UT, class YT, class AllocT>
void ConvCorr<HT, UT, YT, AllocT>::assignPadValue(const void* value, bool isComplex) {
  if (input) assignFrom(elementAt(input->padValues().ptr, 0), value, isComplex);
}

template <class HT, class UT, class YT, class AllocT>
void ConvCorr<HT, UT, YT, AllocT>::computePadOutput() {
  if (!input) return;
  HT* const h = filter->getData().ptr;
  YT& padOutput = elementAt(input->getPadOutput().ptr, 0);
  int count = 1;
  for (int d = 0; d < nDims; ++d) count *= hDims.ptr[d];
  if (count < 1) return putZero(padOutput);
  assign(padOutput, elementAt(h, 0));
  for (int i = 1; i < count; ++i) padOutput += elementAt(h, i);
  multiply(padOutput, padOutput, elementAt(input->padValues().ptr, 0));
}

template <class HT, class UT, class YT, class AllocT>
const CleverPtr<YT>& ConvCorr<HT, UT, YT, AllocT>::getPadOutput() {
  return input->getPadOutput();
}

template <class HT, class UT, class YT, class AllocT>
void ConvCorr<HT, UT, YT, AllocT>::setPadValue(const CleverPtr<UT>& value) {
  if (input) input->setPadValue(value);
}

template <class HT, class UT, class YT, class AllocT>
AnyPlan& ConvCorr<HT, UT, YT, AllocT>::getPlan() const {
  return *plan;
}

}  // namespace BP
