// What a func of Halide would do that sums input(x + r.x, y + r.y) * kernel(r.x, r.y) over an RDom of 3 by 3 about the
// pixel, with BoundaryConditions::repeat_edge and a saturating cast to uint8_t.
#include <cstdint>
#include <cstdio>
#include <vector>

#include "orvane/orvane.h"

int main() {
  using namespace orvane;
  const std::vector<std::uint8_t> input = {0, 0, 0, 0, 250, 250, 0, 250, 250};
  const std::vector<float> kernel = {-1, 0, 1, -2, 0, 2, -1, 0, 1};

  Convolution<std::uint8_t, float> sobel(ArrayView(kernel, {3, 3}), {3, 3},
                                         {.direction = FilterDirection::correlation});  // compiled once, run often
  Array<std::uint8_t> output({3, 3});
  const auto clipped = sobel.runRounded(ArrayView(input, {3, 3}), output);
  for (const std::uint8_t value : output) std::printf("%d ", value);
  std::printf("(%d clipped)\n", static_cast<int>(clipped));
}
