#include <complex>

#include "orvane/matching/template_matching-inl.h"
#include "orvane/matching/template_matching_tolk-inl.h"

namespace BP {

template class TemplateMatching<double, std::complex<double>, std::complex<double>, AllocatorTolk>;
template class TemplateMatchingTolk<double, std::complex<double>, std::complex<double>>;

}  // namespace BP
