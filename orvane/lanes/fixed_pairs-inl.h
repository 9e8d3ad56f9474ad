// Exact sums of pairs of 16-bit products. Included once for each target.
//
// Loads at two neighbouring values feed two accumulators: part i of the first is output 2 i, of the second output
// 2 i + 1. So no lane has to move before the sums are stored.

#if defined(ORVANE_LANES_FIXED_PAIRS_INL) == defined(HWY_TARGET_TOGGLE)
#ifdef ORVANE_LANES_FIXED_PAIRS_INL
#undef ORVANE_LANES_FIXED_PAIRS_INL
#else
#define ORVANE_LANES_FIXED_PAIRS_INL
#endif

#include <hwy/highway.h>

#include <cstring>

#include "orvane/lanes/fixed_sums.h"
#include "orvane/lanes/sum_elements-inl.h"

HWY_BEFORE_NAMESPACE();
namespace BP::lanes {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

using PairTag = hn::ScalableTag<std::int32_t>;
using PairVector = hn::Vec<PairTag>;

/// Pairs of neighbouring values from `p` on.
HWY_INLINE PairVector loadPairs(const std::int16_t* p) {
#if HWY_TARGET == HWY_SCALAR
  std::int32_t pair;
  std::memcpy(&pair, p, sizeof pair);
  return hn::Set(PairTag(), pair);
#else
  return hn::BitCast(PairTag(), hn::LoadU(hn::Repartition<std::int16_t, PairTag>(), p));
#endif
}

/// x.low * h.low + x.high * h.high for each pair.
HWY_INLINE PairVector pairProducts(PairVector x, PairVector h) {
#if HWY_TARGET == HWY_AVX3
  return PairVector{_mm512_madd_epi16(x.raw, h.raw)};
#elif HWY_TARGET == HWY_AVX2
  return PairVector{_mm256_madd_epi16(x.raw, h.raw)};
#elif HWY_TARGET == HWY_SSE4
  return PairVector{_mm_madd_epi16(x.raw, h.raw)};
#else
  const auto low = [](PairVector v) HWY_ATTR { return hn::ShiftRight<16>(hn::ShiftLeft<16>(v)); };
  return hn::Add(hn::Mul(low(x), low(h)), hn::Mul(hn::ShiftRight<16>(x), hn::ShiftRight<16>(h)));
#endif
}

/// `count` blocks of outputs, each of two vectors, from `at` on.
template <int count>
HWY_INLINE void sumPairBlocks(const FixedPairTask& task, int row, std::ptrdiff_t at) {
  constexpr std::ptrdiff_t block = 2 * lanesOf<PairTag>;
  PairVector sums[std::size_t{count}][2];
  for (auto& sum : sums) sum[0] = sum[1] = hn::Zero(PairTag());
  const std::int32_t* pair = task.pairs;
  for (int j = 0; j < task.filterRows; ++j) {
    const std::int16_t* x = task.lines[row + j] + at;
    for (int c = 0; c < task.columns; c += 2, x += 2) {
      PairVector h = hn::Set(PairTag(), *pair++);
      keepInRegister(h);
      for (int v = 0; v < count; ++v) {
        for (int offset = 0; offset < 2; ++offset) {
          sums[v][offset] = hn::Add(sums[v][offset], pairProducts(loadPairs(x + v * block + offset), h));
          keepInRegister(sums[v][offset]);
        }
      }
    }
  }
  for (int v = 0; v < count; ++v) {
#if HWY_TARGET == HWY_SCALAR
    for (int offset = 0; offset < 2; ++offset)
      hn::StoreU(sums[v][offset], PairTag(), task.out[row] + at + v * block + offset);
#else
    hn::StoreInterleaved2(sums[v][0], sums[v][1], PairTag(), task.out[row] + at + v * block);
#endif
  }
}

inline void sumPairsOnTarget(const FixedPairTask& task) {
  constexpr std::ptrdiff_t block = 2 * lanesOf<PairTag>;
  constexpr int most = 80 / block >= 4 ? 4 : 2;
  for (int row = 0; row < task.rows; ++row) {
    std::ptrdiff_t at = 0;
    for (; at + most * block <= task.width; at += most * block) sumPairBlocks<most>(task, row, at);
    for (; at < task.width; at += block) sumPairBlocks<1>(task, row, at);
  }
}

}  // namespace HWY_NAMESPACE
}  // namespace BP::lanes
HWY_AFTER_NAMESPACE();

#endif
