#pragma once

namespace BP {

/// The centre of an extent: its middle element, the lower one of the two of an even extent; -1 of an extent of 0.
///
///     extent   1  2  3  4  5
///     centre   0  0  1  1  2
template <class Int>
constexpr Int centreOf(Int extent) {
  return (extent >> 1) - ((extent & 1) == 0 ? 1 : 0);
}

}  // namespace BP
