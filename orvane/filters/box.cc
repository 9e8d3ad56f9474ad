#include "orvane/filters/box.h"

#include <algorithm>
#include <array>
#include <limits>
#include <span>
#include <string>

#include "orvane/filters/checks.h"

namespace BP::filters {

Box boxOf(const Rectangle& r, std::size_t rank) {
  if (rank != 1) return {{r.x, r.y}, {r.width, r.height}};
  return {{r.x}, {r.y > 0 || r.height < 1 || r.y < 1 - r.height ? 0 : r.width}};
}

Rectangle rectangleOf(const Box& box) {
  const std::size_t rank = box.extents.rank();
  if (rank != box.start.rank() || rank < 1 || rank > 2) {
    detail::refuse("box", "rank " + std::to_string(rank), "a rectangle has rank 1 or 2");
  }
  const bool isLine = rank == 1;
  return {box.start[0], isLine ? 0 : box.start[1], box.extents[0],
          isLine ? std::min<std::int64_t>(box.extents[0], 1) : box.extents[1]};
}

namespace detail {

namespace {

constexpr std::int64_t most = std::numeric_limits<std::int64_t>::max();

/// The position behind the last one in a dimension, at most the greatest number.
std::int64_t endOf(const Box& box, std::size_t d) {
  const std::int64_t start = box.start[d], extent = box.extents[d];
  return start > 0 && extent > most - start ? most : start + extent;
}

void checkRegion(const Box& region, std::size_t rank) {
  if (region.start.rank() != rank || region.extents.rank() != rank) {
    refuse("region", "start " + toText(region.start) + ", extents " + toText(region.extents),
           "both need rank " + std::to_string(rank));
  }
  for (std::size_t d = 0; d < rank; ++d) {
    if (region.extents[d] >= 0) continue;
    refuse("region", "extent " + std::to_string(region.extents[d]) + " in dimension " + std::to_string(d),
           "allowed are 0 or more");
  }
}

}  // namespace

Box positionsIn(const Box& support, const std::optional<Box>& region) {
  if (!region) return support;
  const std::size_t rank = support.extents.rank();
  checkRegion(*region, rank);
  std::array<std::int64_t, Extents::maxRank> start{}, extents{};
  for (std::size_t d = 0; d < rank; ++d) {
    start[d] = std::max(support.start[d], region->start[d]);
    const std::int64_t end = std::min(endOf(support, d), endOf(*region, d));
    extents[d] = end - start[d];
    if (end > start[d]) continue;
    extents.fill(0);
    return {support.start, Extents(std::span<const std::int64_t>(extents.data(), rank))};
  }
  return {Extents(std::span<const std::int64_t>(start.data(), rank)),
          Extents(std::span<const std::int64_t>(extents.data(), rank))};
}

}  // namespace detail

}  // namespace BP::filters
