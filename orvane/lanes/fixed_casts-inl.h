// Casts of exact integers in vectors, and their counts. Included once for each target.

#if defined(ORVANE_LANES_FIXED_CASTS_INL) == defined(HWY_TARGET_TOGGLE)
#ifdef ORVANE_LANES_FIXED_CASTS_INL
#undef ORVANE_LANES_FIXED_CASTS_INL
#else
#define ORVANE_LANES_FIXED_CASTS_INL
#endif

#include <hwy/highway.h>

#include <cstring>
#include <limits>
#include <type_traits>

#include "orvane/lanes/fixed_casts.h"

HWY_BEFORE_NAMESPACE();
namespace BP::lanes {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

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
    const T low = hn::GetLane(hn::MinOfLanes(D(), least)), high = hn::GetLane(hn::MaxOfLanes(D(), greatest));
    if (low <= high) {  // else no range was looked for
      these.least = scaled(low);
      these.greatest = scaled(high);
    }
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

/// Casts and stores one row. With `isQuick` nothing is appended, rounding adds one term, and the range clamps.
template <class T, bool isQuick, bool counts, bool ranges>
class RowCast {
  using D = hn::ScalableTag<T>;
  using V = hn::Vec<D>;
  static constexpr auto lanes = static_cast<std::ptrdiff_t>(hn::MaxLanes(D()));

 public:
  static HWY_NOINLINE void compute(const FixedCastTask<T>& task, FixedCounts& values, FixedCounts& results) {
    switch (task.bytes) {
      case 1: return RowCast(task).template castInto<std::uint8_t>(values, results);
      case 2: return RowCast(task).template castInto<std::uint16_t>(values, results);
      case 4: return RowCast(task).template castInto<std::uint32_t>(values, results);
      default: return RowCast(task).template castInto<std::uint64_t>(values, results);
    }
  }

 private:
  explicit HWY_INLINE RowCast(const FixedCastTask<T>& given) : task(given), cast(given.cast) {}

  template <class C>
  HWY_INLINE void castInto(FixedCounts& values, FixedCounts& results) {
    auto* const to = static_cast<std::byte*>(task.to);
    std::ptrdiff_t at = 0;
    for (; at + lanes <= task.count; at += lanes) store<C>(castVector<true>(at), to + at * std::ptrdiff_t{sizeof(C)});
    if (at < task.count) {
      std::byte last[std::size_t{lanes} * sizeof(C)];
      store<C>(castVector<false>(at), last);
      std::memcpy(to + at * std::ptrdiff_t{sizeof(C)}, last, std::size_t(task.count - at) * sizeof(C));
    }
    if constexpr (!counts) return;
    const auto number = static_cast<std::uint64_t>(task.count);
    before.addTo(values, number, false, false);
    met.addTo(results, number, true, true);
  }

  template <bool isWhole>
  HWY_INLINE V castVector(std::ptrdiff_t at) {
    const V value = hn::LoadU(D(), task.values + at);
    const V exact = isQuick ? value : hn::ShiftLeftSame(value, task.append);
    const V rounded = cast.template rounded<isQuick>(exact);
    const V result = isQuick ? cast.clamped(rounded) : cast.fitted(rounded);
    if constexpr (counts) {
      const V valid = isWhole ? value : hn::VecFromMask(D(), hn::FirstN(D(), std::size_t(task.count - at)));
      CastCounts<D>::template addWhere<isWhole>(met.lossless, cast.losesNothing(exact), valid);
      CastCounts<D>::template addWhere<isWhole>(met.fitting, hn::Eq(result, rounded), valid);
      if constexpr (ranges) {
        before.template range<isWhole>(value, valid);
        met.template range<isWhole>(result, valid);
      }
    }
    return result;
  }

  /// Stores the low bits of each value.
  template <class C>
  static HWY_INLINE void store(V v, std::byte* to) {
    using U = std::make_unsigned_t<T>;
    const auto bits = hn::BitCast(hn::RebindToUnsigned<D>(), v);
    auto* const place = reinterpret_cast<C*>(to);
    if constexpr (sizeof(C) < sizeof(U)) {
      hn::StoreU(hn::TruncateTo(hn::Rebind<C, D>(), bits), hn::Rebind<C, D>(), place);
    } else if constexpr (sizeof(C) == sizeof(U)) {
      hn::StoreU(bits, hn::Rebind<C, D>(), place);
    } else {
      T values[std::size_t{lanes}];
      std::int64_t wide[std::size_t{lanes}];
      hn::StoreU(v, D(), values);
      for (std::ptrdiff_t i = 0; i < lanes; ++i) wide[i] = values[i];
      std::memcpy(to, wide, sizeof wide);
    }
  }

  const FixedCastTask<T>& task;
  CastNumbers<D> cast;
  CastCounts<D> before, met;
};

template <class T, bool isQuick>
void castFixedAs(const FixedCastTask<T>& task, FixedCounts& values, FixedCounts& results) {
  if (!task.counts) return RowCast<T, isQuick, false, false>::compute(task, values, results);
  if (!task.ranges) return RowCast<T, isQuick, true, false>::compute(task, values, results);
  return RowCast<T, isQuick, true, true>::compute(task, values, results);
}

template <class T>
void castFixedOnTarget(const FixedCastTask<T>& task, FixedCounts& values, FixedCounts& results) {
  if (task.append == 0 && task.cast.rounder.isPlain && clamps(task.cast)) {
    castFixedAs<T, true>(task, values, results);
  } else {
    castFixedAs<T, false>(task, values, results);
  }
}

}  // namespace HWY_NAMESPACE
}  // namespace BP::lanes
HWY_AFTER_NAMESPACE();

#endif
