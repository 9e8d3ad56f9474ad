// Sharpens a line of 8-bit pixels as a circuit would, and prints what overflowed where.
#include <cstdint>
#include <cstdio>
#include <vector>

#include "orvane/orvane.h"

int main() {
  using namespace orvane;
  const std::vector<std::uint8_t> pixels = {10, 10, 200, 250, 250, 30};
  const std::vector<double> weights = {-0.25, 1.5, -0.25};
  const FixedType pixel = fixedType("u8.0");

  const FixedArray filter = quantise(ArrayView(weights, {3}), fixedType("s8.6"));
  FixedConvolution sharpen(filter, {6},
                           {.input = pixel,
                            .accumulator = fixedType("s20.6"),
                            .output = pixel,
                            .modes = {.rounding = Rounding::convergent}});
  const FixedArray result = sharpen.run(FixedView(ArrayView(pixels, {6}), pixel));

  for (const double value : toDouble(result)) std::printf("%g ", value);
  std::printf("\n");
  for (const FixedStatistics& s : sharpen.statistics()) {
    std::printf("%s: %d of %d overflowed, %g to %g\n", s.label.c_str(), static_cast<int>(s.overflows),
                static_cast<int>(s.casts), s.minimum, s.maximum);
  }
}
