#include "orvane/matching/template_matching-inl.h"
#include "orvane/matching/template_matching_tolk-inl.h"

namespace BP {

template class TemplateMatching<bool, bool, KarnDSPFixpt::Fixpt, AllocatorTolk>;
template class TemplateMatchingTolk<bool, bool, KarnDSPFixpt::Fixpt>;

}  // namespace BP
