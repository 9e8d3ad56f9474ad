#include <complex>

#include "orvane/matching/template_matching-inl.h"
#include "orvane/matching/template_matching_tolk-inl.h"

namespace BP {

template class TemplateMatching<std::complex<double>, double, std::complex<double>, AllocatorTolk>;
template class TemplateMatchingTolk<std::complex<double>, double, std::complex<double>>;

}  // namespace BP
