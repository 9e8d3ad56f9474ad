#include <complex>

#include "orvane/matching/template_matching-inl.h"
#include "orvane/matching/template_matching_tolk-inl.h"

namespace BP {

template class TemplateMatching<std::complex<float>, float, std::complex<float>, AllocatorTolk>;
template class TemplateMatchingTolk<std::complex<float>, float, std::complex<float>>;

}  // namespace BP
