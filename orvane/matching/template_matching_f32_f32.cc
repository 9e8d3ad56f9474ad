#include "orvane/matching/template_matching-inl.h"
#include "orvane/matching/template_matching_tolk-inl.h"

namespace BP {

template class TemplateMatching<float, float, float, AllocatorTolk>;
template class TemplateMatchingTolk<float, float, float>;

}  // namespace BP
