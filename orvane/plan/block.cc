#include "orvane/plan/block.h"

#include <algorithm>

namespace BP {

Block::~Block() = default;

Traversable::~Traversable() = default;

TraversableBlock::~TraversableBlock() = default;

void TraversableBlock::traverseWhole() {
  for (int d = 0; d < getNumDims(); ++d) {
    getStart().ptr[d] = getLoc().ptr[d];
    getEnd().ptr[d] = getLoc().ptr[d] + getDims().ptr[d] - 1;
  }
}

int computeStrides(int numDims, const int* dims, int* strides) {
  if (numDims < 1) return 0;
  const auto product = [](int a, int b) {
    return static_cast<int>(static_cast<unsigned>(a) * static_cast<unsigned>(b));
  };
  strides[0] = 1;
  for (int d = 1; d < numDims; ++d) strides[d] = product(strides[d - 1], dims[d - 1]);
  return product(strides[numDims - 1], dims[numDims - 1]);
}

std::int64_t spanOf(int numDims, const int* dims, const int* strides) {
  std::int64_t span = numDims < 1 ? 0 : 1;
  for (int d = 0; d < numDims; ++d) {
    if (dims[d] < 1) return 0;
    span += std::int64_t{dims[d] - 1} * strides[d];
  }
  return span;
}

std::int64_t elementCount(int numDims, const int* dims) {
  constexpr std::int64_t tooMany = std::int64_t{1} << 31;
  std::int64_t count = numDims < 1 ? 0 : 1;
  for (int d = 0; d < numDims; ++d) {
    if (dims[d] < 1) return 0;
    count = std::min(count * dims[d], tooMany);
  }
  return count;
}

}  // namespace BP
