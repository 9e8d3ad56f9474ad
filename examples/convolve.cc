// Convolves a 4 by 3 image with a 2 by 2 filter and prints the 3 by 2 result.
#include <cstdio>
#include <vector>

#include "orvane/orvane.h"

int main() {
  using namespace orvane;
  const std::vector<double> pixels = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12};
  const std::vector<double> weights = {0.5, 0.25, 0.125, 0.125};
  const ArrayView image(pixels, {4, 3}), filter(weights, {2, 2});  // width, height

  const Array<double> result = convolve(image, filter, {.mode = OutputMode::valid});

  for (std::size_t row = 0; row < result.size(); row += 3) {
    std::printf("%g %g %g\n", result[row], result[row + 1], result[row + 2]);
  }
}
