#include "orvane/convcorr/conv_corr_tolk.h"

#include <algorithm>

#include "orvane/convcorr/conv_corr.h"

namespace BP {

namespace {

/// Copies the host's extents and fills up with 1.
void fillDims(CleverPtr<int>& dims, int nDims, const CleverPtr<int>& hostDims, int hostNumDims) {
  for (int d = 0; d < nDims; ++d) dims.ptr[d] = d < hostNumDims ? hostDims.ptr[d] : 1;
}

}  // namespace

template <class HT, class UT, class YT>
ConvCorrTolk<HT, UT, YT>::ConvCorrTolk(brekk::BrekkAdaptorTolk* adaptor, int filterNumDims, int* filterDims,
                                       int inputNumDims, int* inputDims, PadTypeEnum /*padType*/,
                                       OutputModeEnum /*outputMode*/, AlgorithmModeEnum algorithmMode,
                                       NormEnum /*norm*/, bool /*isVarSize*/)
    : BlockProcTolkCache(adaptor),
      nDims(std::max(filterNumDims, inputNumDims)),
      hNumDims(filterNumDims),
      uNumDims(inputNumDims) {
  if (nDims == 1) nDims = 2;
  hostHDims.ptr = filterDims;
  hostUDims.ptr = inputDims;
  for (CleverPtr<int>* table : {&hDims, &uDims, &hCentre}) allocator->allocateArray(*table, nDims, "ignore");
  processor = std::make_unique<ConvCorr<HT, UT, YT, AllocatorTolk>>(allocator.get(), nDims, hDims, uDims, algorithmMode,
                                                                    hCentre, h, u, y);
}

template <class HT, class UT, class YT>
ConvCorrTolk<HT, UT, YT>::~ConvCorrTolk() {
  processor->setup(setupFinish);
  processor->setup(setupFinish);
}

template <class HT, class UT, class YT>
void ConvCorrTolk<HT, UT, YT>::setup(HT* filter, UT* input, YT* output, const void* /*padValue*/,
                                     bool /*padIsComplex*/) {
  h.ptr = filter;
  u.ptr = input;
  y.ptr = output;
  allocator->refreshWorkVectors();
  fillAllDims();
  computeCentre();
  processor->setup(setupStart);
}

template <class HT, class UT, class YT>
void ConvCorrTolk<HT, UT, YT>::fillAllDims() {
  fillDims(hDims, nDims, hostHDims, hNumDims);
  fillDims(uDims, nDims, hostUDims, uNumDims);
}

template <class HT, class UT, class YT>
void ConvCorrTolk<HT, UT, YT>::computeCentre() {
  for (int d = 0; d < nDims; ++d) {
    const int extent = hDims.ptr[d];
    hCentre.ptr[d] = (extent >> 1) - ((extent & 1) == 0 ? 1 : 0);
  }
}

template <class HT, class UT, class YT>
void ConvCorrTolk<HT, UT, YT>::computeOutputs() {
  processor->invoke();
}

template class ConvCorrTolk<double, double, double>;

}  // namespace BP
