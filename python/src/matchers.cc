#include <utility>

#include "python/src/matcher.h"

namespace BP::python {

namespace {

/// Hands over an array of scores without a copy.
template <class Score>
std::optional<Scores> scoresOf(Array<Score>&& array) {
  auto owner = std::make_shared<Array<Score>>(std::move(array));
  const Memory memory{owner->data(), Layout(owner->extents()), elementOf<Score>()};
  return Scores{std::move(owner), memory};
}

template <class UT, class HT>
class PlainMatcher final : public Matcher {
 public:
  using Score = MatchScore<UT, HT>;

  PlainMatcher(const Memory& pattern, const Extents& imageExtents, const MatchOptions& options)
      : hasBlock(options.neighbourhood > 0),
        hasMap(options.map),
        matcher(pattern.view<const HT>(), imageExtents, options) {}

  Element imageElement() const override { return elementOf<UT>(); }
  Element scoreElement() const override { return elementOf<Score>(); }
  const Extents& windowExtents() const override { return matcher.windowExtents(); }
  Rectangle positions() const override { return matcher.positions(); }

  AnyMatch run(const Memory& image) override {
    Match<Score> match = matcher.run(image.view<const UT>());
    AnyMatch any{match.found,       match.location,           match.window,    match.score,  match.refined,
                 match.regionValid, match.neighbourhoodValid, match.positions, std::nullopt, std::nullopt};
    if (hasBlock) any.neighbourhood = scoresOf(std::move(match.neighbourhood));
    if (hasMap) any.map = scoresOf(std::move(match.map));
    return any;
  }

  std::vector<Peak<double>> runPeaks(const Memory& image, const PeakOptions& peaks) override {
    if constexpr (std::is_arithmetic_v<Score>) {
      std::vector<Peak<double>> found;
      for (const Peak<Score>& peak : matches(matcher.run(image.view<const UT>()), peaks)) {
        found.push_back({peak.location, static_cast<double>(peak.score), peak.window, peak.refined});
      }
      return found;
    } else {
      throw WrongType("matches: scores of " + nameOf(scoreElement()) +
                      " have no order; image and template must be real");
    }
  }

  void setTemplate(const Memory& pattern) override { matcher.setTemplate(pattern.view<const HT>()); }
  void setRegion(const std::optional<Rectangle>& region) override { matcher.setRegion(region); }

 private:
  bool hasBlock;
  bool hasMap;
  TemplateMatcher<UT, HT> matcher;
};

template <class UT, class HT>
constexpr bool isMatchPair() {
  if constexpr (std::is_same_v<UT, bool> || std::is_same_v<HT, bool>) {
    return std::is_same_v<UT, HT>;
  } else if constexpr (std::is_integral_v<UT>) {
    return isFilterPair<UT, HT>() && std::is_floating_point_v<HT>;
  } else {
    return isFilterPair<UT, HT>();
  }
}

}  // namespace

std::unique_ptr<Matcher> makeMatcher(const Memory& pattern, Element image, const Extents& imageExtents,
                                     const MatchOptions& options) {
  return visitElement(pattern.element, [&]<class HT>(std::type_identity<HT>) {
    return visitElement(image, [&]<class UT>(std::type_identity<UT>) -> std::unique_ptr<Matcher> {
      if constexpr (isMatchPair<UT, HT>()) {
        return std::make_unique<PlainMatcher<UT, HT>>(pattern, imageExtents, options);
      } else if constexpr (std::is_same_v<UT, bool> || std::is_same_v<HT, bool>) {
        throw WrongType("template: elements of " + nameOf(pattern.element) + ", those of the image are " +
                        nameOf(image) + "; both or neither are bool");
      } else if constexpr (std::is_integral_v<UT> && isFilterPair<UT, HT>()) {
        throw WrongType("template: elements of " + nameOf(pattern.element) +
                        "; templates for images of integers are real, or convert the image by astype()");
      } else {
        refusePair("image", image, "template", pattern.element);
      }
    });
  });
}

}  // namespace BP::python
