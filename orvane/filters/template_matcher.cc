#include "orvane/filters/template_matcher.h"

#include <algorithm>
#include <utility>

#include "orvane/filters/checks.h"
#include "orvane/filters/job.h"
#include "orvane/filters/matching_geometry.h"
#include "orvane/matching/template_matching_tolk.h"
#include "orvane/platform/karn_fixpt_3_make.h"

namespace BP::filters {

namespace detail {

namespace {

using KarnDSPFixpt::Fixpt;

/// How a front is made and fed for an element type of scores: plain ones need nothing.
template <class Score>
struct FrontTypes {
  using YT = Score;
  static Score* makeAlias(ReferenceHost&) { return nullptr; }
  template <class Front, class... Arguments>
  static std::unique_ptr<Front> make(ReferenceHost&, Arguments... arguments) {
    return std::make_unique<Front>(arguments...);
  }
};

/// Counts are fixed-point values of no fraction, read and written where they are.
template <>
struct FrontTypes<std::int32_t> {
  using YT = Fixpt;
  static KarnDSPFixpt::DSPDataAttributesHandle handle(ReferenceHost& host) {
    return KarnDSPFixpt::makeAttributes(
        {.value = {32, 0, true}, .product = {64, 0, true}, .accumulator = {32, 0, true}, .adaptor = host.getAdaptor()});
  }
  static Fixpt* makeAlias(ReferenceHost& host) { return KarnDSPFixpt::makeFixpt(handle(host), 0).release(); }
  template <class Front, class... Arguments>
  static std::unique_ptr<Front> make(ReferenceHost& host, Arguments... arguments) {
    const auto count = handle(host);
    return std::make_unique<Front>(arguments..., count, count, count, count);
  }
};

}  // namespace

/// One match with all that its fronts borrow: extents, template, region of interest, results in the making. There is
/// one front for the search and one for the map.
template <class UT, class HT>
class MatchJob {
 public:
  using Score = MatchScore<UT, HT>;

  MatchJob(ArrayView<const HT> newPattern, const Extents& image, const MatchOptions& options)
      : geometry(image, newPattern.extents(), options), pattern(checkedPattern(newPattern)) {
    std::copy_n(newPattern.data(), pattern.size(), pattern.data());
    if (options.best) searcher = makeFront(TMModeBestMatchNeighborhood);
    if (options.map) mapper = makeFront(TMModeMetric);
    throwMessages(host);
  }

  Match<Score> run(ArrayView<const UT> image) {
    checkArray("image", image, geometry.imageExtents);
    Match<Score> match;
    match.positions = geometry.positions;
    if (geometry.edge > 0) match.neighbourhood = Array<Score>({geometry.edge, geometry.edge});
    if (!geometry.hasPositions()) return match;
    if (mapper) match.map = Array<Score>({match.positions.size[0], match.positions.size[1]});
    UT* const elements = const_cast<UT*>(image.data());  // the fronts only read it
    if (searcher) findBest(elements, match);
    if (mapper) invoke(*mapper, elements, match.map.data(), nullptr);
    match.regionValid = regionIsValid;
    return match;
  }

  void setTemplate(ArrayView<const HT> newPattern) {
    checkArray("template", newPattern, geometry.patternExtents);
    std::copy_n(newPattern.data(), pattern.size(), pattern.data());
  }

  void setRegion(const std::optional<Region>& region) { geometry.setRegion(region); }
  const Region& positions() const { return geometry.positions; }

 private:
  using Types = FrontTypes<Score>;
  using YT = typename Types::YT;
  using Front = TemplateMatchingTolk<HT, UT, YT>;

  Extents checkedPattern(const ArrayView<const HT>& newPattern) const {
    checkArray("template", newPattern, geometry.patternExtents);
    return geometry.patternExtents;
  }

  /// The block of a search: that which was asked for, or else the one score at the best match.
  int blockEdge() const { return std::max(geometry.edge, 1); }

  std::unique_ptr<Front> makeFront(TMModeEnum tmMode) {
    constexpr bool isVarSize = false, roiEnabled = true, roiValidEnabled = true;
    // Scores read no pad value, so the front is given a pad that has none.
    auto front = Types::template make<Front>(
        host, host.getAdaptor(), 2, geometry.patternDims.data(), 2, geometry.imageDims.data(), PadTypeReplicate,
        geometry.mode, geometry.metric, tmMode, isVarSize, roiEnabled, roiValidEnabled, geometry.search);
    host.provideWorkVectors(front->getAllocator());
    front->setup(pattern.data(), nullptr, geometry.roi.data(), Types::makeAlias(host), location.data(), blockEdge(),
                 Types::makeAlias(host), &blockIsValid, &regionIsValid, nullptr, false);
    return front;
  }

  void invoke(Front& front, UT* image, Score* map, Score* block) {
    front.updateInputPointers(image, pattern.data());
    front.updateOutputPointers(map, nullptr, block, nullptr, nullptr);
    runFront(front, host);
  }

  void findBest(UT* image, Match<Score>& match) {
    Array<Score> single({1, 1});
    Array<Score>& block = geometry.edge > 0 ? match.neighbourhood : single;
    invoke(*searcher, image, nullptr, block.data());
    match.found = true;
    match.location = {location[0], location[1]};
    match.window = geometry.windowAt(match.location);
    const int middle = (blockEdge() - 1) / 2;
    match.score = block[static_cast<std::size_t>(middle + blockEdge() * middle)];
    match.neighbourhoodValid = geometry.edge > 0 && blockIsValid;
  }

  MatchingGeometry geometry;
  Array<HT> pattern;
  std::array<int, 2> location{};
  bool blockIsValid = false;
  bool regionIsValid = false;
  ReferenceHost host;
  std::unique_ptr<Front> searcher;  // the fronts end before what they borrow
  std::unique_ptr<Front> mapper;
};

}  // namespace detail

template <class UT, class HT>
TemplateMatcher<UT, HT>::TemplateMatcher(ArrayView<const HT> pattern, const Extents& imageExtents,
                                         const MatchOptions& options)
    : job(std::make_unique<detail::MatchJob<UT, HT>>(pattern, imageExtents, options)) {}
template <class UT, class HT>
TemplateMatcher<UT, HT>::TemplateMatcher(TemplateMatcher&&) noexcept = default;
template <class UT, class HT>
TemplateMatcher<UT, HT>& TemplateMatcher<UT, HT>::operator=(TemplateMatcher&&) noexcept = default;
template <class UT, class HT>
TemplateMatcher<UT, HT>::~TemplateMatcher() = default;

template <class UT, class HT>
auto TemplateMatcher<UT, HT>::run(ArrayView<const UT> image) -> Match<Score> {
  return detail::used(job, "match").run(image);
}
template <class UT, class HT>
void TemplateMatcher<UT, HT>::setTemplate(ArrayView<const HT> pattern) {
  detail::used(job, "match").setTemplate(pattern);
}
template <class UT, class HT>
void TemplateMatcher<UT, HT>::setRegion(const std::optional<Region>& region) {
  detail::used(job, "match").setRegion(region);
}
template <class UT, class HT>
const Region& TemplateMatcher<UT, HT>::positions() const {
  return detail::used(job, "match").positions();
}

#define ORVANE_DEFINE(UT, HT) template class TemplateMatcher<UT, HT>;
ORVANE_FOR_MATCH_PAIRS(ORVANE_DEFINE)
#undef ORVANE_DEFINE

}  // namespace BP::filters
