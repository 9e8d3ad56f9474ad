// Smooths a part of a frame whose rows are padded, into a part of another one, without a copy.
#include <cstdio>
#include <vector>

#include "orvane/filters/convolution.h"

int main() {
  using namespace BP::filters;
  const std::vector<float> memory(8 * 4, 1.0F);  // 4 rows of 6 pixels; each row begins 8 elements after the last
  std::vector<float> canvas(10 * 4);
  const ArrayView frame(memory, {6, 4}, 8);
  const ArrayView target(canvas, {10, 4});

  const Array<float> filter({3, 1}, {0.25F, 0.5F, 0.25F});
  convolveInto(frame.subview({1, 1}, {5, 2}), filter, target.subview({4, 1}, {3, 2}), {.mode = OutputMode::valid});

  for (int y = 0; y < 4; ++y) {
    for (int x = 0; x < 10; ++x) std::printf("%g ", target(x, y));
    std::printf("\n");
  }
}
