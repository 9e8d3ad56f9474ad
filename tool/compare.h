#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "tool/array.h"

namespace BP::tool {

/// How far the elements b of an array are from the elements a of another one of the same extents.
struct Comparison {
  std::vector<std::int64_t> extents;
  std::uint64_t elements = 0;
  std::uint64_t different = 0;      ///< elements with a != b
  double greatest = 0;              ///< the greatest |b - a|
  std::vector<std::int64_t> place;  ///< where it lies first, dimension 0 first; empty if all are equal
  double before = 0;                ///< a there
  double after = 0;                 ///< b there
  double mean = 0;                  ///< of b - a
  double rms = 0;                   ///< the root of the mean of (b - a)^2
};

/// Compares two real arrays element by element, in `double`, which must hold the elements exactly.
///
/// Throws `std::runtime_error` for extents that differ, for empty arrays, for elements that are complex, not finite or
/// whole numbers beyond 2^53, and for values whose difference, or the sum of these, is beyond the range of `double`.
Comparison compare(const Array& first, const Array& second);

/// The comparison in words, a line for each number. The peak signal-to-noise ratio, 20 log10(peak / rms), is told if
/// there is a peak.
std::string comparisonText(const Comparison& comparison, const std::optional<double>& peak);

}  // namespace BP::tool
