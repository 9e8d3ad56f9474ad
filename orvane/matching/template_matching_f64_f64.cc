#include "orvane/matching/template_matching-inl.h"
#include "orvane/matching/template_matching_tolk-inl.h"

namespace BP {

template class TemplateMatching<double, double, double, AllocatorTolk>;
template class TemplateMatchingTolk<double, double, double>;

}  // namespace BP
