// Beside the targets of the other sources, there is one more here, with dot products of bytes.
#define ORVANE_LANES_LATER_AVX512
#include "orvane/lanes/dispatch.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "orvane/lanes/fixed_dots.cc"
#include <hwy/foreach_target.h>

#include "orvane/lanes/fixed_dot_bytes-inl.h"
#include "orvane/lanes/fixed_dots-inl.h"

#if HWY_ONCE
namespace BP::lanes {

HWY_EXPORT(sumDotsOnTarget);
HWY_EXPORT(sumDotsIntoBytesOnTarget);
HWY_EXPORT(packDotsOnTarget);
HWY_EXPORT(joinDotsOnTarget);

void sumDots(const FixedDotTask& task) { HWY_DISPATCH_TABLE(sumDotsOnTarget)[targetIndex()](task); }

std::ptrdiff_t sumDotsIntoBytes(const FixedDotTask& task, const DotCast& cast, FixedCounts& counts) {
  return HWY_DISPATCH_TABLE(sumDotsIntoBytesOnTarget)[targetIndex()](task, cast, counts);
}

void packDots(DotOperands operands, const std::int32_t* taps, int columns, int rows, std::int32_t* packed) {
  HWY_DISPATCH_TABLE(packDotsOnTarget)[targetIndex()](operands, taps, columns, rows, packed);
}

void joinDots(const std::int32_t* high, const std::int32_t* low, std::int64_t start, std::ptrdiff_t count,
              std::int64_t* out) {
  HWY_DISPATCH_TABLE(joinDotsOnTarget)[targetIndex()](high, low, start, count, out);
}

}  // namespace BP::lanes
#endif
