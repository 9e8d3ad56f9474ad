#pragma once

#include <array>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "orvane/filters/match_options.h"
#include "orvane/filters/template_matcher.h"
#include "orvane/platform/export.h"

/// Several matches of one template in one image.
namespace BP::filters {

/// The choices of `matches`. Each has a default.
struct PeakOptions {
  std::int64_t count = 1;  ///< the most matches that are wanted
  double distance = 1;     ///< the least distance of any two, in positions: the root of dx^2 + dy^2
  bool refine = false;     ///< whether to estimate where between positions they lie (see `BasicMatch::refined`)
};

/// One of several matches.
template <class Score>
struct Peak {
  std::array<std::int64_t, 2> location{};
  Score score{};
  Rectangle window{};               ///< elements of the image under the template at the location
  std::array<double, 2> refined{};  ///< the location, refined by its neighbours in the map if the options select it
};

/// The best matches in a map of scores, at least a distance apart, the best one first.
///
/// The choice is greedy: the best score of the map, then the best one that is far enough from it, and so on. Of equal
/// scores the one that lies first in the map wins. Scores of NaN are left out, so there can be fewer matches than
/// wanted. The time is that of a look at each score, and a little more for each match. Score is `float`, `double` or
/// `std::int32_t`, the one of bools.
///
/// Throws `std::invalid_argument` for a match without a map, for a count below 1 and for a distance below 0.
template <class Score>
ORVANE_API std::vector<Peak<Score>> matches(const Match<Score>& match, const PeakOptions& peaks);

/// The best matches of `pattern` in `image` (see `TemplateMatcher`). Each is an `Array` or an `ArrayView`.
template <class Image, class Pattern>
auto matches(const Image& image, const Pattern& pattern, const PeakOptions& peaks, MatchOptions options = {}) {
  options.map = true;
  options.best = false;
  options.neighbourhood = 0;
  options.refine = false;
  return matches(matchTemplate(image, pattern, options), peaks);
}

extern template std::vector<Peak<float>> matches(const Match<float>&, const PeakOptions&);
extern template std::vector<Peak<double>> matches(const Match<double>&, const PeakOptions&);
extern template std::vector<Peak<std::int32_t>> matches(const Match<std::int32_t>&, const PeakOptions&);

}  // namespace BP::filters
