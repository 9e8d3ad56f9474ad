#include <cmath>

#include "orvane/platform/karn_fixpt_3.h"
#include "orvane/platform/karn_fixpt_3_tier.h"

namespace KarnDSPFixpt {

using detail::Int128;
using detail::Uint128;
using detail::Wide;

namespace {

std::int64_t fractionOf(const Fixpt& v) { return v.attributes().type().fraction; }
int bitsOf(const Fixpt& v) { return detail::signedBits(v.attributes().type()); }
bool floating(const Fixpt& v) { return v.attributes().isFloating(); }

/// The shifts that bring two fractions to the greater one, no longer than what can matter, and that fraction.
struct Alignment {
  int own;
  int other;
  std::int64_t fraction;
};

Alignment align(std::int64_t own, std::int64_t other, std::int64_t limit) {
  const auto cap = [limit](std::int64_t shift) { return static_cast<int>(std::clamp<std::int64_t>(shift, 0, limit)); };
  return {cap(other - own), cap(own - other), own + cap(other - own)};
}

}  // namespace

double Fixpt::componentToDouble(int component) const {
  if (attributes_.overrideMode() == KarnSimCommon::overrideDouble) {
    double v;
    std::memcpy(&v, address(component), sizeof v);
    return v;
  }
  if (attributes_.overrideMode() == KarnSimCommon::overrideSingle) {
    float v;
    std::memcpy(&v, address(component), sizeof v);
    return v;
  }
  const FixptType type = attributes_.type();
  const double v =
      type.isSigned ? static_cast<double>(load<Int128>(component)) : static_cast<double>(load<Uint128>(component));
  return detail::scaled(v, type.fraction);
}

/// Stores `exact` as the array's type says; what overflows, or is no number, is counted as an overflow.
void Fixpt::putDouble(int component, double exact) {
  if (floating(*this)) {
    const bool single = attributes_.overrideMode() == KarnSimCommon::overrideSingle;
    const float narrow = static_cast<float>(exact);
    const double v = single ? narrow : exact;
    store(component, single ? std::bit_cast<std::uint32_t>(narrow) : Uint128{std::bit_cast<std::uint64_t>(exact)});
    if (counting_) addStatistics({0, 1, 0, 1, std::isnan(v) ? HUGE_VAL : v, std::isnan(v) ? -HUGE_VAL : v});
    return;
  }
  if (std::isnan(exact)) {
    store(component, 0);
    if (counting_) addStatistics({1, 1, 0, 1, 0, 0});
    return;
  }
  if (std::isinf(exact)) {  // beyond every range, with low bits of 0
    const Wide beyond = Wide(1) << 300;
    put<Wide>(component, exact < 0 ? -beyond : beyond, fractionOf(*this));
    return;
  }
  int exponent;
  const auto mantissa = static_cast<std::int64_t>(std::ldexp(std::frexp(exact, &exponent), 53));
  const std::int64_t fraction = 53 - exponent;
  inTier(54, fraction, [&]<class I>() { put<I>(component, I(mantissa), fraction); });
}

/// Prepares the narrow cast of exact values of `bits` bits in units of 2^-fraction into this array, for operands with
/// `key`. False: it is not narrow.
bool Fixpt::planCast(Plan& plan, std::uint64_t key, int bits, std::int64_t fraction) const {
  const std::int64_t drop = fraction - fractionOf(*this);
  if (!isNarrow_ || !detail::holds(detail::narrowBits, bits, drop)) return false;
  plan.append = static_cast<int>(std::max<std::int64_t>(-drop, 0));
  plan.rounder = detail::makeRounder<std::int64_t>(static_cast<int>(drop), attributes_.roundingMode());
  plan.key = key;
  return true;
}

bool Fixpt::planAssign(const Fixpt& v) {
  return v.isNarrow_ && planCast(assignPlan_, v.key_, bitsOf(v), fractionOf(v));
}

Fixpt& Fixpt::assignAny(const Fixpt& v) {
  if (planAssign(v)) return *this = v;
  const std::int64_t fraction = fractionOf(v);
  for (int part = 0; part <= (isComplex_ ? 1 : 0); ++part) {
    if (part == 1 && !v.isComplex_) {
      store(cursor_ + 1, 0);
    } else if (floating(*this) || floating(v)) {
      putDouble(cursor_ + part, v.componentToDouble(v.cursor_ + part));
    } else {
      inTier(bitsOf(v), fraction, [&]<class I>() { put<I>(cursor_ + part, v.load<I>(v.cursor_ + part), fraction); });
    }
  }
  return *this;
}

bool Fixpt::planSum(const Fixpt& v) {
  const Alignment shifts = align(fractionOf(*this), fractionOf(v), detail::greatestAppend);
  const int bits = std::max(bitsOf(*this) + shifts.own, bitsOf(v) + shifts.other) + 1;
  if (!isNarrow_ || !v.isNarrow_ || bits > detail::narrowBits) return false;
  sumPlan_ = {v.key_, shifts.own, shifts.other,
              detail::makeRounder<std::int64_t>(shifts.own, attributes_.roundingMode())};
  return true;
}

Fixpt& Fixpt::addAny(const Fixpt& v, bool subtracts) {
  if (planSum(v)) return subtracts ? *this -= v : *this += v;
  const int right = v.cursor_;
  putSum(cursor_, *this, cursor_, v, right, subtracts);
  if (isComplex_ && v.isComplex_) putSum(cursor_ + 1, *this, cursor_ + 1, v, right + 1, subtracts);
  return *this;
}

/// Component `target` := component `i` of `a` plus or minus component `j` of `b`.
void Fixpt::putSum(int target, const Fixpt& a, int i, const Fixpt& b, int j, bool subtracts) {
  if (floating(*this) || floating(a) || floating(b)) {
    const double x = a.componentToDouble(i);
    const double y = b.componentToDouble(j);
    return putDouble(target, subtracts ? x - y : x + y);
  }
  const Alignment shifts = align(fractionOf(a), fractionOf(b), detail::greatestAppend);
  const int bits = std::max(bitsOf(a) + shifts.own, bitsOf(b) + shifts.other) + 1;
  inTier(bits, shifts.fraction, [&]<class I>() {
    const I x = a.load<I>(i) << shifts.own;
    const I y = b.load<I>(j) << shifts.other;
    put<I>(target, subtracts ? x - y : x + y, shifts.fraction);
  });
}

/// Gives the subordinate values of products with a value like `v` their types.
void Fixpt::prepareProduct(const Fixpt& v) const {
  if (preparedFor_ == v.key_) return;
  const bool isSigned = attributes_.isSigned() || v.attributes_.isSigned();
  subordinateAs(0, attributes_.derived(FixptRole::product, isSigned, isComplex_ || v.isComplex_));
  if (isComplex_ && v.isComplex_) subordinateAs(1, attributes_.derived(FixptRole::accumulator, isSigned, true));
  preparedFor_ = v.key_;
}

bool Fixpt::planProduct(const Fixpt& v) const {
  return isNarrow_ && v.isNarrow_ &&
         subordinates_[0]->planCast(productPlan_, v.key_, bitsOf(*this) + bitsOf(v), fractionOf(*this) + fractionOf(v));
}

Fixpt& Fixpt::productFor(const Fixpt& v) const {
  prepareProduct(v);
  Fixpt& result = *subordinates_[isComplex_ && v.isComplex_ ? 1 : 0];
  result.cursor_ = 0;
  return result;
}

Fixpt& Fixpt::productAny(const Fixpt& v) const {
  const int right = v.cursor_;  // `v` may be the last product, whose cursor is about to be reset
  prepareProduct(v);
  if (planProduct(v)) return *this * v;
  Fixpt& product = *subordinates_[0];
  product.cursor_ = 0;
  product.putProduct(0, *this, cursor_, v, right);
  if (!isComplex_ && !v.isComplex_) return product;
  if (!isComplex_ || !v.isComplex_) {
    product.putProduct(1, *this, cursor_ + (isComplex_ ? 1 : 0), v, right + (v.isComplex_ ? 1 : 0));
    return product;
  }
  // All partial products come before the sums: `v` may be the last sum.
  product.putProduct(1, *this, cursor_ + 1, v, right + 1);
  product.putProduct(2, *this, cursor_, v, right + 1);
  product.putProduct(3, *this, cursor_ + 1, v, right);
  Fixpt& sum = *subordinates_[1];
  sum.cursor_ = 0;
  sum.putSum(0, product, 0, product, 1, true);
  sum.putSum(1, product, 2, product, 3, false);
  return sum;
}

/// Component := product of component `i` of `a` and component `j` of `b`.
void Fixpt::putProduct(int component, const Fixpt& a, int i, const Fixpt& b, int j) {
  if (floating(*this) || floating(a) || floating(b)) {
    return putDouble(component, a.componentToDouble(i) * b.componentToDouble(j));
  }
  const std::int64_t fraction = fractionOf(a) + fractionOf(b);
  inTier(bitsOf(a) + bitsOf(b), fraction, [&]<class I>() { put<I>(component, a.load<I>(i) * b.load<I>(j), fraction); });
}

bool Fixpt::planNorm() const {
  return isNarrow_ && subordinates_[2]->planCast(normPlan_, key_, 2 * bitsOf(*this), 2 * fractionOf(*this));
}

Fixpt& Fixpt::normAny() const {
  Fixpt& square = subordinateAs(2, attributes_.derived(FixptRole::product, attributes_.isSigned(), false));
  if (planNorm()) return norm();
  if (floating(*this)) {
    square.putDouble(0, squaredMagnitude<double>());
  } else {
    const std::int64_t fraction = 2 * fractionOf(*this);
    square.inTier(2 * bitsOf(*this) + 1, fraction,
                  [&]<class I>() { square.put<I>(0, squaredMagnitude<I>(), fraction); });
  }
  return square;
}

/// The squared magnitude of the value at the cursor, in a number type that holds it.
template <class I>
I Fixpt::squaredMagnitude() const {
  const auto component = [this](int i) {
    if constexpr (std::is_same_v<I, double>) {
      return componentToDouble(i);
    } else {
      return load<I>(i);
    }
  };
  const I re = component(cursor_);
  if (!isComplex_) return re * re;
  const I im = component(cursor_ + 1);
  return re * re + im * im;
}

Fixpt& Fixpt::conjugate() const {
  Fixpt& result = subordinateAs(4, attributes_);
  for (int part = 0; part <= (isComplex_ ? 1 : 0); ++part) {
    if (floating(*this)) {
      const double v = componentToDouble(cursor_ + part);
      result.putDouble(part, part == 1 ? -v : v);
    } else {
      result.inTier(bitsOf(*this) + 1, fractionOf(*this), [&]<class I>() {
        const I v = load<I>(cursor_ + part);
        result.put<I>(part, part == 1 ? -v : v, fractionOf(*this));
      });
    }
  }
  return result;
}

Fixpt& Fixpt::operator>>=(int n) {
  for (int part = 0; part <= (isComplex_ ? 1 : 0); ++part) {
    const int component = cursor_ + part;
    if (floating(*this)) {
      putDouble(component, detail::scaled(componentToDouble(component), n));
    } else {
      const std::int64_t fraction = fractionOf(*this) + n;
      inTier(bitsOf(*this), fraction, [&]<class I>() { put<I>(component, load<I>(component), fraction); });
    }
  }
  return *this;
}

int Fixpt::compareAny(const Fixpt& v) const {
  const auto sign = [](const auto& a, const auto& b) { return a > b ? 1 : a < b ? -1 : 0; };
  const bool magnitudes = isComplex_ || v.isComplex_;
  if (floating(*this) || floating(v)) {
    return magnitudes ? sign(squaredMagnitude<double>(), v.squaredMagnitude<double>()) : sign(toDouble(), v.toDouble());
  }
  // A value other than 0, shifted by the limit, exceeds every squared magnitude.
  constexpr std::int64_t limit = 300;
  if (magnitudes) {
    const Alignment shifts = align(2 * fractionOf(*this), 2 * fractionOf(v), limit);
    return sign(squaredMagnitude<Wide>() << shifts.own, v.squaredMagnitude<Wide>() << shifts.other);
  }
  const Alignment shifts = align(fractionOf(*this), fractionOf(v), limit);
  if (std::max(bitsOf(*this) + shifts.own, bitsOf(v) + shifts.other) <= detail::mediumBits) {
    return sign(load<Int128>(cursor_) << shifts.own, v.load<Int128>(v.cursor_) << shifts.other);
  }
  return sign(load<Wide>(cursor_) << shifts.own, v.load<Wide>(v.cursor_) << shifts.other);
}

}  // namespace KarnDSPFixpt
