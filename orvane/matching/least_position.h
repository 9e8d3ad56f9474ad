#pragma once

namespace BP {

/// The position that a search in vector lanes found, counted from the first one of its area; none if x is negative.
struct LeastPosition {
  int x = -1, y = 0;

  bool isFound() const { return x >= 0; }
};

}  // namespace BP
