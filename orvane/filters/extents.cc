#include "orvane/filters/extents.h"

#include <algorithm>
#include <limits>
#include <stdexcept>

namespace BP::filters {

Extents::Extents(std::span<const std::int64_t> extents) : count(extents.size()) {
  if (count > maxRank) {
    throw std::invalid_argument("extents: rank " + std::to_string(count) + "; allowed are 0 to " +
                                std::to_string(maxRank));
  }
  std::ranges::copy(extents, values.begin());
}

std::int64_t elementCount(const Extents& extents) {
  if (std::ranges::any_of(extents, [](std::int64_t extent) { return extent < 1; })) return 0;
  constexpr std::int64_t maxCount = std::numeric_limits<std::int64_t>::max();
  std::int64_t count = 1;
  for (const std::int64_t extent : extents) count = count > maxCount / extent ? maxCount : count * extent;
  return count;
}

std::string toText(const Extents& extents) {
  std::string text;
  for (const std::int64_t extent : extents) text += (text.empty() ? "" : " x ") + std::to_string(extent);
  return text.empty() ? "none" : text;
}

}  // namespace BP::filters
