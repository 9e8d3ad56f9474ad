#include "orvane/filters/template_matcher.h"

#include <algorithm>
#include <utility>

#include "orvane/filters/checks.h"
#include "orvane/filters/match_job.h"
#include "orvane/matching/template_matching_tolk.h"
#include "orvane/platform/karn_fixpt_3_make.h"

namespace BP::filters {

namespace detail {

/// Arrays of plain elements. The scores of booleans are counts. The front sees them as fixed-point values without
/// fraction, in the memory of the plain array.
template <class UT, class HT>
class PlainMatchElements {
 public:
  using ImageView = ArrayView<const UT>;
  using PatternView = ArrayView<const HT>;
  using Pattern = Array<HT>;
  using Scores = Array<MatchScore<UT, HT>>;
  using Result = Match<MatchScore<UT, HT>>;

  static constexpr bool isCounting = std::is_same_v<UT, bool>;
  using YT = std::conditional_t<isCounting, KarnDSPFixpt::Fixpt, MatchScore<UT, HT>>;
  using Front = TemplateMatchingTolk<HT, UT, YT>;

  PlainMatchElements(const PatternView& /*pattern*/, Metric /*metric*/) {}

  ReferenceHost& getHost() { return host; }
  std::int64_t maxElements() const { return maxIndex; }

  void checkImage(const ImageView& image, const Extents& extents) const { checkArray("image", image, extents); }
  Pattern copyOf(const PatternView& pattern, const Extents& extents) const {
    checkArray("template", pattern, extents);
    Pattern copy(extents);
    std::copy_n(pattern.data(), copy.size(), copy.data());
    return copy;
  }
  Scores makeScores(const Extents& extents) const { return Scores(extents); }
  MatchScore<UT, HT> scoreAt(const Scores& scores, int index) const { return scores[static_cast<std::size_t>(index)]; }

  template <class... Arguments>
  std::unique_ptr<Front> makeFront(Arguments... arguments) {
    if constexpr (isCounting) {
      return std::make_unique<Front>(arguments..., count(), count(), count(), count());
    } else {
      return std::make_unique<Front>(arguments...);
    }
  }

  HT* patternAlias() { return nullptr; }
  UT* imageAlias() { return nullptr; }
  YT* scoresAlias() {
    if constexpr (isCounting) {
      return KarnDSPFixpt::makeFixpt(count(), 0).release();
    } else {
      return nullptr;
    }
  }

 private:
  KarnDSPFixpt::DSPDataAttributesHandle count() {
    return KarnDSPFixpt::makeAttributes(
        {.value = {32, 0, true}, .product = {64, 0, true}, .accumulator = {32, 0, true}, .adaptor = host.getAdaptor()});
  }

  ReferenceHost host;
};

}  // namespace detail

template <class UT, class HT>
TemplateMatcher<UT, HT>::TemplateMatcher(ArrayView<const HT> pattern, const Extents& imageExtents,
                                         const MatchOptions& options)
    : job(std::make_unique<detail::MatchJob<detail::PlainMatchElements<UT, HT>>>(pattern, imageExtents, options),
          "match") {}

template <class UT, class HT>
auto TemplateMatcher<UT, HT>::run(ArrayView<const UT> image) -> Match<Score> {
  return job->run(image);
}
template <class UT, class HT>
void TemplateMatcher<UT, HT>::setTemplate(ArrayView<const HT> pattern) {
  job->setTemplate(pattern);
}
template <class UT, class HT>
void TemplateMatcher<UT, HT>::setRegion(const std::optional<Rectangle>& region) {
  job->setRegion(region);
}
template <class UT, class HT>
const Rectangle& TemplateMatcher<UT, HT>::positions() const {
  return job->positions();
}

#define ORVANE_DEFINE(UT, HT) template class TemplateMatcher<UT, HT>;
ORVANE_FOR_MATCH_PAIRS(ORVANE_DEFINE)
#undef ORVANE_DEFINE

}  // namespace BP::filters
