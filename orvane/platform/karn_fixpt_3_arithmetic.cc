#include <cmath>

#include "orvane/platform/karn_fixpt_3.h"
#include "orvane/platform/karn_fixpt_3_tier.h"

namespace KarnDSPFixpt {

using detail::align;
using detail::Alignment;
using detail::Int128;
using detail::Uint128;
using detail::Wide;

namespace {

std::int64_t fractionOf(const Fixpt& v) { return v.attributes().type().fraction; }
int bitsOf(const Fixpt& v) { return detail::signedBits(v.attributes().type()); }
bool floating(const Fixpt& v) { return v.attributes().isFloating(); }

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

/// Casts `exact` into the array's type and stores it. NaN is counted as an overflow.
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
  if (std::isinf(exact)) {  // an integer outside every range, whose low bits are 0
    const Wide beyond = Wide(1) << 300;
    put<Wide>(component, exact < 0 ? -beyond : beyond, fractionOf(*this));
    return;
  }
  int exponent;
  const auto mantissa = static_cast<std::int64_t>(std::ldexp(std::frexp(exact, &exponent), 53));
  const std::int64_t fraction = 53 - exponent;
  inTier(54, fraction, [&]<class I>() { put<I>(component, I(mantissa), fraction); });
}

/// Prepares the narrow cast of exact components of `bits` bits, in units of 2^-fraction, into this array, for operands
/// with `key`. Returns false if the cast is not narrow.
bool Fixpt::planCast(Plan& plan, std::uint64_t key, bool isReal, int bits, std::int64_t fraction) const {
  const std::int64_t drop = fraction - fractionOf(*this);
  if (!isNarrow_ || !detail::holds(detail::narrowBits, bits, drop)) return false;
  plan.key = isReal ? key : 0;
  plan.partsKey = key;
  plan.append = static_cast<int>(std::max<std::int64_t>(-drop, 0));
  plan.rounder = detail::makeRounder<std::int64_t>(static_cast<int>(drop), attributes_.roundingMode());
  return true;
}

bool Fixpt::planAssign(const Fixpt& v) {
  if (assignPlan_.partsKey == v.key_) return true;
  return v.isNarrow_ && planCast(assignPlan_, v.key_, !isComplex_ && !v.isComplex_, bitsOf(v), fractionOf(v));
}

Fixpt& Fixpt::assignAny(const Fixpt& v) {
  const bool isPlanned = planAssign(v);
  const std::int64_t fraction = fractionOf(v);
  for (int part = 0; part <= (isComplex_ ? 1 : 0); ++part) {
    const int target = cursor_ + part;
    const int source = v.cursor_ + part;
    if (part == 1 && !v.isComplex_) {
      store(target, 0);
    } else if (isPlanned) {
      putNarrow(target, v.loadNarrow(source) << assignPlan_.append, assignPlan_.rounder);
    } else if (floating(*this) || floating(v)) {
      putDouble(target, v.componentToDouble(source));
    } else {
      inTier(bitsOf(v), fraction, [&]<class I>() { put<I>(target, v.load<I>(source), fraction); });
    }
  }
  return *this;
}

void Fixpt::assignInteger(int v) {
  constexpr std::uint64_t anyKey = 1;
  if (planCast(integerPlan_, anyKey, !isComplex_, 32, 0) && !isComplex_) {
    *this = v;
    return;
  }
  if (floating(*this)) {
    putDouble(cursor_, v);
  } else {
    inTier(32, 0, [&]<class I>() { put<I>(cursor_, I(v), 0); });
  }
  if (isComplex_) store(cursor_ + 1, 0);
}

bool Fixpt::planSum(const Fixpt& v) {
  if (sumPlan_.partsKey == v.key_) return true;
  if (!isNarrow_ || !v.isNarrow_) return false;
  const Alignment shifts = align(fractionOf(*this), fractionOf(v), detail::maxAppend);
  const int bits = std::max(bitsOf(*this) + shifts.own, bitsOf(v) + shifts.other) + 1;
  Plan plan;
  if (!planCast(plan, v.key_, !isComplex_ && !v.isComplex_, bits, shifts.fraction)) return false;
  sumPlan_ = plan;
  sumPlan_.append = shifts.own;
  sumPlan_.otherAppend = shifts.other;
  return true;
}

Fixpt& Fixpt::addAny(const Fixpt& v, bool subtracts) {
  const bool isPlanned = planSum(v);
  for (int part = 0; part <= (isComplex_ && v.isComplex_ ? 1 : 0); ++part) {
    if (isPlanned) {
      addNarrow(cursor_ + part, v, v.cursor_ + part, subtracts);
    } else {
      putSum(cursor_ + part, *this, cursor_ + part, v, v.cursor_ + part, subtracts);
    }
  }
  return *this;
}

/// Component `target` := component `i` of `a` plus or minus component `j` of `b`.
void Fixpt::putSum(int target, const Fixpt& a, int i, const Fixpt& b, int j, bool subtracts) {
  if (floating(*this) || floating(a) || floating(b)) {
    const double x = a.componentToDouble(i);
    const double y = b.componentToDouble(j);
    return putDouble(target, subtracts ? x - y : x + y);
  }
  const Alignment shifts = align(fractionOf(a), fractionOf(b), detail::maxAppend);
  const int bits = std::max(bitsOf(a) + shifts.own, bitsOf(b) + shifts.other) + 1;
  inTier(bits, shifts.fraction, [&]<class I>() {
    const I x = a.load<I>(i) << shifts.own;
    const I y = b.load<I>(j) << shifts.other;
    put<I>(target, subtracts ? x - y : x + y, shifts.fraction);
  });
}

/// Prepares the types and plans of the subordinate values for products with values of the type of `v`.
void Fixpt::prepareProduct(const Fixpt& v) const {
  if (preparedFor_ == v.key_) return;
  const bool isSigned = attributes_.isSigned() || v.attributes_.isSigned();
  const bool hasSums = isComplex_ && v.isComplex_;
  const Fixpt& product =
      subordinateAs(0, attributes_.derived(FixptRole::product, isSigned, isComplex_ || v.isComplex_));
  productPlan_ = partialSumPlan_ = Plan{};
  if (isNarrow_ && v.isNarrow_) {
    product.planCast(productPlan_, v.key_, !product.isComplex_, bitsOf(*this) + bitsOf(v),
                     fractionOf(*this) + fractionOf(v));
  }
  if (hasSums) {
    const Fixpt& sum = subordinateAs(1, attributes_.derived(FixptRole::accumulator, isSigned, true));
    if (product.isNarrow_) {
      sum.planCast(partialSumPlan_, v.key_, false, bitsOf(product) + 1, fractionOf(product));
    }
  }
  preparedFor_ = v.key_;
}

Fixpt& Fixpt::productFor(const Fixpt& v) const {
  prepareProduct(v);
  Fixpt& result = *subordinates_[isComplex_ && v.isComplex_ ? 1 : 0];
  result.cursor_ = 0;
  return result;
}

Fixpt& Fixpt::productAny(const Fixpt& v) const {
  const int other = v.cursor_;  // `v` may be the last product, whose cursor is about to be reset
  Fixpt& result = productFor(v);
  putPartialProduct(0, cursor_, v, other);
  if (!isComplex_ && !v.isComplex_) return result;
  if (!isComplex_ || !v.isComplex_) {
    putPartialProduct(1, cursor_ + (isComplex_ ? 1 : 0), v, other + (v.isComplex_ ? 1 : 0));
    return result;
  }
  // All partial products come before the sums: `v` may be the last sum.
  putPartialProduct(1, cursor_ + 1, v, other + 1);
  putPartialProduct(2, cursor_, v, other + 1);
  putPartialProduct(3, cursor_ + 1, v, other);
  putPartialSum(0, 0, 1, true);
  putPartialSum(1, 2, 3, false);
  return result;
}

/// Component of the product := component `own` of this array times component `other` of `v`. `prepareProduct` has run.
void Fixpt::putPartialProduct(int component, int own, const Fixpt& v, int other) const {
  Fixpt& product = *subordinates_[0];
  if (productPlan_.partsKey != v.key_) return product.putProduct(component, *this, own, v, other);
  product.putNarrow(component, (loadNarrow(own) * v.loadNarrow(other)) << productPlan_.append, productPlan_.rounder);
}

/// Component of the complex product := partial product `i` plus or minus partial product `j`. `prepareProduct` has run.
void Fixpt::putPartialSum(int component, int i, int j, bool subtracts) const {
  const Fixpt& product = *subordinates_[0];
  Fixpt& sum = *subordinates_[1];
  if (partialSumPlan_.partsKey != preparedFor_) return sum.putSum(component, product, i, product, j, subtracts);
  const std::int64_t a = product.loadNarrow(i);
  const std::int64_t b = product.loadNarrow(j);
  sum.putNarrow(component, (subtracts ? a - b : a + b) << partialSumPlan_.append, partialSumPlan_.rounder);
}

/// Component := product of component `i` of `a` and component `j` of `b`.
void Fixpt::putProduct(int component, const Fixpt& a, int i, const Fixpt& b, int j) {
  if (floating(*this) || floating(a) || floating(b)) {
    return putDouble(component, a.componentToDouble(i) * b.componentToDouble(j));
  }
  const std::int64_t fraction = fractionOf(a) + fractionOf(b);
  inTier(bitsOf(a) + bitsOf(b), fraction, [&]<class I>() { put<I>(component, a.load<I>(i) * b.load<I>(j), fraction); });
}

Fixpt& Fixpt::normAny() const {
  Fixpt& square = subordinateAs(2, attributes_.derived(FixptRole::product, attributes_.isSigned(), false));
  if (isNarrow_ && !isComplex_ && square.planCast(normPlan_, key_, true, 2 * bitsOf(*this), 2 * fractionOf(*this))) {
    return norm();
  }
  if (floating(*this)) {
    square.putDouble(0, squaredMagnitude<double>());
  } else {
    const std::int64_t fraction = 2 * fractionOf(*this);
    square.inTier(2 * bitsOf(*this) + 1, fraction,
                  [&]<class I>() { square.put<I>(0, squaredMagnitude<I>(), fraction); });
  }
  return square;
}

/// The squared magnitude of the value at the cursor. The number type I must hold it.
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
  // After a shift by the limit, every value except 0 exceeds every squared magnitude.
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
