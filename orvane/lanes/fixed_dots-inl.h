// Exact sums of grouped products. Included once for each target.
//
// A lane of 32 bits takes the products of a *group* of G neighbouring columns at once: 4 bytes where there are dot
// products of bytes, else 2 words. A load at value o gives lane i the values from o + G i on, so the loads at values
// 0 to G - 1, the *phases*, feed G accumulators: lane i of accumulator p is output G i + p. No lane moves before the
// sums are complete. A block has a few output rows, which share the loads of their lines.

#if defined(ORVANE_LANES_FIXED_DOTS_INL) == defined(HWY_TARGET_TOGGLE)
#ifdef ORVANE_LANES_FIXED_DOTS_INL
#undef ORVANE_LANES_FIXED_DOTS_INL
#else
#define ORVANE_LANES_FIXED_DOTS_INL
#endif

#include <hwy/highway.h>

#include <algorithm>
#include <cstring>

#include "orvane/lanes/fixed_dots.h"
#include "orvane/lanes/inline_lambda.h"
#include "orvane/lanes/sum_elements-inl.h"

HWY_BEFORE_NAMESPACE();
namespace BP::lanes {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

using DotTag = hn::ScalableTag<std::int32_t>;
using DotVector = hn::Vec<DotTag>;

/// s := s + x.low * h.low + x.high * h.high for each pair of words. Additions of intrinsics would be regrouped by the
/// compiler, and accumulators would no longer stay in registers.
HWY_INLINE void addPairs(DotVector& s, DotVector x, DotVector h) {
#if HWY_TARGET == HWY_AVX3_DL
  asm("vpdpwssd %2, %1, %0" : "+v"(s.raw) : "v"(x.raw), "v"(h.raw));
#else
#if HWY_TARGET == HWY_AVX3
  const DotVector products{_mm512_madd_epi16(x.raw, h.raw)};
  asm("vpaddd %1, %0, %0" : "+v"(s.raw) : "v"(products.raw));
#elif HWY_TARGET == HWY_AVX2
  const DotVector products{_mm256_madd_epi16(x.raw, h.raw)};
  asm("vpaddd %1, %0, %0" : "+x"(s.raw) : "x"(products.raw));
#elif HWY_TARGET == HWY_SSE4
  s = hn::Add(s, DotVector{_mm_madd_epi16(x.raw, h.raw)});
  keepInRegister(s);
#else
  const auto low = [](DotVector v) HWY_ATTR { return hn::ShiftRight<16>(hn::ShiftLeft<16>(v)); };
  s = hn::Add(s, hn::Add(hn::Mul(low(x), low(h)), hn::Mul(hn::ShiftRight<16>(x), hn::ShiftRight<16>(h))));
  keepInRegister(s);
#endif
#endif
}

/// Words as they are stored.
struct WordDots {
  using Element = std::int16_t;
  static constexpr int group = 2;
  static HWY_INLINE DotVector load(const Element* p) {
#if HWY_TARGET == HWY_SCALAR
    std::int32_t pair;
    std::memcpy(&pair, p, sizeof pair);
    return hn::Set(DotTag(), pair);
#else
    return hn::BitCast(DotTag(), hn::LoadU(hn::Repartition<Element, DotTag>(), p));
#endif
  }
  static HWY_INLINE void add(DotVector& s, DotVector x, DotVector h) { addPairs(s, x, h); }
};

/// Bytes, which are widened to words where there are no dot products of bytes.
template <class Byte>
struct ByteDots {
  using Element = Byte;
#if HWY_TARGET == HWY_AVX3_DL
  static constexpr int group = 4;
  static HWY_INLINE DotVector load(const Element* p) {
    return hn::BitCast(DotTag(), hn::LoadU(hn::Repartition<Element, DotTag>(), p));
  }
  static HWY_INLINE void add(DotVector& s, DotVector x, DotVector h) {  // the unsigned operand comes first
    if constexpr (std::is_signed_v<Byte>) {
      asm("vpdpbusd %1, %2, %0" : "+v"(s.raw) : "v"(x.raw), "v"(h.raw));
    } else {
      asm("vpdpbusd %2, %1, %0" : "+v"(s.raw) : "v"(x.raw), "v"(h.raw));
    }
  }
#else
  static constexpr int group = 2;
  static HWY_INLINE DotVector load(const Element* p) {
#if HWY_TARGET == HWY_SCALAR
    const auto low = static_cast<std::uint16_t>(p[0]), high = static_cast<std::uint16_t>(p[1]);
    return hn::Set(DotTag(), static_cast<std::int32_t>(low | std::uint32_t{high} << 16));
#else
    const hn::Repartition<std::int16_t, DotTag> words;
    return hn::BitCast(DotTag(), hn::PromoteTo(words, hn::LoadU(hn::Rebind<Element, decltype(words)>(), p)));
#endif
  }
  static HWY_INLINE void add(DotVector& s, DotVector x, DotVector h) { addPairs(s, x, h); }
#endif
};

/// Blocks of `outputRows` output rows. The filter has as many rows or more; a *small* one has just as many, and
/// `smallGroups` groups of columns.
template <class Operands, int outputRows, bool isSmall = false>
struct DotBlock {
  using Element = typename Operands::Element;
  static constexpr std::ptrdiff_t lanes = lanesOf<DotTag>;
  static constexpr int group = Operands::group;
#if HWY_TARGET == HWY_AVX3_DL || HWY_TARGET == HWY_AVX3
  static constexpr int vectors = 4;
#else
  static constexpr int vectors = group;
#endif
  static constexpr std::ptrdiff_t width = vectors * lanes;
  static constexpr int smallGroups = group == 4 ? 1 : 2;
  using Sums = DotVector[std::size_t{outputRows}][std::size_t{vectors}];

