#include "tool/portable_math.h"

#include <cmath>

namespace BP::tool {

// Both functions reduce the argument to a small range and sum the Taylor series there, beginning with its smallest
// term.

double exponential(double x) {
  // ln 2 in two parts. The first has enough trailing zeros that its product with a small whole number is exact.
  constexpr double ln2High = 0x1.62e42feep-1;
  constexpr double ln2Low = 0x1.a39ef35793c76p-33;
  if (x < -708) return 0;
  const double power = std::nearbyint(x / 0x1.62e42fefa39efp-1);
  const double rest = (x - power * ln2High) - power * ln2Low;
  double sum = 1;
  for (int n = 14; n >= 1; --n) sum = 1 + sum * rest / n;
  return std::ldexp(sum, static_cast<int>(power));
}

double cosineOfTurns(double t) {
  const double fromWhole = std::fabs(t - std::nearbyint(t));
  const bool nearHalf = fromWhole > 0.25;
  const double angle = 0x1.921fb54442d18p+2 * (nearHalf ? 0.5 - fromWhole : fromWhole);
  const double square = angle * angle;
  double sum = 1;
  for (int n = 22; n >= 2; n -= 2) sum = 1 - sum * square / (n * (n - 1));
  return nearHalf ? -sum : sum;
}

}  // namespace BP::tool
