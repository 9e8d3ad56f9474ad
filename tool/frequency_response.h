#pragma once

#include <vector>

#include "tool/kernel.h"

namespace BP::tool {

/// What a kernel does to waves of each frequency.
struct FrequencyResponse {
  int side = 0;                ///< frequencies along each dimension, an odd number
  std::vector<double> values;  ///< magnitudes, row by row: frequencies from -1/2 to 1/2 of a turn a pixel
  double greatest = 0;
};

/// The magnitude of the kernel's Fourier transform,
///
///     |sum over x, y of h(x, y) * exp(-2 pi i (fx x + fy y))|      for fx, fy = k / 128, k = -64 .. 64
///
/// with the same bits on every machine.
FrequencyResponse frequencyResponse(const FilterKernel& kernel);

}  // namespace BP::tool
