#include "orvane/convcorr/conv_corr-inl.h"
#include "orvane/convcorr/conv_corr_separable-inl.h"
#include "orvane/convcorr/conv_corr_tolk-inl.h"

namespace BP {

template class ConvCorr<double, double, double, AllocatorTolk>;
template class ConvCorrSeparable<double, double, double, AllocatorTolk>;
template class ConvCorrTolk<double, double, double>;

}  // namespace BP
