// What itk::MedianImageFilter of radius 1 would do to a requested region of a picture.
#include <cstdint>
#include <cstdio>
#include <vector>

#include "orvane/orvane.h"

int main() {
  using namespace orvane;
  const std::vector<std::int16_t> pixels = {1, 2,  3,  4,  //
                                            5, 99, 7,  8,  //
                                            9, 10, 11, 12};
  const Array<std::int16_t> clean = median(ArrayView(pixels, {4, 3}), {3, 3});  // radius r: 2 r + 1

  const auto region = clean.view().subview({1, 0}, {2, 3});
  for (int y = 0; y < 3; ++y) std::printf("%d %d\n", region(0, y), region(1, y));
}
