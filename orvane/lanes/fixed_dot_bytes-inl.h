// Sums of grouped products that are cast into bytes before they leave the registers. Included once for each target.

#if defined(ORVANE_LANES_FIXED_DOT_BYTES_INL) == defined(HWY_TARGET_TOGGLE)
#ifdef ORVANE_LANES_FIXED_DOT_BYTES_INL
#undef ORVANE_LANES_FIXED_DOT_BYTES_INL
#else
#define ORVANE_LANES_FIXED_DOT_BYTES_INL
#endif

#include <hwy/highway.h>

#include <algorithm>

#include "orvane/lanes/fixed_casts-inl.h"
#include "orvane/lanes/fixed_dots-inl.h"

HWY_BEFORE_NAMESPACE();
namespace BP::lanes {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

#if HWY_TARGET == HWY_AVX3_DL || HWY_TARGET == HWY_AVX2

/// The cast of a group of accumulators into bytes, with its counts.
template <bool isPlain, bool isSigned, bool counts>
class ByteCast {
  using WordTag = hn::Repartition<std::int16_t, DotTag>;
  using Words = hn::Vec<WordTag>;

 public:
  explicit HWY_INLINE ByteCast(const FixedCast& given)
      : cast(given),
        least(hn::Set(WordTag(), static_cast<std::int16_t>(std::max<std::int64_t>(given.range.least, -32768)))),
        greatest(hn::Set(WordTag(), static_cast<std::int16_t>(std::min<std::int64_t>(given.range.greatest, 32767)))),
        lossless(hn::Zero(DotTag())),
        fitting(hn::Zero(WordTag())) {}

  /// Stores the group's outputs: its accumulators hold one phase each.
  HWY_INLINE void store(const DotVector* s, std::uint8_t* to) {
#if HWY_TARGET == HWY_AVX3_DL
    alignas(16) static constexpr std::uint8_t order[16] = {0, 4, 8, 12, 1, 5, 9, 13, 2, 6, 10, 14, 3, 7, 11, 15};
    const Words low = words(s[0], s[1]), high = words(s[2], s[3]);
    const auto packed = isSigned ? _mm512_packs_epi16(low.raw, high.raw) : _mm512_packus_epi16(low.raw, high.raw);
    const auto orders = _mm512_broadcast_i32x4(_mm_load_si128(reinterpret_cast<const __m128i*>(order)));
    _mm512_storeu_si512(to, _mm512_shuffle_epi8(packed, orders));
#else
    alignas(16) static constexpr std::uint8_t order[16] = {0, 4, 1, 5, 2, 6, 3, 7, 0, 4, 1, 5, 2, 6, 3, 7};
    const Words both = words(s[0], s[1]);
    const auto packed = isSigned ? _mm256_packs_epi16(both.raw, both.raw) : _mm256_packus_epi16(both.raw, both.raw);
    const auto orders = _mm256_broadcastsi128_si256(_mm_load_si128(reinterpret_cast<const __m128i*>(order)));
    const auto ordered = _mm256_permute4x64_epi64(_mm256_shuffle_epi8(packed, orders), 8);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(to), _mm256_castsi256_si128(ordered));
#endif
  }

  /// Adds the counts of `casts` casts: few enough for lanes of 16 bits.
  HWY_INLINE void addTo(FixedCounts& all, std::uint64_t casts) const {
    if constexpr (!counts) return;
    all.casts += casts;
    all.lossy += casts - total<std::int32_t>(lossless);
    all.overflows += casts - total<std::uint16_t>(hn::BitCast(hn::RebindToUnsigned<WordTag>(), fitting));
  }

 private:
  /// Two accumulators rounded and cut to the range, as words: the first in the lower half of each 128 bits.
  HWY_INLINE Words words(DotVector a, DotVector b) {
    if constexpr (counts) {
      CastCounts<DotTag>::template addWhere<true>(lossless, cast.losesNothing(a), a);
      CastCounts<DotTag>::template addWhere<true>(lossless, cast.losesNothing(b), b);
    }
    const DotVector first = cast.template rounded<isPlain>(a), second = cast.template rounded<isPlain>(b);
#if HWY_TARGET == HWY_AVX3_DL
    const Words both{_mm512_packs_epi32(first.raw, second.raw)};
#else
    const Words both{_mm256_packs_epi32(first.raw, second.raw)};
#endif
    const Words result = hn::Min(hn::Max(both, least), greatest);
    if constexpr (counts) fitting = hn::Sub(fitting, hn::VecFromMask(WordTag(), hn::Eq(result, both)));
    return result;
  }

