#pragma once

#include <cstddef>
#include <cstdint>

#include "orvane/core/stored.h"

/// Lines of integers as floating-point values, and back. Nothing is read or written but the lines, which must not
/// overlap.
namespace BP::lanes {

/// to[i] := from[i], exactly. `from` has integers of the type `stored`, of at most 16 bits if T is `float`.
template <class T>
void convertLine(Stored stored, const void* from, std::ptrdiff_t count, T* to);

/// to[i] := from[i], as `roundAndClip` does it. Returns the number of values that were clipped.
template <class T>
std::int64_t roundLine(Stored stored, const T* from, std::ptrdiff_t count, void* to);

}  // namespace BP::lanes
