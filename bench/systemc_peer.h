#pragma once

#include <vector>

#include "bench/harness.h"

namespace bench {

/// Sums of products of 16-bit values in SystemC: products of 32 bits, with 20 of them behind the point, are rounded to
/// the nearest and saturate, and so do the sums.
struct SystemCSums {
  int sumWord = 40;
  int sumInteger = 24;  ///< bits before the point
  double taps = 1;      ///< of an output, whose time is measured
};
Sampler systemCFix(const SystemCSums& sums);
Sampler systemCFixFast(const SystemCSums& sums);

/// 1024 values between -7.9 and 7.9.
std::vector<double> fixedSamples(unsigned seed);

}  // namespace bench
