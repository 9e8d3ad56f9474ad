#pragma once

namespace BP {

/// Index of the centre of an extent: its middle element, or the lower of the two middle ones if the extent is even. An
/// extent of 0 gives -1.
///
///     extent   1  2  3  4  5
///     centre   0  0  1  1  2
template <class Int>
constexpr Int centreOf(Int extent) {
  return (extent >> 1) - ((extent & 1) == 0 ? 1 : 0);
}

}  // namespace BP
