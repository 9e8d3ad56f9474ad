#include "orvane/convcorr/conv_corr.h"

#include <cfloat>

static_assert(FLT_EVAL_METHOD == 0, "sums must round to their own type after every operation");

namespace BP {

template <class HT, class UT, class YT, class AllocT>
ConvCorr<HT, UT, YT, AllocT>::ConvCorr(AllocT* allocator, int numDims, CleverPtr<int>& filterDims,
                                       CleverPtr<int>& inputDims, AlgorithmModeEnum mode, CleverPtr<int>& filterCentre,
                                       CleverPtr<HT>& h, CleverPtr<UT>& u, CleverPtr<YT>& y)
    : algorithmMode(mode),
      nDims(numDims),
      hDims(filterDims),
      hCentre(filterCentre),
      uDims(inputDims),
      uData(u),
      yData(y),
      hData(h) {
  for (CleverPtr<int>* table : {&rosLoc, &rosDims, &hLoc, &yDims}) allocator->allocateArray(*table, nDims, "ignore");
}

template <class HT, class UT, class YT, class AllocT>
ConvCorr<HT, UT, YT, AllocT>::~ConvCorr() = default;

template <class HT, class UT, class YT, class AllocT>
void ConvCorr<HT, UT, YT, AllocT>::setup(setupModeT mode) {
  if (mode == setupStart) initializeParameters();
}

template <class HT, class UT, class YT, class AllocT>
void ConvCorr<HT, UT, YT, AllocT>::initializeParameters() {
  for (int d = 0; d < nDims; ++d) hLoc.ptr[d] = -hCentre.ptr[d];
  computeROS();
}

template <class HT, class UT, class YT, class AllocT>
void ConvCorr<HT, UT, YT, AllocT>::computeROS() {
  for (int d = 0; d < nDims; ++d) {
    rosLoc.ptr[d] = -hLoc.ptr[d];
    rosDims.ptr[d] = uDims.ptr[d] - hDims.ptr[d] + 1;
    yDims.ptr[d] = rosDims.ptr[d];
  }
}

template <class HT, class UT, class YT, class AllocT>
void ConvCorr<HT, UT, YT, AllocT>::invoke() {
  for (int row = 0; row < yDims.ptr[1]; ++row) {
    for (int column = 0; column < yDims.ptr[0]; ++column) {
      yData.ptr[column + yDims.ptr[0] * row] = sumAt(uData.ptr + column + uDims.ptr[0] * row);
    }
  }
}

/// The sum of products under the window whose first element is `*window`.
template <class HT, class UT, class YT, class AllocT>
YT ConvCorr<HT, UT, YT, AllocT>::sumAt(const UT* window) const {
  const int width = hDims.ptr[0];
  const int height = hDims.ptr[1];
  const bool flipped = algorithmMode == AlgorithmModeConvolution;
  const int step = flipped ? -1 : 1;
  int f = flipped ? width * height - 1 : 0;
  YT sum = 0;
  for (int j = 0; j < height; ++j) {
    const UT* line = window + uDims.ptr[0] * j;
    for (int i = 0; i < width; ++i, f += step) sum = sum + line[i] * hData.ptr[f];
  }
  return sum;
}

template <class HT, class UT, class YT, class AllocT>
void ConvCorr<HT, UT, YT, AllocT>::assignPadValue(const void* /*value*/, bool /*isComplex*/) {}

template class ConvCorr<double, double, double, AllocatorTolk>;

}  // namespace BP
