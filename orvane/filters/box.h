#pragma once

#include <optional>

#include "orvane/filters/extents.h"
#include "orvane/filters/rectangle.h"
#include "orvane/platform/export.h"

namespace BP::filters {

/// A box of positions, or of elements of an array, in any number of dimensions: its first corner and its extents. In
/// two dimensions it is a `Rectangle`.
struct Box {
  Extents start;
  Extents extents;

  bool isEmpty() const { return elementCount(extents) == 0; }
  bool operator==(const Box&) const = default;
};

/// The box of a rectangle, for arrays of rank 2, or 1. In rank 1, `y` and `height` are left out, but a rectangle
/// without line 0 is empty.
ORVANE_API Box boxOf(const Rectangle& rectangle, std::size_t rank = 2);
/// The rectangle of a box of rank 2, or 1, which then has height 1. Throws `std::invalid_argument` for another rank.
ORVANE_API Rectangle rectangleOf(const Box& box);

namespace detail {

/// The positions in both boxes, of one rank. If there are none, all extents are 0, and the box starts with `support`.
/// Throws `std::invalid_argument` unless a region of interest has the rank of the positions and no negative extent.
ORVANE_API Box positionsIn(const Box& support, const std::optional<Box>& region);

}  // namespace detail

}  // namespace BP::filters
