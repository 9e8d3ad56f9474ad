#pragma once

#include <cstddef>

#include "orvane/platform/export.h"

/// The host's memory manager: blocks aligned for any vector instruction.

/// Every block starts at a multiple of this many bytes.
inline constexpr std::size_t qvAlignment = 64;

/// A new block of at least `size` bytes, or null if there is no memory. A size of 0 also gives a block.
ORVANE_API void* qvMalloc(std::size_t size);

/// Releases a block of `qvMalloc`. Null is allowed and does nothing.
ORVANE_API void qvFree(void* block);
