#pragma once

#include <gmpxx.h>

#include <ostream>

#include "orvane/platform/karn_fixpt_3_make.h"

/// The meaning of casts, written down once more from the definitions with rational numbers of any size.
namespace model {

using KarnDSPFixpt::FixptType;

/// v * 2^n.
inline mpq_class scale(mpq_class v, long n) {
  if (n >= 0) {
    mpq_mul_2exp(v.get_mpq_t(), v.get_mpq_t(), static_cast<mp_bitcnt_t>(n));
  } else {
    mpq_div_2exp(v.get_mpq_t(), v.get_mpq_t(), static_cast<mp_bitcnt_t>(-n));
  }
  return v;
}

/// The outcome of a cast: the stored integer and what is counted.
struct Outcome {
  mpz_class stored;
  bool overflow = false;
  bool lossy = false;
  bool operator==(const Outcome&) const = default;
};

/// Where an exact result lies between two neighbouring integers.
struct Place {
  mpz_class floor;
  bool isInteger;
  int half;  // sign of (exact - floor - 1/2)
  bool isPositive;
};

inline Outcome cast(const Place& at, const FixptType& type, fxpModeOverflow_tag overflow,
                    fxpModeRounding_tag rounding) {
  Outcome result{at.floor, false, !at.isInteger};
  const auto up = [&] {
    switch (rounding) {
      case fxpRoundCeiling: return true;
      case fxpRoundFloor: return false;
      case fxpRoundZero: return !at.isPositive;
      case fxpRoundConvergent: return at.half > 0 || (at.half == 0 && mpz_odd_p(at.floor.get_mpz_t()) != 0);
      case fxpRoundNearest: return at.half >= 0;
      case fxpRoundRound: return at.half > 0 || (at.half == 0 && at.isPositive);
    }
    return false;
  };
  if (!at.isInteger && up()) result.stored += 1;
  const mpz_class values = mpz_class(1) << type.word;
  const mpz_class greatest = (type.isSigned ? mpz_class(values / 2) : values) - 1;
  mpz_class least = type.isSigned ? mpz_class(-greatest - 1) : mpz_class(0);
  if (overflow == fxpOverflowSymmetric && type.isSigned) least = -greatest;
  result.overflow = result.stored < least || result.stored > greatest;
  if (!result.overflow) return result;
  if (overflow == fxpOverflowZero) {
    result.stored = 0;
  } else if (overflow != fxpOverflowWrap) {
    result.stored = result.stored < least ? least : greatest;
  } else {
    mpz_class low;
    mpz_fdiv_r(low.get_mpz_t(), result.stored.get_mpz_t(), values.get_mpz_t());
    result.stored = low > greatest ? mpz_class(low - values) : low;
  }
  return result;
}

inline Outcome cast(const mpq_class& exact, const FixptType& type, fxpModeOverflow_tag overflow,
                    fxpModeRounding_tag rounding) {
  const mpq_class scaled = scale(exact, type.fraction);
  mpz_class floor;
  mpz_fdiv_q(floor.get_mpz_t(), scaled.get_num_mpz_t(), scaled.get_den_mpz_t());
  const mpq_class rest = scaled - floor;
  return cast({floor, rest == 0, cmp(rest, mpq_class(1, 2)), scaled > 0}, type, overflow, rounding);
}

/// The cast of the square root of `exact`, which is not negative.
inline Outcome castRoot(const mpq_class& exact, const FixptType& type, fxpModeOverflow_tag overflow,
                        fxpModeRounding_tag rounding) {
  const mpq_class radicand = scale(exact, 2L * type.fraction);
  mpz_class floor;
  mpz_fdiv_q(floor.get_mpz_t(), radicand.get_num_mpz_t(), radicand.get_den_mpz_t());
  floor = sqrt(floor);
  const mpq_class middle = floor + mpq_class(1, 2);
  return cast({floor, radicand == floor * floor, cmp(radicand, middle * middle), true}, type, overflow, rounding);
}

inline Outcome cast(const mpq_class& exact, const KarnDSPFixpt::DSPDataAttributesHandle& to) {
  return cast(exact, to.type(), to.overflowMode(), to.roundingMode());
}

/// The stored integer of the component at the cursor, `part` further on.
inline mpz_class stored(KarnDSPFixpt::Fixpt& v, int part = 0) {
  const int cursor = v.cursor();
  v.setCursor(cursor + part);
  const auto bits = static_cast<KarnDSPFixpt::detail::Uint128>(v.stored());
  v.setCursor(cursor);
  const mpz_class high(static_cast<unsigned long>(bits >> 64));
  const mpz_class all = (high << 64) + mpz_class(static_cast<unsigned long>(bits));
  const bool isNegative = v.attributes().isSigned() && mpz_tstbit(all.get_mpz_t(), 127) != 0;
  return isNegative ? mpz_class(all - (mpz_class(1) << 128)) : all;
}

/// The exact value of that component.
inline mpq_class value(KarnDSPFixpt::Fixpt& v, int part = 0) {
  return scale(stored(v, part), -long{v.attributes().type().fraction});
}

}  // namespace model
