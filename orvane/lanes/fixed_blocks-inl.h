// Fixed-point sums whose products fit their type. Included once for each target.
//
// A block has a few output rows and vectors. Its sums stay in registers while all taps are added one by one, in their
// order, and a line is loaded once for all output rows that it meets.

#if defined(ORVANE_LANES_FIXED_BLOCKS_INL) == defined(HWY_TARGET_TOGGLE)
#ifdef ORVANE_LANES_FIXED_BLOCKS_INL
#undef ORVANE_LANES_FIXED_BLOCKS_INL
#else
#define ORVANE_LANES_FIXED_BLOCKS_INL
#endif

#include <hwy/highway.h>

#include <algorithm>
#include <type_traits>

#include "orvane/lanes/fixed_casts-inl.h"
#include "orvane/lanes/inline_lambda.h"
#include "orvane/lanes/sum_elements-inl.h"

HWY_BEFORE_NAMESPACE();
namespace BP::lanes {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

/// x * h, exact: lanes of 64 bits hold operands of 32.
template <class D, class V = hn::Vec<D>>
HWY_INLINE V exactProduct([[maybe_unused]] D d, V x, V h) {
#if HWY_TARGET == HWY_SCALAR
  return hn::Set(d, hn::GetLane(x) * hn::GetLane(h));
#else
  if constexpr (sizeof(hn::TFromD<D>) == 4) {
    return hn::Mul(x, h);
  } else {
    const hn::Repartition<std::int32_t, D> narrow;
    return hn::MulEven(hn::BitCast(narrow, x), hn::BitCast(narrow, h));
  }
#endif
}

/// What is counted about sums.
enum class SumCounts { nothing, overflows, all };

template <class D, FixedForm form, SumCounts gathered>
class FixedBlocks {
  using V = hn::Vec<D>;
  using T = hn::TFromD<D>;
  static constexpr std::ptrdiff_t lanes = lanesOf<D>;
  static constexpr bool isExact = form == FixedForm::exact;
  static constexpr bool isPlain = form == FixedForm::quickRound || form == FixedForm::quickRoundWord;
  static constexpr bool fillsLane = form == FixedForm::quickRoundWord || form == FixedForm::roundWord;
#if HWY_TARGET == HWY_AVX3
  static constexpr int mostRows = 4, vectors = 3;
#else
  static constexpr int mostRows = 2, vectors = 2;
#endif

 public:
  static void compute(const FixedSumTask<T>& task, FixedSumCounts& counts) {
    for (int row = 0; row < task.rows;) {
      const int rows = std::min({mostRows, task.filterRows, task.rows - row});
      if (rows == 4) {
        computeRows<mostRows>(task, row, counts);
      } else if (rows >= 2) {
        computeRows<2>(task, row, counts);
      } else {
        computeRows<1>(task, row, counts);
      }
      row += rows == 3 ? 2 : rows;
    }
  }

 private:
  struct Met {
    V least, greatest, cut;
    HWY_INLINE Met()
        : least(hn::Set(D(), std::numeric_limits<T>::max())),
          greatest(hn::Set(D(), std::numeric_limits<T>::min())),
          cut(hn::Zero(D())) {}
  };
  template <int rows, int columns>
  using Sums = V[std::size_t{rows}][std::size_t{columns}];

  template <int rows>
  static HWY_NOINLINE void computeRows(const FixedSumTask<T>& task, int row, FixedSumCounts& counts) {
    const CastNumbers<D> product(task.product), sum(task.sum);
    Met met;
    std::ptrdiff_t at = 0;
    for (; at + vectors * lanes <= task.width; at += vectors * lanes) {
      computeBlock<rows, vectors, true>(task, row, at, product, sum, met);
    }
    for (; at < task.width; at += lanes) {
      computeBlock<rows, 1, gathered == SumCounts::nothing>(task, row, at, product, sum, met);
    }
    if constexpr (gathered == SumCounts::nothing) return;
    FixedCounts these;
    T cut[std::size_t{lanes}];
    hn::StoreU(met.cut, D(), cut);
    for (const T n : cut) these.overflows += static_cast<std::uint64_t>(n);
    if constexpr (gathered == SumCounts::all) {
      these.least = hn::GetLane(hn::MinOfLanes(D(), met.least));
      these.greatest = hn::GetLane(hn::MaxOfLanes(D(), met.greatest));
    }
    counts.sum.add(these);
  }

