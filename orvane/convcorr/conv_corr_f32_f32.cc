#include "orvane/convcorr/conv_corr-inl.h"
#include "orvane/convcorr/conv_corr_separable-inl.h"
#include "orvane/convcorr/conv_corr_tolk-inl.h"

namespace BP {

template class ConvCorr<float, float, float, AllocatorTolk>;
template class ConvCorrSeparable<float, float, float, AllocatorTolk>;
template class ConvCorrTolk<float, float, float>;

}  // namespace BP
