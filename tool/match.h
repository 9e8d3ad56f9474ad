#pragma once

#include <array>
#include <complex>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "orvane/filters/fixed_template_matcher.h"
#include "orvane/filters/peaks.h"
#include "orvane/filters/template_matcher.h"
#include "tool/array.h"
#include "tool/match_input.h"

namespace BP::tool {

/// One of several matches.
struct MatchPeak {
  std::array<std::int64_t, 2> location{};
  filters::Rectangle window;
  double score = 0;
  std::array<double, 2> refined{};
};

/// The result of a match, for all element types.
struct MatchResult {
  std::array<std::int64_t, 2> location{};
  filters::Rectangle window;
  bool isComplex = false;  ///< whether scores are complex; the imaginary parts of real scores are 0
  std::complex<double> score;
  std::array<double, 2> refined{};  ///< the location between positions, if that is wanted
  bool regionValid = false;
  std::vector<std::complex<double>> neighbourhood;  ///< row by row
  bool neighbourhoodValid = false;
  Array map;  ///< of the type of the scores: int32 for bool, float64 or complex128 for fixed point
  filters::Rectangle positions;
  bool greatestIsBest = false;
  std::vector<MatchPeak> peaks;  ///< the best matches, if several are wanted
  std::string fixedTable;        ///< what happened to values in fixed point
  std::uint64_t rounded = 0;     ///< elements that were rounded to `double` before they were cast into fixed point
};

/// The fixed-point types of a match. Whether the input is complex is known only from its elements.
struct FixedMatchSettings {
  filters::FixedMatchTypes types;
  filters::FixedType pattern;
};

/// What is wanted of a match.
struct MatchRequest {
  filters::MatchOptions options;
  std::optional<filters::PeakOptions> peaks;  ///< several matches; the options must ask for a map
  bool keepsMap = false;                      ///< whether the map is wanted beside them
};

/// Finds `pattern` in `image`; `readMatchInput` gives both. Whole samples are matched as `float` where that has every
/// score exactly; scores are float64 all the same.
///
/// Throws `std::runtime_error` if the types cannot be matched or the region of interest holds no position, and the
/// errors of `filters::TemplateMatcher`.
MatchResult findMatch(const MatchInput& image, const MatchInput& pattern, const MatchRequest& request);

/// The same in fixed point, a single match. Elements of all types are cast into it.
MatchResult findFixedMatch(const Array& image, const Array& pattern, const MatchRequest& request,
                           const FixedMatchSettings& settings);

}  // namespace BP::tool
