// The kernels of whole numbers: the blocks of sums with other elements. Included once for each target.

#if defined(ORVANE_LANES_INTEGER_DIFFERENCES_INL) == defined(HWY_TARGET_TOGGLE)
#ifdef ORVANE_LANES_INTEGER_DIFFERENCES_INL
#undef ORVANE_LANES_INTEGER_DIFFERENCES_INL
#else
#define ORVANE_LANES_INTEGER_DIFFERENCES_INL
#endif

#include <hwy/highway.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>

#include "orvane/lanes/integer_kernels.h"
#include "orvane/lanes/sum_elements-inl.h"
#include "orvane/lanes/sums-inl.h"

HWY_BEFORE_NAMESPACE();
namespace BP::lanes {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

#if HWY_TARGET == HWY_AVX2 || HWY_TARGET == HWY_SSE4
/// There is no population count here: half bytes are looked up, and two neighbouring bytes joined. A sum holds two
/// counts of 16 bits, which are joined at the end; a template has few enough taps for that.
HWY_INLINE __m128i joinBytes(__m128i counts) { return _mm_maddubs_epi16(counts, _mm_set1_epi8(1)); }
HWY_INLINE __m128i joinPairs(__m128i pairs) { return _mm_madd_epi16(pairs, _mm_set1_epi16(1)); }
#if HWY_TARGET == HWY_AVX2
HWY_INLINE __m256i joinBytes(__m256i counts) { return _mm256_maddubs_epi16(counts, _mm256_set1_epi8(1)); }
HWY_INLINE __m256i joinPairs(__m256i pairs) { return _mm256_madd_epi16(pairs, _mm256_set1_epi16(1)); }
#endif

template <class D>
HWY_INLINE hn::Vec<D> addCount(D d, hn::Vec<D> sum, hn::Vec<D> bits) {
  const hn::Repartition<std::uint8_t, D> bytes;
  const hn::Repartition<std::int16_t, D> words;
  alignas(16) static constexpr std::uint8_t counts[16] = {0, 1, 1, 2, 1, 2, 2, 3, 1, 2, 2, 3, 2, 3, 3, 4};
  // The table is whole even where the vector is narrower.
  const std::conditional_t<(lanesOf<D> > 4), decltype(bytes), hn::Full128<std::uint8_t>> whole;
  const auto table = hn::LoadDup128(whole, counts);
  const auto half = hn::Set(bytes, std::uint8_t{15});
  const auto low = hn::And(hn::BitCast(bytes, bits), half);
  const auto high = hn::And(hn::BitCast(bytes, hn::ShiftRight<4>(bits)), half);
  const auto count = hn::Add(hn::TableLookupBytes(table, low), hn::TableLookupBytes(table, high));
  return hn::BitCast(d, hn::Add(hn::BitCast(words, sum), hn::Vec<decltype(words)>{joinBytes(count.raw)}));
}

template <class D>
HWY_INLINE hn::Vec<D> totalCount(D /*tag*/, hn::Vec<D> sum) {
  return hn::Vec<D>{joinPairs(sum.raw)};
}
#else
template <class D>
HWY_INLINE hn::Vec<D> addCount(D d, hn::Vec<D> sum, hn::Vec<D> bits) {
  return hn::Add(sum, hn::BitCast(d, hn::PopulationCount(hn::BitCast(hn::RebindToUnsigned<D>(), bits))));
}

template <class D>
HWY_INLINE hn::Vec<D> totalCount(D /*tag*/, hn::Vec<D> sum) {
  return sum;
}
#endif

/// Whole numbers. Sums are pinned, as compilers regroup the additions of integers and run out of registers.
template <class Tag, IntegerTerm term>
struct IntegerDifference {
  using D = Tag;
  using T = hn::TFromD<D>;
  using V = hn::Vec<D>;
  using Narrower = IntegerDifference<NarrowerTag<D, 1>, term>;
  static constexpr bool isBits = term == IntegerTerm::unequalBits;
  struct In {
    V x;
    HWY_INLINE void keep() { keepInRegister(x); }
  };
  struct Tap {
    V h, mask;
    HWY_INLINE void keep() {
      keepInRegister(h);
      if constexpr (isBits) keepInRegister(mask);
    }
  };
  struct Sum {
    V sum;
  };
  static constexpr int inRegisters = 1, tapRegisters = isBits ? 5 : 2, sumRegisters = 1, tapSize = isBits ? 2 : 1;
  static constexpr int tapParts = 1, mostRows = 4;
  static constexpr bool hasOneColumnForm = false;
  static constexpr std::ptrdiff_t lanes = lanesOf<D>;

