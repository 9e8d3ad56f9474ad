#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <memory>
#include <string>
#include <tuple>
#include <vector>

#include "tests/support/fixpt_model.h"
#include "tests/support/random_values.h"

/// Operations on fixed-point values of random types, each compared with rational arithmetic once.
namespace model {

using BP::test::pick;
using KarnDSPFixpt::Fixpt;
using KarnDSPFixpt::FixptType;
using KarnDSPFixpt::makeFixpt;

/// Random types, modes and values of any kind, those at the ends of ranges above all.
template <class SourceT>
class Dice {
 public:
  explicit Dice(SourceT& newSource) : source(newSource) {}
  int roll(int least, int greatest) { return pick(source, least, greatest); }
  bool oneIn(int n) { return roll(1, n) == 1; }

  KarnDSPFixpt::FixptType type(bool isSigned, bool anyFraction) {
    static constexpr int edges[] = {1, 2, 8, 16, 31, 32, 33, 61, 62, 63, 64, 65, 125, 126, 127, 128};
    const int word = oneIn(2) ? edges[roll(0, 15)] : roll(1, 64);
    const int fraction = anyFraction && oneIn(8) ? roll(-2000, 2000) : oneIn(2) ? roll(0, word) : roll(-40, 150);
    return {static_cast<unsigned>(word), fraction, isSigned};
  }

  std::unique_ptr<KarnDSPFixpt::Fixpt> array(bool isComplex, bool anyFraction) {
    const bool isSigned = oneIn(2);
    const auto value = type(isSigned, anyFraction), product = type(isSigned, anyFraction),
               accumulator = type(isSigned, anyFraction);
    const auto overflow = static_cast<fxpModeOverflow_tag>(roll(0, 3));
    const auto rounding = static_cast<fxpModeRounding_tag>(roll(0, 5));
    auto array = KarnDSPFixpt::makeFixpt(KarnDSPFixpt::makeAttributes({.value = value,
                                                                       .product = product,
                                                                       .accumulator = accumulator,
                                                                       .overflow = overflow,
                                                                       .rounding = rounding,
                                                                       .isComplex = isComplex}));
    for (int part = isComplex ? 1 : 0; part >= 0; --part) {
      array->setCursor(part);
      fill(*array);
    }
    return array;
  }

  /// Half of the values lie at the ends of the range or next to 0.
  void fill(KarnDSPFixpt::Fixpt& v) {
    using Uint128 = KarnDSPFixpt::detail::Uint128;
    const unsigned word = v.attributes().type().word;
    const auto ends = static_cast<Uint128>(v.attributes().isSigned()) << (word - 1);
    const Uint128 near = static_cast<Uint128>(roll(-2, 2));
    const Uint128 bits = oneIn(2) ? any128() >> roll(0, 127) : oneIn(2) ? near : ends + near;
    v.setStored(static_cast<KarnDSPFixpt::detail::Int128>(bits));
  }

 private:
  KarnDSPFixpt::detail::Uint128 any128() {
    KarnDSPFixpt::detail::Uint128 bits = 0;
    for (int i = 0; i < 4; ++i) bits = bits << 32 | static_cast<std::uint32_t>(source());
    return bits;
  }

