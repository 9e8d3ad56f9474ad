#include "orvane/plan/block.h"

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
  strides[0] = 1;
  for (int d = 1; d < numDims; ++d) strides[d] = strides[d - 1] * dims[d - 1];
  return strides[numDims - 1] * dims[numDims - 1];
}

}  // namespace BP