  static HWY_INLINE Sum zero() { return {hn::Zero(D())}; }
  static HWY_INLINE In load(const T* p) { return {hn::LoadU(D(), p)}; }
  static HWY_INLINE Tap loadTap(const T* p) {
    const V h = hn::Set(D(), p[0]);
    return {h, isBits ? hn::Set(D(), p[tapSize - 1]) : h};
  }
  template <int part>
  static HWY_INLINE void add(Sum& s, const In& in, const Tap& tap) {
    if constexpr (isBits) {
      s.sum = addCount(D(), s.sum, hn::And(hn::Xor(in.x, tap.h), tap.mask));
    } else {
      const V d = hn::Sub(in.x, tap.h);
      if constexpr (term == IntegerTerm::absoluteDifference) {
        s.sum = hn::Add(s.sum, hn::Abs(d));
      } else if constexpr (term == IntegerTerm::squaredDifference) {
        s.sum = hn::Add(s.sum, hn::Mul(d, d));
      } else {
        s.sum = hn::Max(s.sum, hn::Abs(d));
      }
    }
    keepInRegister(s.sum);
  }
  static HWY_INLINE void store(const SumTask<T>& task, int row, std::ptrdiff_t at, const Sum& s) {
    hn::StoreU(isBits ? totalCount(D(), s.sum) : s.sum, D(), task.out[row] + at);
  }
};

/// line[i] := line[i] with the `count` values from i + count on in the higher bits.
template <int count>
void joinBits(std::int32_t* line, std::ptrdiff_t length) {
  const hn::ScalableTag<std::int32_t> d;
  for (std::ptrdiff_t i = 0; i < length; i += lanesOf<decltype(d)>) {
    hn::StoreU(hn::Or(hn::LoadU(d, line + i), hn::ShiftLeft<count>(hn::LoadU(d, line + i + count))), d, line + i);
  }
}

/// Makes a line of bits, followed by zeros, one of windows: pairs of bits, pairs of pairs and so on.
inline void makeWindows(std::int32_t* line, std::ptrdiff_t length) {
  joinBits<1>(line, length);
  joinBits<2>(line, length);
  joinBits<4>(line, length);
  joinBits<8>(line, length);
  joinBits<16>(line, length);
}

/// The bytes of a row that belong to group `g` of 8 columns.
inline std::uint64_t byteMask(int columns, int g) {
  const int count = columns - 8 * g;
  return count >= 8 ? ~std::uint64_t{0} : (std::uint64_t{1} << 8 * count) - 1;
}

#if HWY_ARCH_X86 && HWY_TARGET != HWY_SCALAR

/// The sum of the absolute differences of 8 bytes in each part of 64 bits.
template <class Parts, class V>
HWY_INLINE hn::Vec<Parts> sumsOf8(Parts /*tag*/, V a, V b) {
#if HWY_TARGET == HWY_AVX3 || HWY_TARGET == HWY_AVX3_DL
  return hn::Vec<Parts>{_mm512_sad_epu8(a.raw, b.raw)};
#elif HWY_TARGET == HWY_AVX2
  return hn::Vec<Parts>{_mm256_sad_epu8(a.raw, b.raw)};
#else
  return hn::Vec<Parts>{_mm_sad_epu8(a.raw, b.raw)};
#endif
}

/// One row of as many outputs as a vector has bytes. Loads begin at 8 neighbouring bytes, and each part of 64 bits sums
/// 8 differences of one output: part i of load p is output 8 i + p.
inline void scoreByteBlock(const SumTask<std::int32_t>& task, int row, std::ptrdiff_t at) {
  const hn::ScalableTag<std::uint8_t> bytes;
  const hn::ScalableTag<std::uint64_t> parts;
  using V = hn::Vec<decltype(parts)>;
  const int groups = (task.columns + 7) / 8;
  const auto* taps = reinterpret_cast<const char*>(task.taps);
  V sums[8];
  ORVANE_UNROLL
  for (V& sum : sums) sum = hn::Zero(parts);
  for (int j = 0; j < task.filterRows; ++j) {
    const auto* x = reinterpret_cast<const std::uint8_t*>(task.lines[row + j]) + at;
    for (int g = 0; g < groups; ++g, x += 8, taps += sizeof(std::uint64_t)) {
      std::uint64_t eight;
      std::memcpy(&eight, taps, sizeof eight);
      V h = hn::Set(parts, eight);
      keepInRegister(h);
      const bool isWhole = 8 * g + 8 <= task.columns;
      const V mask = hn::Set(parts, byteMask(task.columns, g));
      ORVANE_UNROLL
      for (int p = 0; p < 8; ++p) {
        auto window = hn::LoadU(bytes, x + p);
        if (!isWhole) window = hn::And(window, hn::BitCast(bytes, mask));
        sums[p] = hn::Add(sums[p], sumsOf8(parts, window, hn::BitCast(bytes, h)));
        keepInRegister(sums[p]);
      }
    }
  }
  ORVANE_UNROLL
  for (int p = 0; p < 8; p += 2) sums[p] = hn::Or(sums[p], hn::ShiftLeft<32>(sums[p + 1]));
  auto* const out = reinterpret_cast<std::uint64_t*>(task.out[row] + at);
  hn::StoreInterleaved4(sums[0], sums[2], sums[4], sums[6], parts, out);
}

inline void scoreBytes(const SumTask<std::int32_t>& task) {
  for (int row = 0; row < task.rows; ++row) {
    for (std::ptrdiff_t at = 0; at < task.width; at += lanesOf<hn::ScalableTag<std::uint8_t>>) {
      scoreByteBlock(task, row, at);
    }
  }
}

#else

inline void scoreBytes(const SumTask<std::int32_t>& task) {
  const int groups = (task.columns + 7) / 8;
  for (int row = 0; row < task.rows; ++row) {
    for (std::ptrdiff_t at = 0; at < task.width; ++at) {
      std::int32_t sum = 0;
      for (int j = 0; j < task.filterRows; ++j) {
        const auto* const x = reinterpret_cast<const std::uint8_t*>(task.lines[row + j]) + at;
        const auto* const taps = reinterpret_cast<const std::uint8_t*>(task.taps) + std::ptrdiff_t{8} * groups * j;
        for (int c = 0; c < task.columns; ++c) sum += x[c] > taps[c] ? x[c] - taps[c] : taps[c] - x[c];
      }
      task.out[row][at] = sum;
    }
  }
}

#endif

constexpr IntegerKernels makeIntegerKernels() {
  using D = hn::ScalableTag<std::int32_t>;
  return {{computeSums<IntegerDifference<D, IntegerTerm::absoluteDifference>>,
           computeSums<IntegerDifference<D, IntegerTerm::squaredDifference>>,
           computeSums<IntegerDifference<D, IntegerTerm::greatestDifference>>,
           computeSums<IntegerDifference<D, IntegerTerm::unequalBits>>},
          scoreBytes,
          makeWindows};
}

}  // namespace HWY_NAMESPACE
}  // namespace BP::lanes
HWY_AFTER_NAMESPACE();

#endif
