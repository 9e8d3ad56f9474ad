#pragma once

#include <cstdint>

namespace BP::filters {

/// A rectangle of positions, or of elements of a picture: its first corner and its extents.
///
///     Rectangle{.x = 10, .y = 20, .width = 64, .height = 48}
struct Rectangle {
  std::int64_t x = 0;  ///< along dimension 0
  std::int64_t y = 0;  ///< along dimension 1
  std::int64_t width = 0;
  std::int64_t height = 0;

  bool isEmpty() const { return width < 1 || height < 1; }
  bool operator==(const Rectangle&) const = default;
};

}  // namespace BP::filters
