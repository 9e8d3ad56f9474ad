#include "orvane/filters/fixed_template_matcher.h"

#include <utility>

#include "orvane/filters/fixed_job.h"
#include "orvane/filters/fixed_roles.h"
#include "orvane/filters/match_job.h"
#include "orvane/matching/template_matching_tolk.h"

namespace BP::filters {

namespace detail {

using KarnDSPFixpt::Fixpt;

/// Arrays of fixed-point elements. The fronts own one alias for each array, which uses the caller's memory in a run.
class FixedMatchElements : public FixedJob {
 public:
  using ImageView = FixedView;
  using PatternView = FixedView;
  using Pattern = FixedArray;
  using Image = FixedArray;
  using Scores = FixedArray;
  using Result = FixedMatch;
  using Front = TemplateMatchingTolk<Fixpt, Fixpt, Fixpt>;

  FixedMatchElements(const FixedView& pattern, Metric metric, const FixedMatchTypes& types)
      : FixedJob(types.modes), roles(types, pattern.type(), pattern.isComplex(), metricOf(metric)) {}

  std::int64_t maxElements() const { return roles.output.isComplex ? maxComplexElements : maxIndex; }

  bool scoresAreReal() const { return !roles.output.isComplex; }

  void checkImage(const FixedView& image, const Extents& extents) const {
    checkFixed("image", image, roles.image, extents);
  }
  FixedArray copyOf(const FixedView& pattern, const Extents& extents) const {
    checkFixed("template", pattern, roles.pattern, extents);
    return FixedArray(pattern);
  }
  FixedArray makeScores(const Extents& extents) const {
    return FixedArray(extents, roles.output.value, roles.output.isComplex);
  }
  std::complex<double> scoreAt(const FixedArray& scores, int index) {
    const auto values = makeAlias(handleOf(roles.output), scores.data());
    const Fixpt& score = (*values)[index];
    return {score.toDouble(), score.imaginaryToDouble()};
  }

  template <class... Arguments>
  std::unique_ptr<Front> makeFront(ReferenceHost& host, Arguments... arguments) {
    return std::make_unique<Front>(host.getAdaptor(), arguments..., handleOf(roles.accumulator, host),
                                   handleOf(roles.image, host), handleOf(roles.output, host),
                                   handleOf(roles.pattern, host));
  }

  auto patternAlias(ReferenceHost& host) { return makeOwn(roles.pattern, 0, host); }
  auto imageAlias(ReferenceHost& host) { return makeOwn(roles.image, 0, host); }
  auto scoresAlias(ReferenceHost& host) { return makeOwn(roles.output, 0, host); }

 private:
  FixedMatchRoles roles;
};

}  // namespace detail

FixedTemplateMatcher::FixedTemplateMatcher(const FixedView& pattern, const Extents& imageExtents,
                                           const FixedMatchTypes& types, const MatchOptions& options)
    : job(std::make_unique<detail::MatchJob<detail::FixedMatchElements>>(pattern, imageExtents, options, types),
          "match") {}

FixedMatch FixedTemplateMatcher::run(const FixedView& image) { return job->run(image); }
void FixedTemplateMatcher::setTemplate(const FixedView& pattern) { job->setTemplate(pattern); }
void FixedTemplateMatcher::setRegion(const std::optional<Rectangle>& region) { job->setRegion(region); }
const Rectangle& FixedTemplateMatcher::positions() const { return job->positions(); }
const Extents& FixedTemplateMatcher::windowExtents() const { return job->windowExtents(); }

std::vector<FixedStatistics> FixedTemplateMatcher::statistics() { return job->getElements().statistics(); }

}  // namespace BP::filters