  /// Computes the sums of a block which begins at output `at` of the task's row `row`.
  static HWY_INLINE void compute(Sums& sums, const FixedDotTask& task, int row, std::ptrdiff_t at) {
    forEachRow<0, outputRows>([&](auto r) ORVANE_INLINE_LAMBDA {
      forEachVector([&](auto n) ORVANE_INLINE_LAMBDA { sums[r][n] = hn::Set(DotTag(), task.start); });
    });
    addFirst<0>(sums, task, row, at);
    addLine<0, outputRows>(sums, task, row, outputRows - 1, at);
    if constexpr (!isSmall) {
      for (int i = outputRows; i < task.filterRows; ++i) addLine<0, outputRows>(sums, task, row, i, at);
    }
    addLast<0>(sums, task, row, at);
  }

  static bool isSmallEnough(const FixedDotTask& task) {
    return task.filterRows == outputRows && groupsOf(task.columns) == smallGroups;
  }

  /// Calls `take` with the accumulators of each group and the place of its first output: `out[r] + at` and so on.
  template <class T, class TakeT>
  static HWY_INLINE void forEachGroup(const Sums& sums, T* const* out, std::ptrdiff_t at, TakeT&& take) {
    forEachRow<0, outputRows>([&](auto r) ORVANE_INLINE_LAMBDA {
      take(&sums[r][0], out[r] + at);
      if constexpr (vectors > group) take(&sums[r][group], out[r] + at + group * lanes);
    });
  }

 private:
  static_assert(vectors == group || vectors == 2 * group);

  // Indices are constants from the start, because only then compilers keep the accumulators in registers for sure.
  template <int r, int last, class TakeT>
  static HWY_INLINE void forEachRow(TakeT&& take) {
    if constexpr (r < last) {
      take(std::integral_constant<int, r>());
      forEachRow<r + 1, last>(take);
    }
  }
  template <class TakeT>
  static HWY_INLINE void forEachVector(TakeT&& take) {
    forEachRow<0, vectors>(take);
  }

  static constexpr std::ptrdiff_t groupsOf(int columns) { return (columns + group - 1) / group; }

