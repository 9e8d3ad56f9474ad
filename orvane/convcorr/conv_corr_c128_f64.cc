#include <complex>

#include "orvane/convcorr/conv_corr-inl.h"
#include "orvane/convcorr/conv_corr_separable-inl.h"
#include "orvane/convcorr/conv_corr_tolk-inl.h"

namespace BP {

template class ConvCorr<std::complex<double>, double, std::complex<double>, AllocatorTolk>;
template class ConvCorrSeparable<std::complex<double>, double, std::complex<double>, AllocatorTolk>;
template class ConvCorrTolk<std::complex<double>, double, std::complex<double>>;

}  // namespace BP
