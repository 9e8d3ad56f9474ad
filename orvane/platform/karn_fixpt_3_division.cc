#include <algorithm>
#include <cmath>

#include "orvane/platform/karn_fixpt_3.h"
#include "orvane/platform/karn_fixpt_3_tier.h"

/// Division and square root.
///
/// The integer result has two bits more than the target's unit. The lower bit is set if the result is not exact. Such a
/// result rounds like the exact one in every mode.
namespace KarnDSPFixpt {

using detail::Int128;
using detail::Wide;

namespace {

constexpr int guardBits = 2;

template <class I>
struct Quotient {
  I quotient;
  bool exact;
};

/// a / b, rounded towards 0, for a >= 0 and b > 0.
Quotient<Int128> divide(Int128 a, Int128 b) { return {a / b, a % b == 0}; }

/// The same by long division, one bit for each step.
Quotient<Wide> divide(const Wide& a, const Wide& b) {
  Wide quotient;
  Wide rest;
  for (int i = a.bitLength() - 1; i >= 0; --i) {
    rest = (rest << 1) + Wide(a.bit(i) ? 1 : 0);
    quotient = quotient << 1;
    if (!(rest < b)) {
      rest = rest - b;
      quotient = quotient + Wide(1);
    }
  }
  return {quotient, rest == Wide(0)};
}

/// The integer part of the square root of a >= 0. A guess in floating point is improved by two steps of Newton's
/// method. Two loops then correct the last unit, so the rounding of the guess has no effect.
Quotient<Int128> squareRoot(Int128 a) {
  if (a == 0) return {0, true};
  auto root = static_cast<Int128>(std::sqrt(static_cast<double>(a)));
  for (int step = 0; step < 2; ++step) root = (root + a / root) / 2;
  while (root * root > a) --root;
  while ((root + 1) * (root + 1) <= a) ++root;
  return {root, root * root == a};
}

/// The same, one bit of the root for each step.
Quotient<Wide> squareRoot(const Wide& a) {
  Wide root;
  for (int i = (a.bitLength() + 1) / 2; i >= 0; --i) {
    const Wide tried = root + (Wide(1) << i);
    if (!(a < tried * tried)) root = tried;
  }
  return {root, root * root == a};
}

/// A complex number in floating point. Its division scales by the greater part of the divisor, so no square overflows.
/// Source: R. L. Smith, Algorithm 116: complex division, Communications of the ACM 5 (1962).
struct ComplexDouble {
  double re;
  double im;
};

ComplexDouble divide(ComplexDouble a, ComplexDouble b) {
  if (std::fabs(b.re) >= std::fabs(b.im)) {
    const double ratio = b.im / b.re;
    const double scale = b.re + b.im * ratio;
    return {(a.re + a.im * ratio) / scale, (a.im - a.re * ratio) / scale};
  }
  const double ratio = b.re / b.im;
  const double scale = b.re * ratio + b.im;
  return {(a.re * ratio + a.im) / scale, (a.im * ratio - a.re) / scale};
}

}  // namespace

/// Component := numerator / divisor * 2^-fraction. With `Wide`, numerator and divisor have up to 258 bits.
template <class I>
void Fixpt::putQuotient(int component, const I& numerator, const I& divisor, std::int64_t fraction) {
  const bool isNegative = (numerator < I(0)) != (divisor < I(0));
  const I dividend = numerator < I(0) ? -numerator : numerator;
  const I by = divisor < I(0) ? -divisor : divisor;
  const int shift = quotientShift(fraction);
  const auto [quotient, exact] = divide(dividend << std::max(shift, 0), by << std::max(-shift, 0));
  I result = isNegative ? -quotient : quotient;
  if (!exact) result = (isNegative ? result - I(1) : result) | I(1);
  put<I>(component, result, attributes_.type().fraction + std::int64_t{guardBits});
}

/// The left shift of a dividend that gives the quotient its guard bits. The bounds change no result: a quotient beyond
/// them is outside every range or below a quarter of the unit.
int Fixpt::quotientShift(std::int64_t fraction) const {
  return static_cast<int>(std::clamp<std::int64_t>(attributes_.type().fraction - fraction + guardBits, -300, 500));
}

void Fixpt::divideInto(const Fixpt& numerator, const Fixpt& divisor) {
  const bool twoParts = isComplex_ && (numerator.isComplex_ || divisor.isComplex_);
  if (attributes_.isFloating() || numerator.attributes_.isFloating() || divisor.attributes_.isFloating()) {
    const ComplexDouble a = {numerator.toDouble(), numerator.imaginaryToDouble()};
    const ComplexDouble b = {divisor.toDouble(), divisor.imaginaryToDouble()};
    const auto [re, im] = divisor.isComplex_ ? divide(a, b) : ComplexDouble{a.re / b.re, a.im / b.re};
    putDouble(cursor_, re);
    if (twoParts) putDouble(cursor_ + 1, im);
  } else {
    const FixptType from = numerator.attributes_.type();
    const FixptType by = divisor.attributes_.type();
    const std::int64_t fraction = std::int64_t{from.fraction} - by.fraction;
    const int shift = quotientShift(fraction);
    const int bits =
        std::max({detail::signedBits(from) + shift, detail::signedBits(by) - shift, detail::signedBits(from),
                  detail::signedBits(by), detail::signedBits(attributes_.type())});
    if (!numerator.isComplex_ && !divisor.isComplex_ && bits <= detail::mediumBits) {
      divideExact<Int128>(numerator, divisor, fraction);
    } else {
      divideExact<Wide>(numerator, divisor, fraction);
    }
  }
  if (isComplex_ && !twoParts) store(cursor_ + 1, 0);
}

/// Stores the quotient of fixed-point operands, with its imaginary part if this array and an operand are complex.
template <class I>
void Fixpt::divideExact(const Fixpt& numerator, const Fixpt& divisor, std::int64_t fraction) {
  I re = numerator.load<I>(numerator.cursor_);
  I im = numerator.isComplex_ ? numerator.load<I>(numerator.cursor_ + 1) : I(0);
  I by = divisor.load<I>(divisor.cursor_);
  if (divisor.isComplex_) {  // numerator * conjugate of the divisor, over its squared magnitude
    const I c = by;
    const I d = divisor.load<I>(divisor.cursor_ + 1);
    const I product = re * c + im * d;
    im = im * c - re * d;
    re = product;
    by = c * c + d * d;
  }
  const auto putPart = [&](int component, const I& part) {
    if (by == I(0)) return putDouble(component, part == I(0) ? 0 : part < I(0) ? -HUGE_VAL : HUGE_VAL);
    putQuotient(component, part, by, fraction);
  };
  putPart(cursor_, re);
  if (isComplex_ && (numerator.isComplex_ || divisor.isComplex_)) putPart(cursor_ + 1, im);
}

void Fixpt::sqrtInto(Fixpt* destination) const {
  if (attributes_.isFloating() || destination->attributes_.isFloating()) {
    destination->putDouble(destination->cursor_, std::sqrt(toDouble()));
  } else {
    const FixptType from = attributes_.type();
    const FixptType to = destination->attributes_.type();
    // The radicand gives the root in quarter units. The bounds change no result: a root beyond them is outside the
    // range or below a quarter unit. The parity of the shift stays, since it decides whether a root is exact.
    const std::int64_t wanted = 2 * (std::int64_t{to.fraction} + guardBits) - from.fraction;
    const auto shift = static_cast<int>(std::clamp<std::int64_t>(wanted, -300, 602 + (wanted & 1)));
    const int bits = std::max(detail::signedBits(from) + std::max(shift, 0), detail::signedBits(to));
    if (bits <= detail::mediumBits && shift >= -detail::mediumBits) {
      destination->putRoot(load<Int128>(cursor_), shift);
    } else {
      destination->putRoot(load<Wide>(cursor_), shift);
    }
  }
  if (destination->isComplex_) destination->store(destination->cursor_ + 1, 0);
}

/// The value at the cursor := square root of `v` * 2^shift, which is a number of quarter units.
template <class I>
void Fixpt::putRoot(const I& v, int shift) {
  if (v < I(0)) return putDouble(cursor_, std::nan(""));
  const int drop = std::max(-shift, 0);
  const I radicand = (v << std::max(shift, 0)) >> drop;
  const auto [root, exact] = squareRoot(radicand);
  const bool whole = exact && radicand << drop == v << std::max(shift, 0);
  put<I>(cursor_, whole ? root : root | I(1), attributes_.type().fraction + std::int64_t{guardBits});
}

}  // namespace KarnDSPFixpt
