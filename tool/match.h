#pragma once

#include <array>
#include <complex>
#include <cstdint>
#include <vector>

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
  Array map;  ///< of the scores' own type, int32 for bool
  filters::Region positions;
};

/// Finds `pattern` in `image`; the types are those that `readMatchInput` gives.
///
/// Throws `std::runtime_error` if the types do not go together or the region of interest holds no position, and what
/// `filters::TemplateMatcher` throws.
MatchResult findMatch(const Array& image, const Array& pattern, const filters::MatchOptions& options);

}  // namespace BP::tool
