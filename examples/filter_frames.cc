// Smooths several frames of one size with one object, and shows what becomes of a mistake.
#include <cstdio>
#include <exception>
#include <vector>

#include "orvane/orvane.h"

int main() {
  using namespace orvane;
  const std::vector<float> across = {0.25F, 0.5F, 0.25F}, down = {0.5F, 0.5F};
  SeparableConvolution<float> smooth(ArrayView(across, {3}), ArrayView(down, {2}), {3, 2});

  Array<float> frame({3, 2}), result(smooth.outputExtents());
  for (int number = 1; number <= 2; ++number) {
    frame[0] = 16.0F * static_cast<float>(number);
    smooth.run(frame, result);
    std::printf("%g %g %g, %g %g %g\n", result[0], result[1], result[2], result[3], result[4], result[5]);
  }

  try {
    smooth.run(Array<float>({2, 3}), result);
  } catch (const std::exception& error) {
    std::printf("%s\n", error.what());
  }
}
