#include "orvane/plan/plan.h"

#include <algorithm>
#include <cstdint>
#include <limits>

namespace BP {

namespace {

/// base^exponent by repeated squaring; the greatest `int` where that does not hold it.
int power(double base, int exponent) {
  double result = 1;
  for (; exponent > 0; exponent >>= 1, base *= base) {
    if ((exponent & 1) != 0) result *= base;
  }
  return static_cast<int>(std::min<double>(result, std::numeric_limits<int>::max()));
}

/// a + b * c; the greatest `int` where that does not hold it.
int saturatedSum(int a, int b, int c) {
  const auto sum = static_cast<std::int64_t>(a) + static_cast<std::int64_t>(b) * c;
  return static_cast<int>(std::min<std::int64_t>(sum, std::numeric_limits<int>::max()));
}

}  // namespace

SectorCapacities capacitiesOf(int numDims, const SectorKinds& kinds) {
  SectorCapacities capacities{0, 0};
  if (kinds.boundary || kinds.all) {
    capacities.boundary = power(3, numDims);
    if (kinds.padUsesData && (kinds.outside || kinds.all))
      capacities.boundary = saturatedSum(capacities.boundary, numDims, power(2, numDims));
    if (kinds.inside || kinds.all) --capacities.boundary;
  }
  if (kinds.outside || kinds.all) capacities.outside = power(5, numDims) - capacities.boundary - 1;
  return capacities;
}

SectorCapacities candidatesOf(int numDims, const SectorKinds& kinds) {
  const int edges = power(3, numDims), mixed = power(2, numDims);
  SectorCapacities candidates{0, 0};
  if (kinds.boundary || kinds.all) candidates.boundary = edges;
  if (kinds.outside || kinds.all) {
    candidates.outside = edges;
    int& withMixed = kinds.padUsesData ? candidates.boundary : candidates.outside;
    withMixed = saturatedSum(withMixed, numDims, mixed);
  }
  return candidates;
}

}  // namespace BP