  /// Adds line i to output rows `first` to before `last`, of which row r meets it with filter row i - r.
  template <int first, int last>
  static HWY_INLINE void addLine(Sums& sums, const FixedDotTask& task, int row, int i, std::ptrdiff_t at) {
    const std::ptrdiff_t groups = isSmall ? smallGroups : groupsOf(task.columns);
    const auto* x = static_cast<const Element*>(task.lines[row + i]) + at;
    const std::int32_t* tap = task.taps + i * groups;
    if constexpr (isSmall) {
      forEachRow<0, smallGroups>(
          [&](auto j) ORVANE_INLINE_LAMBDA { addGroup<first, last>(sums, x + j * group, tap + j, groups); });
    } else {
      for (std::ptrdiff_t j = 0; j < groups; ++j, x += group, ++tap) addGroup<first, last>(sums, x, tap, groups);
    }
  }
  template <int first, int last>
  static HWY_INLINE void addGroup(Sums& sums, const Element* x, const std::int32_t* tap, std::ptrdiff_t groups) {
    DotVector in[std::size_t{vectors}];
    forEachVector([&](auto n) ORVANE_INLINE_LAMBDA {
      in[n] = Operands::load(x + n % group + n / group * (group * lanes));
      keepInRegister(in[n]);
    });
    forEachRow<first, last>([&](auto r) ORVANE_INLINE_LAMBDA {
      DotVector h = hn::Set(DotTag(), tap[-r * groups]);
      if constexpr (!isSmall) keepInRegister(h);  // the few taps of a small filter stay in registers anyway
      forEachVector([&](auto n) ORVANE_INLINE_LAMBDA { Operands::add(sums[r][n], in[n], h); });
    });
  }
  template <int i>
  static HWY_INLINE void addFirst(Sums& sums, const FixedDotTask& task, int row, std::ptrdiff_t at) {
    if constexpr (i < outputRows - 1) {
      addLine<0, i + 1>(sums, task, row, i, at);
      addFirst<i + 1>(sums, task, row, at);
    }
  }
  template <int i>
  static HWY_INLINE void addLast(Sums& sums, const FixedDotTask& task, int row, std::ptrdiff_t at) {
    if constexpr (i < outputRows - 1) {
      addLine<i + 1, outputRows>(sums, task, row, task.filterRows + i, at);
      addLast<i + 1>(sums, task, row, at);
    }
  }
};

/// Stores a group of accumulators in the order of outputs.
template <int group>
HWY_INLINE void storeGroup(const DotVector* s, std::int32_t* to) {
#if HWY_TARGET == HWY_SCALAR
  for (int phase = 0; phase < group; ++phase) hn::StoreU(s[phase], DotTag(), to + phase);
#else
  if constexpr (group == 2) {
    hn::StoreInterleaved2(s[0], s[1], DotTag(), to);
  } else {
    hn::StoreInterleaved4(s[0], s[1], s[2], s[3], DotTag(), to);
  }
#endif
}

constexpr int mostDotRows = 4;

/// Calls `take` with the number of rows of a block and its first row, for all rows of the task.
template <class TakeT>
void forEachDotRows(const FixedDotTask& task, TakeT&& take) {
  for (int row = 0; row < task.rows;) {
    const int rows = std::min({mostDotRows, task.filterRows, task.rows - row});
    switch (rows) {
      case 1: take(std::integral_constant<int, 1>(), row); break;
      case 2: take(std::integral_constant<int, 2>(), row); break;
      case 3: take(std::integral_constant<int, 3>(), row); break;
      default: take(std::integral_constant<int, mostDotRows>(), row); break;
    }
    row += rows;
  }
}

template <class Operands, int rows>
HWY_NOINLINE void sumDotRows(const FixedDotTask& task, int row) {
  using Block = DotBlock<Operands, rows>;
  for (std::ptrdiff_t at = 0; at < task.width; at += Block::width) {
    typename Block::Sums sums;
    Block::compute(sums, task, row, at);
    Block::forEachGroup(sums, task.out + row, at, [](const DotVector* group, std::int32_t* to) ORVANE_INLINE_LAMBDA {
      storeGroup<Operands::group>(group, to);
    });
  }
}

template <class Operands>
void sumDotsOf(const FixedDotTask& task) {
  forEachDotRows(task, [&](auto rows, int row) { sumDotRows<Operands, rows()>(task, row); });
}

inline void sumDotsOnTarget(const FixedDotTask& task) {
  switch (task.operands) {
    case DotOperands::none: return;
    case DotOperands::bytes: return sumDotsOf<ByteDots<std::uint8_t>>(task);
    case DotOperands::signedBytes: return sumDotsOf<ByteDots<std::int8_t>>(task);
    case DotOperands::words: return sumDotsOf<WordDots>(task);
  }
}

/// Taps of a group, in the order of memory.
template <class Operands>
void packDotsOf(const std::int32_t* taps, int columns, int rows, std::int32_t* packed) {
  constexpr int group = Operands::group, bits = 32 / group;
  constexpr std::uint32_t mask = (std::uint32_t{1} << bits) - 1;
  for (int j = 0; j < rows; ++j, taps += columns) {
    for (int c = 0; c < columns; c += group) {
      std::uint32_t all = 0;
      for (int g = 0; g < group && c + g < columns; ++g) {
        all |= (static_cast<std::uint32_t>(taps[c + g]) & mask) << (g * bits);
      }
      *packed++ = static_cast<std::int32_t>(all);
    }
  }
}

inline void packDotsOnTarget(DotOperands operands, const std::int32_t* taps, int columns, int rows,
                             std::int32_t* packed) {
  if (operands == DotOperands::words) return packDotsOf<WordDots>(taps, columns, rows, packed);
  packDotsOf<ByteDots<std::uint8_t>>(taps, columns, rows, packed);
}

inline void joinDotsOnTarget(const std::int32_t* high, const std::int32_t* low, std::int64_t start,
                             std::ptrdiff_t count, std::int64_t* out) {
  using D = hn::ScalableTag<std::int64_t>;
  const hn::Rebind<std::int32_t, D> narrow;
  const auto first = hn::Set(D(), start);
  for (std::ptrdiff_t i = 0; i < count; i += lanesOf<D>) {
    const auto upper = hn::PromoteTo(D(), hn::LoadU(narrow, high + i));
    const auto lower = hn::PromoteTo(D(), hn::LoadU(narrow, low + i));
    hn::StoreU(hn::Add(hn::Add(hn::ShiftLeft<8>(upper), lower), first), D(), out + i);
  }
}

}  // namespace HWY_NAMESPACE
}  // namespace BP::lanes
HWY_AFTER_NAMESPACE();

#endif
