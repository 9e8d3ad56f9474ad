#pragma once

#include <array>
#include <complex>
#include <cstdint>
#include <string>
#include <vector>

#include "orvane/filters/fixed_template_matcher.h"
#include "orvane/filters/template_matcher.h"
#include "tool/array.h"

namespace BP::tool {

/// The result of a match, for all element types.
struct MatchResult {
  std::array<std::int64_t, 2> location{};
  filters::Rectangle window;
  bool isComplex = false;  ///< whether scores are complex; the imaginary parts of real scores are 0
  std::complex<double> score;
  bool regionValid = false;
  std::vector<std::complex<double>> neighbourhood;  ///< row by row
  bool neighbourhoodValid = false;
  Array map;  ///< of the type of the scores: int32 for bool, float64 or complex128 for fixed point
  filters::Rectangle positions;
  std::string fixedTable;     ///< what happened to values in fixed point
  std::uint64_t rounded = 0;  ///< elements that were rounded to `double` before they were cast into fixed point
};

/// The fixed-point types of a match. Whether the input is complex is known only from its elements.
struct FixedMatchSettings {
  filters::FixedMatchTypes types;
  filters::FixedType pattern;
};

/// Finds `pattern` in `image`; `readMatchInput` gives both.
///
/// Throws `std::runtime_error` if the types cannot be matched or the region of interest holds no position, and the
/// errors of `filters::TemplateMatcher`.
MatchResult findMatch(const Array& image, const Array& pattern, const filters::MatchOptions& options);

/// The same in fixed point. Elements of all types are cast into it.
MatchResult findFixedMatch(const Array& image, const Array& pattern, const filters::MatchOptions& options,
                           const FixedMatchSettings& settings);

}  // namespace BP::tool
