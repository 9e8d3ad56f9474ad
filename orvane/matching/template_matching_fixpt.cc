#include "orvane/matching/template_matching-inl.h"
#include "orvane/matching/template_matching_tolk-inl.h"

namespace BP {

template class TemplateMatching<KarnDSPFixpt::Fixpt, KarnDSPFixpt::Fixpt, KarnDSPFixpt::Fixpt, AllocatorTolk>;
template class TemplateMatchingTolk<KarnDSPFixpt::Fixpt, KarnDSPFixpt::Fixpt, KarnDSPFixpt::Fixpt>;

}  // namespace BP