  template <int r, int last, class TakeT>
  static HWY_INLINE void forEach(TakeT&& take) {
    if constexpr (r < last) {
      take(std::integral_constant<int, r>());
      forEach<r + 1, last>(take);
    }
  }

  /// Computes a block. Unless it is `whole`, what lies beyond the width does not count.
  template <int rows, int columns, bool isWhole>
  static HWY_INLINE void computeBlock(const FixedSumTask<T>& task, int row, std::ptrdiff_t at,
                                      const CastNumbers<D>& product, const CastNumbers<D>& sum, Met& all) {
    Sums<rows, columns> s;
    forEach<0, rows>([&](auto r) ORVANE_INLINE_LAMBDA {
      forEach<0, columns>([&](auto n) ORVANE_INLINE_LAMBDA { s[r][n] = hn::Zero(D()); });
    });
    Met met = all;
    const V valid = isWhole ? hn::Zero(D()) : hn::VecFromMask(D(), hn::FirstN(D(), std::size_t(task.width - at)));
    const auto addTap = [&](V& to, V x, V h)
                            ORVANE_INLINE_LAMBDA { to = added<isWhole>(to, x, h, product, sum, met, valid); };
    const auto addFirst = [&](auto i) ORVANE_INLINE_LAMBDA { addLine<0, i + 1, columns>(s, task, row, i, at, addTap); };
    const auto addLast = [&](auto i) ORVANE_INLINE_LAMBDA {
      addLine<i + 1, rows, columns>(s, task, row, task.filterRows + i, at, addTap);
    };
    forEach<0, rows - 1>(addFirst);
    for (int i = rows - 1; i < task.filterRows; ++i) addLine<0, rows, columns>(s, task, row, i, at, addTap);
    forEach<0, rows - 1>(addLast);
    forEach<0, rows>([&](auto r) ORVANE_INLINE_LAMBDA {
      forEach<0, columns>([&](auto n)
                              ORVANE_INLINE_LAMBDA { hn::StoreU(s[r][n], D(), task.out[row + r] + at + n * lanes); });
    });
    all = met;
  }

  /// Adds line i to output rows `first` to before `last`, of which row r meets it with filter row i - r.
  template <int first, int last, int columns, class S, class AddT>
  static HWY_INLINE void addLine(S& s, const FixedSumTask<T>& task, int row, int i, std::ptrdiff_t at,
                                 const AddT& addTap) {
    const T* x = task.lines[row + i] + at;
    const std::ptrdiff_t taps = task.columns;
    const T* tap = task.taps + i * taps;
    for (std::ptrdiff_t c = 0; c < taps; ++c, ++x, ++tap) {
      V in[std::size_t{columns}];
      forEach<0, columns>([&](auto n) ORVANE_INLINE_LAMBDA {
        in[n] = hn::LoadU(D(), x + n * lanes);
        keepInRegister(in[n]);
      });
      forEach<first, last>([&](auto r) ORVANE_INLINE_LAMBDA {
        V h = hn::Set(D(), tap[-r * taps]);
        keepInRegister(h);
        forEach<0, columns>([&](auto n) ORVANE_INLINE_LAMBDA { addTap(s[r][n], in[n], h); });
      });
    }
  }

