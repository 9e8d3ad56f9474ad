// Takes a speck out of a line with a step, by a window of an odd and one of an even width.
#include <cstdio>
#include <vector>

#include "orvane/orvane.h"

int main() {
  using namespace orvane;
  const std::vector<float> values = {1, 2, 99, 3, 4, 20, 20};
  const ArrayView line(values, {7});

  for (const std::int64_t width : {3, 4}) {
    const Array<float> clean = median(line, {width});
    for (const float value : clean) std::printf("%g ", value);
    std::printf("\n");
  }
}
