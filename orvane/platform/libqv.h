#pragma once

#include <cstddef>

#include "orvane/platform/export.h"

/// The host's memory manager: blocks aligned for any vector instruction.

/// Every block starts at a multiple of this many bytes.
inline constexpr std::size_t qvAlignment = 64;

/// A new block of at least `size` bytes, or null if there is no room. A block of 0 bytes is a block like any other.
ORVANE_API void* qvMalloc(std::size_t size);

/// Gives a block of `qvMalloc` back; null is allowed and does nothing.
ORVANE_API void qvFree(void* block);
