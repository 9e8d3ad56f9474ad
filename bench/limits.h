#pragma once

#include "bench/harness.h"

namespace bench {

/// ns that one multiplication of type T with an addition takes at best in the vector target in use, if both round: as
/// many independent sums in registers as the processor can work at, no memory. T is `float` or `double`.
template <class T>
Sampler arithmeticPeak();

/// The same for a difference, its magnitude or its square, and an addition: the taps of matching.
template <class T>
Sampler differencePeak(bool squared);

/// ns for copying one element of `bytes` bytes, in an array of `count` of them.
Sampler memoryCopy(std::int64_t count, int bytes);

}  // namespace bench
