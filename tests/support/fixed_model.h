#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <random>
#include <string>
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

  mpq_class operator()(const mpq_class& exact) {
    const model::Outcome outcome =
        model::cast(exact, {static_cast<unsigned>(type.word), type.fraction, type.isSigned},
                    static_cast<fxpModeOverflow_tag>(modes.overflow), static_cast<fxpModeRounding_tag>(modes.rounding));
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

/// Values of any bits, also of those beyond the word.
inline filters::FixedArray randomFixed(std::mt19937& random, const filters::Extents& extents, const FixedType& type,
                                       bool isComplex = false) {
  filters::FixedArray array(extents, type, isComplex);
  auto* bytes = static_cast<std::uint8_t*>(array.data());
  const std::size_t count = filters::detail::bytesOf(extents, type, isComplex);
  for (std::size_t i = 0; i < count; ++i) bytes[i] = static_cast<std::uint8_t>(pick(random, 0, 255));
  return array;
}

/// A type of `least` to `most` bits, with a fraction that is mostly within.
inline FixedType randomType(std::mt19937& random, int least, int most) {
  const int word = pick(random, least, most);
  return {word, pick(random, -2, word), pick(random, 0, 1) == 1};
}

inline filters::FixedModes randomModes(std::mt19937& random) {
  return {filters::Rounding{pick(random, 0, 5)}, filters::Overflow{pick(random, 0, 3)}};
}

}  // namespace BP::test
