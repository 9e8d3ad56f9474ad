#include "orvane/platform/libqv.h"

#include <cstdlib>
#include <limits>

void* qvMalloc(std::size_t size) {
  if (size > std::numeric_limits<std::size_t>::max() - qvAlignment) return nullptr;
  const std::size_t blocks = size / qvAlignment + (size % qvAlignment != 0 || size == 0 ? 1 : 0);
  return std::aligned_alloc(qvAlignment, blocks * qvAlignment);
}

void qvFree(void* block) { std::free(block); }
