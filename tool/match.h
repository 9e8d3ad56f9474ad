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

/// `filters::Match` whatever the element types.
struct MatchResult {
  std::array<std::int64_t, 2> location{};
  filters::Region window;
  bool isComplex = false;  ///< whether scores are; else their imaginary parts are 0
  std::complex<double> score;
  bool regionValid = false;
  std::vector<std::complex<double>> neighbourhood;  ///< row by row
  bool neighbourhoodValid = false;
  Array map;  ///< of the scores' own type, int32 for bool, float64 or complex128 in fixed point
  filters::Region positions;
  std::string fixedTable;     ///< what happened to values in fixed point, in which
  std::uint64_t rounded = 0;  ///< this many elements of image and template were first rounded to `double`
};

/// The fixed-point types of a match, but for what is complex.
struct FixedMatchSettings {
  filters::FixedMatchTypes types;
  filters::FixedType pattern;
};

/// Finds `pattern` in `image`, of the types that `readMatchInput` gives.
///
/// Throws `std::runtime_error` if the types do not go together or the region of interest holds no position, and what
/// `filters::TemplateMatcher` throws.
MatchResult findMatch(const Array& image, const Array& pattern, const filters::MatchOptions& options);

/// The same in fixed point, into which elements of all types are cast.
MatchResult findFixedMatch(const Array& image, const Array& pattern, const filters::MatchOptions& options,
                           const FixedMatchSettings& settings);

}  // namespace BP::tool
