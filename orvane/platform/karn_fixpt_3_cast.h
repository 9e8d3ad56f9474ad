#pragma once

#include <algorithm>
#include <cstdint>

#include "orvane/platform/karn_fixpt_3_type.h"
#include "orvane/platform/karn_fixpt_3_wide.h"

/// The cast of an exact integer into a type: it rounds, then fits the result into the range.
///
/// The code is a template over the integer type I. I is `std::int64_t` if all values that can occur fit 62 bits,
/// `Int128` if they fit 126 bits, and `Wide` otherwise. The two spare bits hold the rounding term without overflow.
namespace KarnDSPFixpt::detail {

inline constexpr int narrowBits = 62;
inline constexpr int mediumBits = 126;

template <class I>
inline constexpr int valueBits = static_cast<int>(8 * sizeof(I));

/// Rounding, prepared for one mode and one number of bits to drop.
///
/// Every mode adds a term and then shifts towards -infinity. The modes differ in the term. One part of it may depend on
/// the sign of the value, another part on the parity of the result.
template <class I>
struct Rounder {
  int right = 0;        ///< bits to drop
  bool isPlain = true;  ///< the term is the same for all values
  I term = 0;           ///< added always
  I negative = 0;       ///< added to negative values
  I odd = 0;            ///< 1: add the lowest bit that is kept
  I dropped = 0;        ///< mask of the bits that are dropped
};

/// The rounder that drops `bits` bits by `mode`; none for 0 or less.
template <class I>
Rounder<I> makeRounder(int bits, fxpModeRounding_tag mode) {
  Rounder<I> r;
  if (bits <= 0) return r;
  const I unit = I(1) << bits;
  const I half = unit >> 1;
  r.right = bits;
  r.dropped = unit - I(1);
  switch (mode) {
    case fxpRoundCeiling: r.term = r.dropped; break;
    case fxpRoundConvergent:
      r.isPlain = false;
      r.term = half - I(1);
      r.odd = I(1);
      break;
    case fxpRoundFloor: break;
    case fxpRoundNearest: r.term = half; break;
    case fxpRoundRound:
      r.isPlain = false;
      r.term = half;
      r.negative = I(-1);
      break;
    case fxpRoundZero:
      r.isPlain = false;
      r.negative = r.dropped;
      break;
  }
  return r;
}

/// The range of a type, and the replacements of values outside. `I` has at least two bits more than the type.
template <class I>
struct Range {
  I least = 0;
  I greatest = 0;
  I below = 0;  ///< replaces values below `least`
  I above = 0;  ///< replaces values above `greatest`
  I mask = 0;   ///< the bits of the word
  I sign = 0;   ///< its sign bit; 0 for an unsigned type
  bool wraps = false;

  /// Whether `v` lies in the range.
  bool holds(const I& v) const { return !(v < least || v > greatest); }

  /// The value of the low bits of `v`, as many as the word has.
  I reduce(const I& v) const { return ((v & mask) ^ sign) - sign; }

  /// The replacement of `v`, which lies outside the range.
  I replacement(const I& v) const { return wraps ? reduce(v) : v < least ? below : above; }
};

template <class I>
Range<I> makeRange(const FixptType& type, fxpModeOverflow_tag mode) {
  Range<I> r;
  const int word = static_cast<int>(type.word);
  r.mask = (I(1) << word) - I(1);
  r.sign = type.isSigned ? I(1) << (word - 1) : I(0);
  r.greatest = r.mask ^ r.sign;
  r.least = -r.sign;
  if (mode == fxpOverflowSymmetric && type.isSigned) r.least = -r.greatest;
  r.wraps = mode == fxpOverflowWrap;
  if (mode == fxpOverflowSaturate || mode == fxpOverflowSymmetric) {
    r.below = r.least;
    r.above = r.greatest;
  }
  return r;
}

/// The outcome of a cast.
template <class I>
struct Cast {
  I value;
  bool overflow;  ///< the rounded value did not fit
  bool lossy;     ///< rounding dropped bits that were not 0
};

/// `v` without the bits that `rounder` drops, rounded.
template <class I>
[[gnu::always_inline]] inline I roundBy(const Rounder<I>& rounder, const I& v) {
  if (rounder.isPlain) return (v + rounder.term) >> rounder.right;
  const I signTerm = (v >> (valueBits<I> - 1)) & rounder.negative;  // no branch: signs of data are hard to predict
  const I oddTerm = (v >> rounder.right) & rounder.odd;
  return (v + rounder.term + signTerm + oddTerm) >> rounder.right;
}

/// Casts `exact` into `range`. The unit of `exact` is that for which `rounder` was made.
template <class I>
[[gnu::always_inline]] inline Cast<I> castInto(const I& exact, const Rounder<I>& rounder, const Range<I>& range) {
  Cast<I> cast{roundBy(rounder, exact), false, !((exact & rounder.dropped) == I(0))};
  if (!range.holds(cast.value)) [[unlikely]] {
    cast.value = range.replacement(cast.value);
    cast.overflow = true;
  }
  return cast;
}

/// Casts many integers by one rounder into one range, and counts overflows and lossy roundings.
template <class I>
struct CountingCast {
  Rounder<I> rounder;
  Range<I> range;
  unsigned overflows = 0;
  unsigned lossy = 0;
  I least = 0;     ///< least value after the cast
  I greatest = 0;  ///< greatest value after the cast

  /// Sets rounder and range, and an empty range of values.
  void start(const Rounder<I>& newRounder, const Range<I>& newRange) {
    rounder = newRounder;
    range = newRange;
    least = range.greatest;
    greatest = range.least;
  }

  /// Does the same as `castInto`. It has no flags in its result, because the compiler would pack and unpack them.
  I operator()(const I& exact) {
    I value = roundBy(rounder, exact);
    if (!range.holds(value)) [[unlikely]] {
      value = range.replacement(value);
      ++overflows;
    }
    lossy += !((exact & rounder.dropped) == I(0));
    least = std::min(least, value);
    greatest = std::max(greatest, value);
    return value;
  }
};

template <class I>
struct ProductSum;  // of karn_fixpt_3_sums.cc

/// Bits of a signed integer that holds every value of `type`.
inline int signedBits(const FixptType& type) { return static_cast<int>(type.word) + (type.isSigned ? 0 : 1); }

}  // namespace KarnDSPFixpt::detail
