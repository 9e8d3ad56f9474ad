// The kernels of fixed-point sums. Included once for each target.
//
// A kernel walks the taps of a few vectors of outputs, tap by tap, so that each lane sees its sums in order. What casts
// meet is kept in vectors beside: least and greatest results, and the number of casts that lost nothing and of those
// that fitted. These counts are summed up row by row.

#if defined(ORVANE_LANES_FIXED_SUMS_INL) == defined(HWY_TARGET_TOGGLE)
#ifdef ORVANE_LANES_FIXED_SUMS_INL
#undef ORVANE_LANES_FIXED_SUMS_INL
#else
#define ORVANE_LANES_FIXED_SUMS_INL
#endif

#include <hwy/highway.h>

#include "orvane/lanes/fixed_sums.h"

HWY_BEFORE_NAMESPACE();
namespace BP::lanes {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

/// x * h, exact: lanes of 64 bits hold operands of 32.
template <class D, class V = hn::Vec<D>>
HWY_INLINE V exactProduct(D d, V x, V h) {
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

/// The counts of one cast in lanes.
template <class D>
struct CastCounts {
  using V = hn::Vec<D>;
  using T = hn::TFromD<D>;
  V least, greatest, lossless, fitting;

  HWY_INLINE CastCounts()
      : least(hn::Set(D(), std::numeric_limits<T>::max())),
        greatest(hn::Set(D(), std::numeric_limits<T>::min())),
        lossless(hn::Zero(D())),
        fitting(hn::Zero(D())) {}

  /// Counts results where `counted` has its bits set; everywhere, if `isWhole`.
  template <bool isWhole>
  HWY_INLINE void range(V result, V counted) {
    if constexpr (isWhole) {
      least = hn::Min(least, result);
      greatest = hn::Max(greatest, result);
    } else {
      const auto counts = hn::MaskFromVec(counted);
      least = hn::Min(least, hn::IfThenElse(counts, result, least));
      greatest = hn::Max(greatest, hn::IfThenElse(counts, result, greatest));
    }
  }
  template <bool isWhole, class Mask>
  static HWY_INLINE void addWhere(V& count, Mask mask, V counted) {
    if constexpr (!isWhole) mask = hn::And(mask, hn::MaskFromVec(counted));
    count = hn::Sub(count, hn::VecFromMask(D(), mask));
  }

  /// Adds the counts of `casts` casts to `to`, whose results are those of the lanes shifted left, or right.
  HWY_INLINE void addTo(FixedCounts& to, std::uint64_t casts, bool countsLossy, bool countsFitting,
                        int shift = 0) const {
    if (casts == 0) return;
    const auto total = [](V v) HWY_ATTR {
      T lanes[hn::MaxLanes(D())];
      hn::StoreU(v, D(), lanes);
      std::uint64_t sum = 0;
      for (std::size_t i = 0; i < hn::MaxLanes(D()); ++i) sum += static_cast<std::uint64_t>(lanes[i]);
      return sum;
    };
    FixedCounts these;
    these.casts = casts;
    if (countsLossy) these.lossy = casts - total(lossless);
    if (countsFitting) these.overflows = casts - total(fitting);
    const auto scaled = [&](T value) {
      const std::int64_t wide = value;
      return shift < 0 ? wide >> -shift : wide << shift;
    };
    these.least = scaled(hn::GetLane(hn::MinOfLanes(D(), least)));
    these.greatest = scaled(hn::GetLane(hn::MaxOfLanes(D(), greatest)));
    to.add(these);
  }
};

/// A cast with its numbers in vectors.
template <class D>
struct CastNumbers {
  using V = hn::Vec<D>;
  using T = hn::TFromD<D>;
  V term, negative, odd, dropped, least, greatest, below, above, mask, sign;
  int right;
  bool wraps;

  explicit HWY_INLINE CastNumbers(const FixedCast& cast)
      : term(set(cast.rounder.term)),
        negative(set(cast.rounder.negative)),
        odd(set(cast.rounder.odd)),
        dropped(set(cast.rounder.dropped)),
        least(set(cast.range.least)),
        greatest(set(cast.range.greatest)),
        below(set(cast.range.below)),
        above(set(cast.range.above)),
        mask(set(cast.range.mask)),
        sign(set(cast.range.sign)),
        right(cast.rounder.right),
        wraps(cast.range.wraps) {}

  static HWY_INLINE V set(std::int64_t v) { return hn::Set(D(), static_cast<T>(v)); }

  template <bool isPlain>
  HWY_INLINE V rounded(V exact) const {
    V sum = hn::Add(exact, term);
    if constexpr (!isPlain) {
      sum = hn::Add(sum, hn::And(hn::BroadcastSignBit(exact), negative));
      sum = hn::Add(sum, hn::And(hn::ShiftRightSame(exact, right), odd));
    }
    return hn::ShiftRightSame(sum, right);
  }
  HWY_INLINE V clamped(V value) const { return hn::Min(hn::Max(value, least), greatest); }
  HWY_INLINE V fitted(V value) const {
    if (wraps) return hn::Sub(hn::Xor(hn::And(value, mask), sign), sign);
    const V low = hn::IfThenElse(hn::Lt(value, least), below, value);
    return hn::IfThenElse(hn::Gt(value, greatest), above, low);
  }
  HWY_INLINE auto losesNothing(V exact) const { return hn::Eq(hn::And(exact, dropped), hn::Zero(D())); }
};

template <class D, FixedForm form, bool gathers>
class FixedKernel {
  using V = hn::Vec<D>;
  using T = hn::TFromD<D>;
  static constexpr std::ptrdiff_t lanes = static_cast<std::ptrdiff_t>(hn::MaxLanes(D()));
  static constexpr bool isExact = form == FixedForm::exact, isAny = form == FixedForm::any;
  static constexpr bool isPlain = form == FixedForm::quickRound || form == FixedForm::quickRoundWord;
  static constexpr bool fillsLane = form == FixedForm::quickRoundWord || form == FixedForm::roundWord;
#if HWY_TARGET == HWY_AVX3
  static constexpr int vectors = 4;
#else
  static constexpr int vectors = 2;
#endif

 public:
  static HWY_NOINLINE void compute(const FixedSumTask<T>& task, FixedSumCounts& counts) {
    const FixedKernel kernel(task);
    for (int r = 0; r < task.rows; ++r) kernel.computeRow(r, counts);
  }

 private:
  explicit HWY_INLINE FixedKernel(const FixedSumTask<T>& given) : task(given), product(given.product), sum(given.sum) {}

  struct Counts {
    CastCounts<D> product, sum;
    HWY_INLINE Counts() {}
  };

  HWY_INLINE void computeRow(int r, FixedSumCounts& counts) const {
    Counts lanesCounts;
    std::ptrdiff_t at = 0;
    if (task.counted == nullptr) {
      for (; at + vectors * lanes <= task.width; at += vectors * lanes) {
        computeVectors<vectors, true>(r, at, lanesCounts);
      }
    }
    for (; at < task.width; at += lanes) computeVectors<1, !gathers>(r, at, lanesCounts);
    if constexpr (gathers) gather(r, lanesCounts, counts);
  }

  /// Adds the taps to `count` vectors of outputs. Unless they are `whole`, what lies beyond the width does not count.
  template <int count, bool isWhole>
  HWY_INLINE void computeVectors(int r, std::ptrdiff_t at, Counts& counts) const {
    V s[std::size_t{count}];
    for (int v = 0; v < count; ++v) s[v] = hn::Zero(D());
    const V valid = isWhole ? hn::Zero(D()) : hn::VecFromMask(D(), hn::FirstN(D(), std::size_t(task.width - at)));
    const T* tap = task.taps;
    for (int j = 0; j < task.filterRows; ++j) {
      const T* x = task.lines[r + j] + at;
      const T* counted = isWhole || task.counted == nullptr ? nullptr : task.counted[r + j] + at;
      for (int c = 0; c < task.columns; ++c, ++x, ++tap) {
        const V h = hn::Set(D(), *tap);
        V countedHere = valid;
        if constexpr (!isWhole) {
          if (counted != nullptr) countedHere = hn::And(valid, hn::LoadU(D(), counted++));
        }
        for (int v = 0; v < count; ++v) {
          addTap<isWhole>(s[v], hn::LoadU(D(), x + v * lanes), h, counts, countedHere, valid);
        }
      }
    }
    for (int v = 0; v < count; ++v) hn::StoreU(s[v], D(), task.out[r] + at + v * lanes);
  }

  template <bool isWhole>
  HWY_INLINE void addTap(V& s, V x, V h, Counts& counts, V counted, V valid) const {
    V exact = exactProduct(D(), x, h);
    if constexpr (isExact) {
      s = hn::Add(s, exact);
      if constexpr (gathers) counts.product.template range<isWhole>(exact, counted);
    } else {
      if constexpr (isAny) exact = hn::ShiftLeftSame(exact, task.append);
      const V rounded = product.template rounded<isPlain>(exact);
      const V p = isAny ? product.fitted(rounded) : rounded;
      if constexpr (gathers) {
        counts.product.template range<isWhole>(p, counted);
        CastCounts<D>::template addWhere<isWhole>(counts.product.lossless, product.losesNothing(exact), counted);
        if constexpr (isAny) {
          CastCounts<D>::template addWhere<isWhole>(counts.product.fitting, hn::Eq(p, rounded), counted);
        }
      }
      s = addProduct<isWhole>(s, p, counts, valid);
    }
    if constexpr (gathers) counts.sum.template range<isWhole>(s, valid);
  }

  template <bool isWhole>
  HWY_INLINE V addProduct(V s, V p, Counts& counts, V valid) const {
    V exact, result;
    if constexpr (isAny) {
      exact = hn::Add(hn::ShiftLeftSame(s, task.ownAppend), hn::ShiftLeftSame(p, task.otherAppend));
      const V rounded = sum.template rounded<false>(exact);
      result = sum.fitted(rounded);
      if constexpr (gathers) {
        CastCounts<D>::template addWhere<isWhole>(counts.sum.lossless, sum.losesNothing(exact), valid);
        CastCounts<D>::template addWhere<isWhole>(counts.sum.fitting, hn::Eq(result, rounded), valid);
      }
    } else if constexpr (fillsLane) {
      exact = hn::Add(s, p);  // modulo 2^32: the sign is wrong where both terms have the other one
      const V isOver = hn::And(hn::Xor(s, exact), hn::Xor(p, exact));
      const V end = hn::Xor(hn::BroadcastSignBit(s), hn::Set(D(), std::numeric_limits<T>::max()));
      result = hn::IfThenElse(hn::MaskFromVec(hn::BroadcastSignBit(isOver)), end, exact);
      if constexpr (gathers) {
        const auto fits = hn::Eq(hn::BroadcastSignBit(isOver), hn::Zero(D()));
        CastCounts<D>::template addWhere<isWhole>(counts.sum.fitting, fits, valid);
      }
    } else {
      exact = hn::Add(s, p);
      result = sum.clamped(exact);
      if constexpr (gathers) {
        CastCounts<D>::template addWhere<isWhole>(counts.sum.fitting, hn::Eq(result, exact), valid);
      }
    }
    return result;
  }

  /// Adds what the lanes of a row have counted.
  HWY_INLINE void gather(int r, const Counts& lanesCounts, FixedSumCounts& counts) const {
    const std::uint64_t taps = std::uint64_t(task.columns) * std::uint64_t(task.filterRows);
    const std::uint64_t sums = taps * std::uint64_t(task.width);
    const std::uint64_t products = countedProducts(task, r);
    lanesCounts.product.addTo(counts.product, products, !isExact, isAny, isExact ? task.append : 0);
    lanesCounts.sum.addTo(counts.sum, sums, isAny, !isExact);
  }

  const FixedSumTask<T>& task;
  CastNumbers<D> product, sum;
};

/// Casts values in place.
template <class T>
void castFixedOnTarget(const FixedCastTask<T>& task, FixedCounts& values, FixedCounts& results) {
  using D = hn::ScalableTag<T>;
  const CastNumbers<D> cast(task.cast);
  CastCounts<D> before, met;
  const auto castVector = [&](std::ptrdiff_t at, auto isWhole) HWY_ATTR {
    constexpr bool whole = decltype(isWhole)::value;
    const auto value = hn::LoadU(D(), task.values + at);
    const auto exact = hn::ShiftLeftSame(value, task.append);
    const auto rounded = cast.template rounded<false>(exact);
    const auto result = cast.fitted(rounded);
    const auto valid = hn::VecFromMask(D(), hn::FirstN(D(), std::size_t(task.count - at)));
    before.template range<whole>(value, valid);
    met.template range<whole>(result, valid);
    CastCounts<D>::template addWhere<whole>(met.lossless, cast.losesNothing(exact), valid);
    CastCounts<D>::template addWhere<whole>(met.fitting, hn::Eq(result, rounded), valid);
    hn::StoreU(result, D(), task.values + at);
  };
  constexpr auto lanes = static_cast<std::ptrdiff_t>(hn::MaxLanes(D()));
  std::ptrdiff_t at = 0;
  for (; at + lanes <= task.count; at += lanes) castVector(at, std::true_type());
  if (at < task.count) castVector(at, std::false_type());
  before.addTo(values, static_cast<std::uint64_t>(task.count), false, false);
  met.addTo(results, static_cast<std::uint64_t>(task.count), true, true);
}

template <class T>
void sumFixedOnTarget(const FixedSumTask<T>& task, FixedSumCounts& counts) {
  using D = hn::ScalableTag<T>;
  const auto run = [&](auto form) {
    if (task.gathers) {
      FixedKernel<D, form(), true>::compute(task, counts);
    } else {
      FixedKernel<D, form(), false>::compute(task, counts);
    }
  };
  switch (task.form) {
    case FixedForm::exact: return run(std::integral_constant<FixedForm, FixedForm::exact>());
    case FixedForm::quickRound: return run(std::integral_constant<FixedForm, FixedForm::quickRound>());
    case FixedForm::round: return run(std::integral_constant<FixedForm, FixedForm::round>());
    case FixedForm::quickRoundWord:
    case FixedForm::roundWord:
      if constexpr (sizeof(T) == 4) {
        if (task.form == FixedForm::roundWord) return run(std::integral_constant<FixedForm, FixedForm::roundWord>());
        return run(std::integral_constant<FixedForm, FixedForm::quickRoundWord>());
      }
      return;
    case FixedForm::any: return run(std::integral_constant<FixedForm, FixedForm::any>());
  }
}

}  // namespace HWY_NAMESPACE
}  // namespace BP::lanes
HWY_AFTER_NAMESPACE();

#endif
