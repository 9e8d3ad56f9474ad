#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <optional>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "orvane/filters/fixed_array.h"
#include "orvane/platform/karn_fixpt_3_make.h"
#include "tests/support/fixpt_model.h"
#include "tests/support/random_values.h"

/// Fixed-point arrays of the friendly API as exact numbers.
namespace BP::test {

using filters::FixedType;

/// Casts into a type, and what is to be counted of them.
struct ExactCast {
  FixedType type;
  filters::FixedModes modes;
  filters::FixedStatistics counts = {};

  mpq_class operator()(const mpq_class& exact) { return counted(model::cast(exact, core(), overflow(), rounding())); }
  /// The cast of the square root of a value that is not negative.
  mpq_class root(const mpq_class& exact) { return counted(model::castRoot(exact, core(), overflow(), rounding())); }

 private:
  KarnDSPFixpt::FixptType core() const { return {static_cast<unsigned>(type.word), type.fraction, type.isSigned}; }
  fxpModeOverflow_tag overflow() const { return static_cast<fxpModeOverflow_tag>(modes.overflow); }
  fxpModeRounding_tag rounding() const { return static_cast<fxpModeRounding_tag>(modes.rounding); }
  mpq_class counted(const model::Outcome& outcome) {
    const mpq_class value = model::scale(outcome.stored, -long{type.fraction});
    ++counts.casts;
    counts.overflows += outcome.overflow;
    counts.lossy += outcome.lossy;
    counts.minimum = std::min(counts.minimum, value.get_d());
    counts.maximum = std::max(counts.maximum, value.get_d());
    return value;
  }
};

inline const filters::FixedStatistics& labelled(const std::vector<filters::FixedStatistics>& all,
                                                const std::string& label) {
  static const filters::FixedStatistics none;
  const auto found = std::ranges::find(all, label, &filters::FixedStatistics::label);
  return found == all.end() ? none : *found;
}

inline void expectCounts(const filters::FixedStatistics& actual, const filters::FixedStatistics& expected) {
  EXPECT_EQ(actual.casts, expected.casts) << actual.label;
  EXPECT_EQ(actual.overflows, expected.overflows) << actual.label;
  EXPECT_EQ(actual.lossy, expected.lossy) << actual.label;
  EXPECT_DOUBLE_EQ(actual.minimum, expected.minimum) << actual.label;  // of long words the model has them truncated
  EXPECT_DOUBLE_EQ(actual.maximum, expected.maximum) << actual.label;
}

/// The components of an array.
inline std::vector<mpq_class> exactValues(const filters::FixedView& view) {
  const KarnDSPFixpt::FixptType type{static_cast<unsigned>(view.type().word), view.type().fraction,
                                     view.type().isSigned};
  const auto values =
      KarnDSPFixpt::makeFixpt(KarnDSPFixpt::makeAttributes({.value = type, .product = type, .accumulator = type}), 0);
  values->setValPtr(const_cast<void*>(view.data()));
  std::vector<mpq_class> exact;
  const auto count = static_cast<int>(filters::elementCount(view.extents())) << (view.isComplex() ? 1 : 0);
  for (int i = 0; i < count; ++i) exact.push_back(model::value((*values)[i]));
  return exact;
}

/// An element or a sum as an exact number.
struct Exact {
  mpq_class re, im;
  bool isComplex = false;

  Exact() = default;
  Exact(mpq_class real, mpq_class imaginary, bool complex)
      : re(std::move(real)), im(std::move(imaginary)), isComplex(complex) {}
  explicit Exact(mpq_class real) : Exact(std::move(real), 0, false) {}
  bool operator==(const Exact& other) const { return re == other.re && im == other.im; }
};

/// What comparisons look at.
inline mpq_class magnitude(const Exact& v) { return v.isComplex ? mpq_class(v.re * v.re + v.im * v.im) : v.re; }

inline std::vector<Exact> exactElements(const filters::FixedArray& array) {
  std::vector<Exact> elements;
  const std::vector<mpq_class> parts = exactValues(array);
  const std::size_t step = array.isComplex() ? 2 : 1;
  for (std::size_t i = 0; i < parts.size(); i += step) {
    elements.emplace_back(parts[i], array.isComplex() ? parts[i + 1] : mpq_class(0), array.isComplex());
  }
  return elements;
}

/// The casts of sums of products, real or complex.
struct ExactCasts {
  bool isComplex = false;  ///< the sums
  ExactCast product, partialSum, accumulator, output;

  /// Casts for products of types `a` and `b`; `given` is a product type of that sign, without which they are exact.
  void setTypes(const FixedType& a, const FixedType& b, const std::optional<FixedType>& given,
                const FixedType& accumulatorType, const FixedType& outputType, const filters::FixedModes& modes) {
    const FixedType exact{a.word + b.word, a.fraction + b.fraction, a.isSigned || b.isSigned};
    product = {given.value_or(exact), modes};
    accumulator = partialSum = {accumulatorType, modes};
    partialSum.type.isSigned = exact.isSigned;  // results of operations have the sign of their operands
    output = {outputType, modes};
  }
  Exact sum(ExactCast& cast, const mpq_class& re, const mpq_class& im) const {
    return {cast(re), isComplex ? cast(im) : mpq_class(0), isComplex};
  }
  Exact multiply(const Exact& a, const Exact& b) {
    if (!a.isComplex && !b.isComplex) return Exact(product(a.re * b.re));
    if (!a.isComplex) return {product(a.re * b.re), product(a.re * b.im), true};
    if (!b.isComplex) return {product(a.re * b.re), product(a.im * b.re), true};
    const mpq_class rr = product(a.re * b.re), ii = product(a.im * b.im), ri = product(a.re * b.im),
                    ir = product(a.im * b.re);
    return {partialSum(rr - ii), partialSum(ri + ir), true};
  }
  Exact accumulate(const Exact& acc, const Exact& p) { return sum(accumulator, acc.re + p.re, acc.im + p.im); }
  Exact written(const Exact& acc) { return sum(output, acc.re, acc.im); }

  void expectCountsOfSums(const std::vector<filters::FixedStatistics>& statistics) const {
    expectCounts(labelled(statistics, "accumulator"), accumulator.counts);
    expectCounts(labelled(statistics, "product"), product.counts);
    expectCounts(labelled(statistics, "product sum"), partialSum.counts);
  }
};

/// Values of any bits, also of those beyond the word.
inline filters::FixedArray randomFixed(auto& random, const filters::Extents& extents, const FixedType& type,
                                       bool isComplex = false) {
  filters::FixedArray array(extents, type, isComplex);
  auto* bytes = static_cast<std::uint8_t*>(array.data());
  const std::size_t count = filters::detail::bytesOf(extents, type, isComplex);
  for (std::size_t i = 0; i < count; ++i) bytes[i] = static_cast<std::uint8_t>(pick(random, 0, 255));
  return array;
}

/// A type of `least` to `most` bits, with a fraction that is mostly within.
inline FixedType randomType(auto& random, int least, int most) {
  const int word = pick(random, least, most);
  return {word, pick(random, -2, word), pick(random, 0, 1) == 1};
}

inline filters::FixedModes randomModes(auto& random) {
  return {filters::Rounding{pick(random, 0, 5)}, filters::Overflow{pick(random, 0, 3)}};
}

}  // namespace BP::test
