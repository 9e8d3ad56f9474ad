#include "orvane/convcorr/conv_corr-inl.h"
#include "orvane/convcorr/conv_corr_separable-inl.h"
#include "orvane/convcorr/conv_corr_tolk-inl.h"

namespace BP {

template class ConvCorr<KarnDSPFixpt::Fixpt, KarnDSPFixpt::Fixpt, KarnDSPFixpt::Fixpt, AllocatorTolk>;
template class ConvCorrSeparable<KarnDSPFixpt::Fixpt, KarnDSPFixpt::Fixpt, KarnDSPFixpt::Fixpt, AllocatorTolk>;
template class ConvCorrTolk<KarnDSPFixpt::Fixpt, KarnDSPFixpt::Fixpt, KarnDSPFixpt::Fixpt>;

}  // namespace BP
