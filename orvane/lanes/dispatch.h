#pragma once

// Included before anything of Highway, in each source of this folder: all of them have to agree on the list of targets.

/// The plain C++ target is wanted beside the fastest ones, as a yardstick and for machines without any of them.
#define HWY_COMPILE_ALL_ATTAINABLE
/// Plain C++ is one value a time, not the emulation of a vector.
#define HWY_BROKEN_EMU128 1
/// Vectors without a constant length cannot be array elements, which accumulators are. SSSE3 brings nothing to these
/// sums, and neither do the later extensions of AVX-512, except to a source that defines this macro.
#ifdef ORVANE_LANES_LATER_AVX512
#define HWY_WANT_AVX3_DL
#define HWY_DISABLED_TARGETS (HWY_SSSE3 | HWY_SVE | HWY_SVE2 | HWY_SVE_256 | HWY_SVE2_128 | HWY_RVV)
#else
#define HWY_DISABLED_TARGETS (HWY_SSSE3 | HWY_AVX3_DL | HWY_SVE | HWY_SVE2 | HWY_SVE_256 | HWY_SVE2_128 | HWY_RVV)
#endif

#include <hwy/targets.h>

#include <cstddef>
#include <cstdint>

namespace BP::lanes {

/// Highway's bit of the target in use.
std::int64_t targetInUse();

/// Place of the target in use in a table that `HWY_EXPORT` makes. Highway's own choice is not asked: it belongs to the
/// whole process, and other users of Highway may live there.
static inline std::size_t indexOfTarget(std::int64_t target) {
  if constexpr ((HWY_TARGETS & (HWY_TARGETS - 1)) == 0) return 0;
  const std::int64_t places = HWY_CHOSEN_TARGET_SHIFT(target) | HWY_CHOSEN_TARGET_MASK_SCALAR;
  return hwy::Num0BitsBelowLS1Bit_Nonzero64(static_cast<std::uint64_t>(places));
}
static inline std::size_t targetIndex() {
  const std::int64_t target = targetInUse();
  return indexOfTarget(target == HWY_AVX3_DL && (HWY_TARGETS & HWY_AVX3_DL) == 0 ? std::int64_t{HWY_AVX3} : target);
}

}  // namespace BP::lanes