  template <class T, class V>
  static HWY_INLINE std::uint64_t total(V v) {
    constexpr auto lanes = hn::MaxLanes(hn::ScalableTag<T>());
    T values[lanes];
    hn::StoreU(v, hn::ScalableTag<T>(), values);
    std::uint64_t sum = 0;
    for (const T value : values) sum += static_cast<std::uint64_t>(value);
    return sum;
  }

  CastNumbers<DotTag> cast;
  Words least, greatest;
  DotVector lossless;
  Words fitting;
};

template <class Operands, int rows, bool isSmall, class Cast>
HWY_NOINLINE void sumRowsIntoBytes(const FixedDotTask& task, int row, std::ptrdiff_t width, const DotCast& given,
                                   FixedCounts& all) {
  using Block = DotBlock<Operands, rows, isSmall>;
  Cast cast(given.cast);
  for (std::ptrdiff_t next = 0; next < width; next += Block::width) {
    const std::ptrdiff_t at = std::min(next, width - Block::width);  // the last block overlaps the one before
    typename Block::Sums sums;
    Block::compute(sums, task, row, at);
    Block::forEachGroup(sums, given.to + row, at,
                        [&](const DotVector* group, std::uint8_t* to) ORVANE_INLINE_LAMBDA { cast.store(group, to); });
  }
  cast.addTo(all, std::uint64_t(width) * rows);
}

template <class Operands, bool isPlain, bool isSigned, bool counts>
std::ptrdiff_t sumIntoBytes(const FixedDotTask& task, const DotCast& given, FixedCounts& all) {
  constexpr std::ptrdiff_t block = DotBlock<Operands, 1>::width;
  if (task.width < block) return 0;
  const std::ptrdiff_t width = counts ? task.width - task.width % block : task.width;
  forEachDotRows(task, [&](auto rows, int row) {
    using Cast = ByteCast<isPlain, isSigned, counts>;
    if (DotBlock<Operands, rows()>::isSmallEnough(task)) {
      sumRowsIntoBytes<Operands, rows(), true, Cast>(task, row, width, given, all);
    } else {
      sumRowsIntoBytes<Operands, rows(), false, Cast>(task, row, width, given, all);
    }
  });
  return width;
}

template <class Operands, bool isPlain, bool isSigned>
std::ptrdiff_t sumIntoBytesOf(const FixedDotTask& task, const DotCast& cast, FixedCounts& all) {
  return cast.counts ? sumIntoBytes<Operands, isPlain, isSigned, true>(task, cast, all)
                     : sumIntoBytes<Operands, isPlain, isSigned, false>(task, cast, all);
}
template <class Operands>
std::ptrdiff_t sumIntoBytesOf(const FixedDotTask& task, const DotCast& cast, FixedCounts& all) {
  if (cast.cast.rounder.isPlain) {
    return cast.isSigned ? sumIntoBytesOf<Operands, true, true>(task, cast, all)
                         : sumIntoBytesOf<Operands, true, false>(task, cast, all);
  }
  return cast.isSigned ? sumIntoBytesOf<Operands, false, true>(task, cast, all)
                       : sumIntoBytesOf<Operands, false, false>(task, cast, all);
}

inline std::ptrdiff_t sumDotsIntoBytesOnTarget(const FixedDotTask& task, const DotCast& cast, FixedCounts& all) {
  switch (task.operands) {
    case DotOperands::bytes: return sumIntoBytesOf<ByteDots<std::uint8_t>>(task, cast, all);
    case DotOperands::signedBytes: return sumIntoBytesOf<ByteDots<std::int8_t>>(task, cast, all);
    default: return 0;
  }
}

#else

inline std::ptrdiff_t sumDotsIntoBytesOnTarget(const FixedDotTask&, const DotCast&, FixedCounts&) { return 0; }

#endif

}  // namespace HWY_NAMESPACE
}  // namespace BP::lanes
HWY_AFTER_NAMESPACE();

#endif