  template <bool isWhole>
  static HWY_INLINE V added(V s, V x, V h, const CastNumbers<D>& product, const CastNumbers<D>& sum, Met& met,
                            V valid) {
    const V exact = exactProduct(D(), x, h);
    V result;
    if constexpr (isExact) {
      result = hn::Add(s, exact);
    } else {
      result = addedProduct<isWhole>(s, product.template rounded<isPlain>(exact), sum, met, valid);
    }
    if constexpr (gathered == SumCounts::all) {
      const auto counted = [&](V instead) HWY_ATTR {
        return isWhole ? result : hn::IfThenElse(hn::MaskFromVec(valid), result, instead);
      };
      met.least = hn::Min(met.least, counted(met.least));
      met.greatest = hn::Max(met.greatest, counted(met.greatest));
    }
    keepInRegister(result);
    return result;
  }

  template <bool isWhole>
  static HWY_INLINE V addedProduct(V s, V p, const CastNumbers<D>& sum, Met& met, V valid) {
    const V exact = hn::Add(s, p);  // modulo 2^32 if sums have the bits of a lane
    if constexpr (fillsLane) {
      const V isOver =
          hn::And(hn::Xor(s, exact), hn::Xor(p, exact));  // the sign is wrong: both terms have the other one
#if HWY_TARGET == HWY_AVX3
      const auto over = hn::MaskFromVec(isOver);
#else
      const auto over = hn::MaskFromVec(hn::BroadcastSignBit(isOver));
#endif
      const V end = hn::Xor(hn::BroadcastSignBit(s), hn::Set(D(), std::numeric_limits<T>::max()));
      if constexpr (gathered != SumCounts::nothing) countCut<isWhole>(met, over, valid);
      return hn::IfThenElse(over, end, exact);
    } else {
      const V result = sum.clamped(exact);
      if constexpr (gathered != SumCounts::nothing) countCut<isWhole>(met, hn::Ne(result, exact), valid);
      return result;
    }
  }

  template <bool isWhole, class Mask>
  static HWY_INLINE void countCut(Met& met, Mask over, V valid) {
    if constexpr (!isWhole) over = hn::And(over, hn::MaskFromVec(valid));
#if HWY_TARGET == HWY_AVX3
    const V one = hn::Set(D(), T{1});
    if constexpr (sizeof(T) == 4) {
      met.cut.raw = _mm512_mask_add_epi32(met.cut.raw, over.raw, met.cut.raw, one.raw);
    } else {
      met.cut.raw = _mm512_mask_add_epi64(met.cut.raw, over.raw, met.cut.raw, one.raw);
    }
#else
    met.cut = hn::Sub(met.cut, hn::VecFromMask(D(), over));
#endif
  }
};

template <class T>
void findRangeOnTarget(const T* values, std::ptrdiff_t count, T& least, T& greatest) {
  using D = hn::ScalableTag<T>;
  least = greatest = values[0];
  std::ptrdiff_t at = 0;
  if (count >= lanesOf<D>) {
    auto low = hn::LoadU(D(), values), high = low;
    for (; at + lanesOf<D> <= count; at += lanesOf<D>) {
      const auto v = hn::LoadU(D(), values + at);
      low = hn::Min(low, v), high = hn::Max(high, v);
    }
    least = hn::GetLane(hn::MinOfLanes(D(), low)), greatest = hn::GetLane(hn::MaxOfLanes(D(), high));
  }
  for (; at < count; ++at) least = std::min(least, values[at]), greatest = std::max(greatest, values[at]);
}

template <class T>
std::uint32_t countWithOnTarget(const T* values, std::ptrdiff_t count, T mask) {
  using D = hn::ScalableTag<T>;
  const auto bits = hn::Set(D(), mask);
  std::ptrdiff_t at = 0;
  std::uint32_t number = 0;
  for (; at + lanesOf<D> <= count; at += lanesOf<D>) {
    const auto found = hn::Ne(hn::And(hn::LoadU(D(), values + at), bits), hn::Zero(D()));
    number += static_cast<std::uint32_t>(hn::CountTrue(D(), found));
  }
  for (; at < count; ++at) number += (values[at] & mask) != 0;
  return number;
}

}  // namespace HWY_NAMESPACE
}  // namespace BP::lanes
HWY_AFTER_NAMESPACE();

#endif
