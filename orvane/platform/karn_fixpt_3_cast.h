#pragma once

#include <algorithm>
#include <cstdint>

#include "orvane/platform/karn_fixpt_3_type.h"
#include "orvane/platform/karn_fixpt_3_wide.h"

/// The one mechanism by which an exact integer becomes a value of a type: round, then fit into the range.
///
/// It is written once for three integers I: `std::int64_t` where all that can occur fits 62 bits, `Int128` where it
/// fits 126, `Wide` for the rest. The margin of two bits takes the rounding term without overflow.
namespace KarnDSPFixpt::detail {

inline constexpr int narrowBits = 62;
inline constexpr int mediumBits = 126;

template <class I>
inline constexpr int valueBits = static_cast<int>(8 * sizeof(I));

/// Rounding that was prepared for one number of bits to drop and one mode.
///
/// Every mode is "add a term, then shift towards -infinity"; the modes differ in the term, of which one part may
/// depend on the sign of the value and one on the parity of the result.
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

/// The range of a type, and what stands for the values outside it. `I` has at least two bits more than the type.
template <class I>
struct Range {
  I least = 0;
  I greatest = 0;
  I below = 0;  ///< in place of what is less than `least`
  I above = 0;  ///< in place of what exceeds `greatest`
  I mask = 0;   ///< the bits of the word
  I sign = 0;   ///< its sign bit; 0 for an unsigned type
  bool wraps = false;

  /// Whether `v` lies inside.
  bool holds(const I& v) const { return !(v < least || v > greatest); }

  /// The value that the low bits of `v` stand for.
  I reduce(const I& v) const { return ((v & mask) ^ sign) - sign; }

  /// What stands for `v`, which lies outside.
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

/// Casts `exact`, an integer in the unit that `rounder` starts from, into `range`.
template <class I>
[[gnu::always_inline]] inline Cast<I> castInto(const I& exact, const Rounder<I>& rounder, const Range<I>& range) {
  Cast<I> cast{roundBy(rounder, exact), false, !((exact & rounder.dropped) == I(0))};
  if (!range.holds(cast.value)) [[unlikely]] {
    cast.value = range.replacement(cast.value);
    cast.overflow = true;
  }
  return cast;
}

/// A cast of many integers by one rounder into one range, which counts what happens to them.
template <class I>
struct CountingCast {
  Rounder<I> rounder;
  Range<I> range;
  unsigned overflows = 0;
  unsigned lossy = 0;
  I least = 0;     ///< least and
  I greatest = 0;  ///< greatest value after the cast

  void start(const Rounder<I>& newRounder, const Range<I>& newRange) {
    rounder = newRounder;
    range = newRange;
    least = range.greatest;
    greatest = range.least;
  }

  /// The same as `castInto`, but without its result's two flags, which the compiler would pack and unpack.
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