  SourceT& source;
};

/// The result of an operation, taken with its counts, equals `expected`; `part` is the component of the result.
inline void check(Fixpt& result, const std::vector<Outcome>& expected, const char* what) {
  const fxpLogStruct_tag& log = *result.takeProperties()->getLogStruct();
  unsigned overflows = 0;
  unsigned lossy = 0;
  for (std::size_t i = 0; i < expected.size(); ++i) {
    overflows += expected[i].overflow;
    lossy += expected[i].lossy;
    EXPECT_EQ(model::stored(result, static_cast<int>(i)), expected[i].stored) << what << ", component " << i;
  }
  EXPECT_EQ(log.casts, expected.size()) << what;
  EXPECT_EQ(log.overflows, overflows) << what;
  EXPECT_EQ(log.lossyRoundings, lossy) << what;
  const double re = result.toDouble();
  EXPECT_EQ(log.minimum, result.isComplex() ? std::min(re, result.imaginaryToDouble()) : re) << what;
  EXPECT_EQ(log.maximum, result.isComplex() ? std::max(re, result.imaginaryToDouble()) : re) << what;
}

inline std::string describe(const Fixpt& v) {
  const auto& a = v.attributes();
  return formatFixptType(a.type()) + " " + std::string(KarnDSPFixpt::modeName(a.overflowMode())) + " " +
         std::string(KarnDSPFixpt::modeName(a.roundingMode())) + (a.isComplex() ? " complex " : " ") +
         value(const_cast<Fixpt&>(v)).get_str();
}

/// Products, norms, sums, differences, shifts, assignments and comparisons of real values of any types.
template <class SourceT>
void realOperations(Dice<SourceT>& dice) {
  const auto a = dice.array(false, true);
  const std::unique_ptr<Fixpt> others[] = {dice.array(false, true), dice.array(false, true)};
  const auto d = dice.array(false, true);
  const auto& to = d->attributes();
  // The first use of a pair of types prepares what the second uses; then another pair comes between.
  for (const std::size_t other : {0U, 0U, 1U, 0U}) {
    const auto& b = others[other];
    SCOPED_TRACE(describe(*a) + " | " + describe(*b) + " | " + describe(*d));
    const mpq_class x = value(*a);
    const mpq_class y = value(*b);
    EXPECT_EQ(*a > *b, x > y);
    EXPECT_EQ(*a < *b, x < y);
    EXPECT_EQ(a->isZero(), x == 0);
    Fixpt& product = *a * *b;
    FixptType productType = a->attributes().productType(a->attributes());
    productType.isSigned = a->attributes().isSigned() || b->attributes().isSigned();
    EXPECT_EQ(product.attributes().type(), productType);
    check(product, {model::cast(x * y, product.attributes())}, "product");
    Fixpt& norm = a->norm();
    check(norm, {model::cast(x * x, norm.attributes())}, "norm");
    mpq_class before = value(*d);
    *d += *b;
    check(*d, {model::cast(before + y, to)}, "sum");
    before = value(*d);
    *d -= *b;
    check(*d, {model::cast(before - y, to)}, "difference");
    before = value(*d);
    const int n = dice.roll(-140, 140);
    *d >>= n;
    check(*d, {model::cast(model::scale(before, -n), to)}, "shift");
    *d = *a;
    check(*d, {model::cast(x, to)}, "assignment");
    dice.fill(*a);
    dice.fill(*b);
  }
}

/// A quotient and a root.
template <class SourceT>
void divisionAndRoot(Dice<SourceT>& dice) {
  const auto d = dice.array(false, false);
  // A quotient of any scale is exact in every mode but wrap, whose low bits end at some scale.
  const bool anyFraction = d->attributes().overflowMode() != fxpOverflowWrap;
  const auto a = dice.array(false, anyFraction);
  const auto b = dice.array(false, anyFraction);
  SCOPED_TRACE(describe(*a) + " | " + describe(*b) + " | " + describe(*d));
  const auto& to = d->attributes();
  const mpq_class x = value(*a);
  if (!b->isZero()) {
    d->divideInto(*a, *b);
    check(*d, {model::cast(x / value(*b), to)}, "quotient");
  }
  a->sqrtInto(d.get());
  if (x >= 0) {
    check(*d, {model::castRoot(x, to.type(), to.overflowMode(), to.roundingMode())}, "root");
  } else {
    check(*d, {Outcome{0, true, false}}, "root of a negative value");
  }
}

/// The product by its definition: four partial products where both operands are complex, else one or two.
inline void checkProduct(Fixpt& left, Fixpt& right) {
  const bool sums = left.isComplex() && right.isComplex();
  const mpq_class a = value(left);
  const mpq_class c = value(right);
  const mpq_class b = left.isComplex() ? value(left, 1) : mpq_class(0);
  const mpq_class d = right.isComplex() ? value(right, 1) : mpq_class(0);
  Fixpt& result = left * right;
  const auto& type = left.subordinate(0)->attributes();
  const auto part = [&](const mpq_class& exact) { return model::cast(exact, type); };
  if (!left.isComplex() && !right.isComplex()) return check(result, {part(a * c)}, "real product");
  if (!sums) return check(result, {part(a * c), part(a * d + b * c)}, "mixed product");
  const auto cast = [&](const mpq_class& exact) {
    return model::scale(part(exact).stored, -long{type.type().fraction});
  };
  const auto& to = result.attributes();
  check(result, {model::cast(cast(a * c) - cast(b * d), to), model::cast(cast(a * d) + cast(b * c), to)},
        "complex product");
  EXPECT_EQ(left.subordinate(0)->takeProperties()->getLogStruct()->casts, 4U);
}

/// The statistics of two arrays, taken, are equal.
inline void expectAlike(Fixpt& a, Fixpt& b, const char* what) {
  const fxpLogStruct_tag x = *a.takeProperties()->getLogStruct(), y = *b.takeProperties()->getLogStruct();
  EXPECT_EQ(std::tie(x.casts, x.overflows, x.lossyRoundings, x.minimum, x.maximum),
            std::tie(y.casts, y.overflows, y.lossyRoundings, y.minimum, y.maximum))
      << what;
}

/// Products of windows, added by one call and one by one.
template <class SourceT>
void productsOfWindows(Dice<SourceT>& dice) {
  std::vector<std::uint8_t> memory(5120);  // containers whose bits beyond the word are set too
  auto state = static_cast<std::uint32_t>(dice.roll(0, 1 << 30));
  for (std::uint8_t& byte : memory) byte = static_cast<std::uint8_t>((state = state * 1664525 + 1013904223) >> 24);
  const auto arrayLike = [&](const Fixpt& other) {
    auto array = makeFixpt(other.attributes(), 0);
    array->setValPtr(memory.data());
    return array;
  };
  const bool anyFraction = dice.oneIn(4);
  const auto left = dice.array(dice.oneIn(8), anyFraction), right = dice.array(dice.oneIn(8), anyFraction);
  const auto sum = dice.array(dice.oneIn(8), anyFraction), single = makeFixpt(sum->attributes());
  const auto left2 = arrayLike(*left), right2 = arrayLike(*right), left1 = arrayLike(*left);
  SCOPED_TRACE(describe(*left) + " | " + describe(*right) + " | " + describe(*sum));
  const int width = dice.roll(1, 40), height = dice.roll(0, 3);
  single->setComplex(0, 0);
  sum->setCursor(0);
  sum->setComplex(0, 0);
  for (int use = 0; use < 2; ++use) {
    for (int n = 0; n < width * height; ++n) {
      *single += (*left1)[3 + n % width + 50 * (n / width)] * (*right2)[width * height - 1 - n];
    }
    sum->addProducts({*left2, 3, 1, 50}, {*right2, width * height - 1, -1, -width}, width, height);
    EXPECT_EQ(model::stored(*sum, 0), model::stored(*single, 0));
  }
  expectAlike(*sum, *single, "sums");
  if (height > 0) expectAlike(*left2->subordinate(0), *left1->subordinate(0), "products");
}

/// Operations of complex values.
template <class SourceT>
void complexOperations(Dice<SourceT>& dice) {
  const auto a = dice.array(true, true);
  const auto b = dice.array(true, true);
  const auto r = dice.array(false, true);
  const auto d = dice.array(true, false);
  SCOPED_TRACE(describe(*a) + " | " + describe(*b) + " | " + describe(*r) + " | " + describe(*d));
  const mpq_class re = value(*a);
  const mpq_class im = value(*a, 1);
  const mpq_class c = value(*b);
  const mpq_class e = value(*b, 1);
  EXPECT_EQ(*a < *b, re * re + im * im < c * c + e * e);
  EXPECT_EQ(*r > *a, value(*r) * value(*r) > re * re + im * im);

  // One operand meets others of other kinds, so that what was prepared for one must not serve the next.
  for (Fixpt* left : {a.get(), r.get()}) {
    for (Fixpt* right : {b.get(), b.get(), r.get(), b.get(), a.get()}) checkProduct(*left, *right);
  }
  Fixpt& norm = a->norm();
  check(norm, {model::cast(re * re + im * im, norm.attributes())}, "complex norm");
  Fixpt& conjugate = a->conjugate();
  check(conjugate, {model::cast(re, a->attributes()), model::cast(-im, a->attributes())}, "conjugate");

  const auto& to = d->attributes();
  for (int use = 0; use < 2; ++use) {
    const mpq_class x = value(*d);
    const mpq_class y = value(*d, 1);
    *d -= *a;
    check(*d, {model::cast(x - re, to), model::cast(y - im, to)}, "complex difference");
  }
  *d = *b;
  check(*d, {model::cast(c, to), model::cast(e, to)}, "complex assignment");
  const mpq_class square = c * c + e * e;
  if (square != 0 && to.overflowMode() != fxpOverflowWrap) {
    d->divideInto(*a, *b);
    check(*d, {model::cast((re * c + im * e) / square, to), model::cast((im * c - re * e) / square, to)},
          "complex quotient");
  }
}

/// Casts from doubles and integers, and back.
template <class SourceT>
void doubles(Dice<SourceT>& dice) {
  const auto d = dice.array(false, false);
  const double v = std::ldexp(dice.roll(-1000000, 1000000) * 1.0 / 7, dice.roll(-150, 150));
  SCOPED_TRACE(describe(*d) + " := " + std::to_string(v));
  *d = v;
  check(*d, {model::cast(mpq_class(v), d->attributes())}, "from double");
  dice.fill(*d);
  const double read = d->toDouble();
  const mpq_class miss = abs(mpq_class(read) - value(*d));
  EXPECT_LE(miss, abs(mpq_class(std::nextafter(read, HUGE_VAL)) - value(*d)));
  EXPECT_LE(miss, abs(mpq_class(std::nextafter(read, -HUGE_VAL)) - value(*d)));
  const int integer = dice.roll(-300, 300);
  d->takeProperties();
  *d = integer;
  if (integer != 0) check(*d, {model::cast(integer, d->attributes())}, "from int");
}

}  // namespace model
