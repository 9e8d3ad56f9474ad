#include "orvane/filters/template_matcher.h"

#include <algorithm>
#include <concepts>
#include <utility>

#include "orvane/filters/checks.h"
#include "orvane/filters/match_job.h"
#include "orvane/filters/normalised_search.h"
#include "orvane/matching/template_matching_tolk.h"
#include "orvane/platform/karn_fixpt_3_make.h"

namespace BP::filters {

namespace detail {

/// What elements have in addition for metrics whose products are divided by norms: nothing, unless they are real.
template <class UT, class HT>
struct NormalisedElements {};
template <class UT, std::floating_point T>
requires std::is_floating_point_v<UT> || StoredInteger<UT>
struct NormalisedElements<UT, T> {
  using Normalised = NormalisedSearch<T>;

  static StoredImage<T> storedImage(const ArrayView<const UT>& image) {
    return {image.data(), static_cast<std::ptrdiff_t>(image.layout().pitch(1)), storedOf<UT>()};
  }
};

/// In which type an image's elements are computed.
template <class UT, class HT>
struct ComputedImage {
  using type = typename FilterElements<UT, HT>::Computed;
};
template <>
struct ComputedImage<bool, bool> {
  using type = bool;
};

/// Arrays of plain elements. The scores of booleans are counts. The front sees them as fixed-point values without
/// fraction, in the memory of the plain array.
template <class UT, class HT>
class PlainMatchElements : public NormalisedElements<UT, HT> {
 public:
  using ImageView = ArrayView<const UT>;
  using PatternView = ArrayView<const HT>;
  using Pattern = Array<HT>;
  using Image = Array<UT>;
  using Scores = Array<MatchScore<UT, HT>>;
  using Result = Match<MatchScore<UT, HT>>;

  static constexpr bool isCounting = std::is_same_v<UT, bool>;
  using YT = std::conditional_t<isCounting, KarnDSPFixpt::Fixpt, MatchScore<UT, HT>>;
  using Computed = typename ComputedImage<UT, HT>::type;
  using Front = TemplateMatchingTolk<HT, Computed, YT>;
  /// How an image's elements lie in memory.
  static constexpr Stored stored = storedOf<UT>();

  PlainMatchElements(const PatternView& /*pattern*/, Metric /*metric*/) {}

  std::int64_t maxElements() const { return maxIndex; }
  bool scoresAreReal() const { return std::is_arithmetic_v<MatchScore<UT, HT>>; }

  void checkImage(const ImageView& image, const Extents& extents) const { checkArray("image", image, extents); }
  Pattern copyOf(const PatternView& pattern, const Extents& extents) const {
    checkArray("template", pattern, extents);
    Pattern copy(pattern);
    return copy;
  }
  Scores makeScores(const Extents& extents) const { return Scores(extents); }
  MatchScore<UT, HT> scoreAt(const Scores& scores, int index) const { return scores[static_cast<std::size_t>(index)]; }

  template <class... Arguments>
  std::unique_ptr<Front> makeFront(ReferenceHost& host, Arguments... arguments) const {
    if constexpr (isCounting) {
      return std::make_unique<Front>(host.getAdaptor(), arguments..., count(host), count(host), count(host),
                                     count(host));
    } else {
      return std::make_unique<Front>(host.getAdaptor(), arguments...);
    }
  }

  std::unique_ptr<HT> patternAlias(ReferenceHost& /*host*/) const { return nullptr; }
  std::unique_ptr<Computed> imageAlias(ReferenceHost& /*host*/) const { return nullptr; }
  std::unique_ptr<YT> scoresAlias([[maybe_unused]] ReferenceHost& host) const {
    if constexpr (isCounting) {
      return KarnDSPFixpt::makeFixpt(count(host), 0);
    } else {
      return nullptr;
    }
  }

 private:
  static KarnDSPFixpt::DSPDataAttributesHandle count(ReferenceHost& host) {
    return KarnDSPFixpt::makeAttributes(
        {.value = {32, 0, true}, .product = {64, 0, true}, .accumulator = {32, 0, true}, .adaptor = host.getAdaptor()});
  }
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

template <class UT, class HT>
const Extents& TemplateMatcher<UT, HT>::windowExtents() const {
  return job->windowExtents();
}

#define ORVANE_DEFINE(UT, HT) template class TemplateMatcher<UT, HT>;
ORVANE_FOR_MATCH_PAIRS(ORVANE_DEFINE)
ORVANE_FOR_INTEGER_MATCH_PAIRS(ORVANE_DEFINE)
#undef ORVANE_DEFINE

}  // namespace BP::filters
