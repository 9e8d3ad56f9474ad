#include "orvane/lanes/fixed_sums.h"

#include <algorithm>

namespace BP::lanes {

void FixedCounts::add(const FixedCounts& other) {
  casts += other.casts;
  overflows += other.overflows;
  lossy += other.lossy;
  least = std::min(least, other.least);
  greatest = std::max(greatest, other.greatest);
}

}  // namespace BP::lanes
