#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "orvane/lanes/integer_differences.h"
#include "orvane/lanes/sum_kernels.h"

// What the sources of integer differences and the kernels of each target share.

namespace BP::lanes {

/// The kernels of one target.
struct IntegerKernels {
  using Function = void(const SumTask<std::int32_t>&);
  std::array<Function*, 4> score;  ///< in the order of `IntegerTerm`
  /// Differences of bytes. The taps of a row are 8 in a value, the last one filled up with zeros.
  void (*scoreBytes)(const SumTask<std::int32_t>&);
  void (*makeWindows)(std::int32_t* line, std::ptrdiff_t length);
};

/// The kernels of the target in use.
const IntegerKernels& integerKernels();

}  // namespace BP::lanes
