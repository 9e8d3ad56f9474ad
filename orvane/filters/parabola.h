#pragma once

namespace BP::filters::detail {

/// The place of the extremum of a parabola through three scores at -1, 0 and 1, from -0.5 to 0.5. It is 0 unless the
/// score at 0 is the best of the three, the greatest or the least, and another one differs from it.
inline double parabolaOffset(double before, double at, double after, bool greatest) {
  const bool isBest = greatest ? at >= before && at >= after : at <= before && at <= after;
  const double curvature = before - 2 * at + after;
  if (!isBest || curvature == 0 || curvature - curvature != 0) return 0;
  return (before - after) / (2 * curvature);
}

}  // namespace BP::filters::detail
