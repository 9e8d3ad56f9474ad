#include "orvane/filters/extents.h"

#include <algorithm>
#include <limits>
#include <stdexcept>

namespace BP::filters {

std::int64_t Extent::refuse(std::uint64_t extent) {
  throw std::invalid_argument("extent: " + std::to_string(extent) + "; allowed are numbers up to " +
                              std::to_string(std::numeric_limits<std::int64_t>::max()));
}

Extents::Extents(std::initializer_list<Extent> extents) : count(extents.size()) {
  checkRank();
  std::ranges::transform(extents, values.begin(), [](const Extent& extent) { return extent.value(); });
}

Extents::Extents(std::span<const std::int64_t> extents) : count(extents.size()) {
  checkRank();
  std::ranges::copy(extents, values.begin());
}

void Extents::checkRank() const {
  if (count <= maxRank) return;
  throw std::invalid_argument("extents: rank " + std::to_string(count) + "; allowed are 0 to " +
                              std::to_string(maxRank));
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
