#include <complex>

#include "orvane/convcorr/conv_corr-inl.h"
#include "orvane/convcorr/conv_corr_separable-inl.h"
#include "orvane/convcorr/conv_corr_tolk-inl.h"

namespace BP {

template class ConvCorr<std::complex<float>, std::complex<float>, std::complex<float>, AllocatorTolk>;
template class ConvCorrSeparable<std::complex<float>, std::complex<float>, std::complex<float>, AllocatorTolk>;
template class ConvCorrTolk<std::complex<float>, std::complex<float>, std::complex<float>>;

}  // namespace BP
