// Medians of 8-bit pixels under a window of four: with an exact mean, and with one that is summed in 8 bits.
#include <cstdint>
#include <cstdio>
#include <vector>

#include "orvane/orvane.h"

int main() {
  using namespace orvane;
  const std::vector<std::uint8_t> pixels = {10, 13, 255, 16, 200, 203, 204};
  const FixedType pixel = fixedType("u8.0");
  const FixedView line(ArrayView(pixels, {7}), pixel);

  const MedianOptions inside{.mode = OutputMode::valid};
  FixedMedian exact({4}, {7}, {.input = pixel, .modes = {.rounding = Rounding::convergent}}, inside);
  FixedMedian narrow({4}, {7}, {.input = pixel, .accumulator = pixel, .modes = {.rounding = Rounding::convergent}},
                     inside);
  for (FixedMedian* median : {&exact, &narrow}) {
    for (const double value : toDouble(median->run(line))) std::printf("%g ", value);
    std::printf("\n");
  }
  const FixedStatistics output = exact.statistics().front();
  std::printf("%s: %d of %d rounded, %g to %g\n", output.label.c_str(), static_cast<int>(output.lossy),
              static_cast<int>(output.casts), output.minimum, output.maximum);
}
