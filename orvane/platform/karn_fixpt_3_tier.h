#pragma once

#include <algorithm>
#include <cmath>

#include "orvane/platform/karn_fixpt_3.h"

/// Loads, casts and stores of any component, in the narrowest integer type that holds the exact value. Internal.
namespace KarnDSPFixpt {

namespace detail {

// Limits of shifts. A longer shift would give the same result: after maxDrop bits less than a quarter of the unit is
// left of any value, and maxAppend bits put every value except 0 outside every range and clear every word.
inline constexpr std::int64_t maxAppend = 160;
inline constexpr std::int64_t maxDrop = 400;

/// v / 2^fraction.
inline double scaled(double v, std::int64_t fraction) {
  return std::ldexp(v, static_cast<int>(std::clamp<std::int64_t>(-fraction, -10000, 10000)));
}

/// Whether `limit` bits hold a value of `bits` bits while `drop` bits are dropped (negative: appended).
inline bool holds(int limit, int bits, std::int64_t drop) {
  return drop >= 0 ? bits <= limit && drop <= limit : bits - std::max(drop, -2 * maxAppend) <= limit;
}

/// The shifts that convert two values to the longer one of their fractions, limited to useful lengths, and that
/// fraction.
struct Alignment {
  int own;
  int other;
  std::int64_t fraction;
};

inline Alignment align(std::int64_t own, std::int64_t other, std::int64_t limit) {
  const auto cap = [limit](std::int64_t shift) { return static_cast<int>(std::clamp<std::int64_t>(shift, 0, limit)); };
  return {cap(other - own), cap(own - other), own + cap(other - own)};
}

/// The 2^bytesLog bytes at `p`, as the low bits of the result.
inline Uint128 readBits(const std::byte* p, unsigned bytesLog) {
  const auto read = [p](auto bits) -> Uint128 {
    std::memcpy(&bits, p, sizeof bits);
    return bits;
  };
  switch (bytesLog) {
    case 0: return read(std::uint8_t{});
    case 1: return read(std::uint16_t{});
    case 2: return read(std::uint32_t{});
    case 3: return read(std::uint64_t{});
    default: return read(Uint128{});
  }
}

}  // namespace detail

/// Calls op.operator()<I>() with the narrowest integer type I that can cast an exact value of `bits` bits, in units of
/// 2^-fraction, into this array's type.
template <class Op>
void Fixpt::inTier(int bits, std::int64_t fraction, Op op) const {
  const FixptType type = attributes_.type();
  const std::int64_t drop = fraction - type.fraction;
  const int own = detail::signedBits(type);
  if (own <= detail::narrowBits && detail::holds(detail::narrowBits, bits, drop)) {
    op.template operator()<std::int64_t>();
  } else if (own <= detail::mediumBits && detail::holds(detail::mediumBits, bits, drop)) {
    op.template operator()<detail::Int128>();
  } else {
    op.template operator()<detail::Wide>();
  }
}

template <class I>
I Fixpt::load(int component) const {
  detail::Uint128 bits = detail::readBits(address(component), bytesLog_);
  const FixptType type = attributes_.type();
  const int spare = static_cast<int>(maxWord - type.word);
  bits <<= spare;
  if (type.isSigned) return static_cast<I>(static_cast<detail::Int128>(bits) >> spare);
  return static_cast<I>(bits >> spare);
}

inline void Fixpt::store(int component, detail::Uint128 bits) {
  std::byte* const p = address(component);
  switch (bytesLog_) {  // constant sizes, so that no function is called
    case 0: std::memcpy(p, &bits, 1); break;
    case 1: std::memcpy(p, &bits, 2); break;
    case 2: std::memcpy(p, &bits, 4); break;
    case 3: std::memcpy(p, &bits, 8); break;
    default: std::memcpy(p, &bits, 16); break;
  }
}

/// Casts `exact` in units of 2^-fraction into this array's type and stores it. I comes from `inTier`.
template <class I>
void Fixpt::put(int component, const I& exact, std::int64_t fraction) {
  const FixptType type = attributes_.type();
  const std::int64_t drop = std::clamp(fraction - type.fraction, -detail::maxAppend, detail::maxDrop);
  const int append = static_cast<int>(std::max<std::int64_t>(-drop, 0));
  const auto rounder = detail::makeRounder<I>(static_cast<int>(drop), attributes_.roundingMode());
  if constexpr (std::is_same_v<I, std::int64_t>) {
    putNarrow(component, exact << append, rounder);
  } else {
    const auto cast =
        detail::castInto(exact << append, rounder, detail::makeRange<I>(type, attributes_.overflowMode()));
    if constexpr (std::is_same_v<I, detail::Wide>) {
      store(component, cast.value.low());
    } else {
      store(component, static_cast<detail::Uint128>(cast.value));
    }
    if (!counting_) return;
    const double value = componentToDouble(component);
    addStatistics({cast.overflow, 1, cast.lossy, 1, value, value});
  }
}

}  // namespace KarnDSPFixpt
