// Every pair of values of small types, in all modes that both know, against the fixed-point types of SystemC.

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <memory>
#include <optional>

#define SC_INCLUDE_FX
#include <sysc/datatypes/fx/fx.h>

#include "orvane/platform/karn_fixpt_3_make.h"

// The library of SystemC asks for it, and brings a main of its own; nothing here is simulated.
extern "C" __attribute__((visibility("default"))) int sc_main(int, char*[]) { return 0; }

int main(int argc, char* argv[]) {
  testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}

namespace {

using namespace KarnDSPFixpt;

constexpr std::array<sc_dt::sc_o_mode, 4> overflows = {sc_dt::SC_WRAP, sc_dt::SC_SAT, sc_dt::SC_SAT_SYM,
                                                       sc_dt::SC_SAT_ZERO};
// SystemC has no rounding towards +infinity.
constexpr std::array<std::pair<fxpModeRounding_tag, sc_dt::sc_q_mode>, 5> roundings = {
    {{fxpRoundConvergent, sc_dt::SC_RND_CONV},
     {fxpRoundFloor, sc_dt::SC_TRN},
     {fxpRoundNearest, sc_dt::SC_RND},
     {fxpRoundRound, sc_dt::SC_RND_INF},
     {fxpRoundZero, sc_dt::SC_TRN_ZERO}}};

/// The same type in both libraries; a signed or an unsigned number of SystemC holds the value.
struct Twin {
  Twin(const FixptType& type, fxpModeOverflow_tag overflow, fxpModeRounding_tag rounding, sc_dt::sc_q_mode scRounding)
      : ours(makeFixpt(makeAttributes(
            {.value = type, .product = type, .accumulator = type, .overflow = overflow, .rounding = rounding}))) {
    const int word = static_cast<int>(type.word);
    const int integer = word - type.fraction;
    const auto mode = overflows[static_cast<std::size_t>(overflow)];
    if (type.isSigned) {
      theirs.emplace(word, integer, scRounding, mode);
    } else {
      theirsUnsigned.emplace(word, integer, scRounding, mode);
    }
  }

  /// What SystemC makes of `exact` in this type.
  double cast(const sc_dt::sc_fxval& exact) {
    return theirs ? (*theirs = exact).to_double() : (*theirsUnsigned = exact).to_double();
  }
  double cast(double exact) { return cast(sc_dt::sc_fxval(exact)); }

  std::unique_ptr<Fixpt> ours;
  std::optional<sc_dt::sc_fix> theirs;
  std::optional<sc_dt::sc_ufix> theirsUnsigned;
};

/// All operations on every pair of values of the types of `a` and `b`; the results go into `d`.
void compareAllPairs(const FixptType& typeA, const FixptType& typeB, Twin& d, Twin& product) {
  FixptType productType = product.ours->attributes().type();
  productType.isSigned = typeA.isSigned;  // the right operand can make it signed
  const auto a = makeFixpt(makeAttributes({.value = typeA,
                                           .product = productType,
                                           .accumulator = {40, 0, typeA.isSigned},
                                           .overflow = d.ours->attributes().overflowMode(),
                                           .rounding = d.ours->attributes().roundingMode()}));
  const auto b = makeFixpt(
      makeAttributes({.value = typeB, .product = {32, 0, typeB.isSigned}, .accumulator = {40, 0, typeB.isSigned}}));
  for (int i = 0; i < 1 << typeA.word; ++i) {
    a->setStored(i);
    const double x = a->toDouble();
    for (int n : {-2, 0, 1, 3}) {
      *d.ours = *a;
      const sc_dt::sc_fxval held(d.cast(x));
      ASSERT_EQ(d.ours->toDouble(), held.to_double()) << "cast of " << x;
      *d.ours >>= n;
      ASSERT_EQ(d.ours->toDouble(), d.cast(held * sc_dt::sc_fxval(std::ldexp(1, -n))))
          << "shift of " << x << " by " << n;
    }
    for (int j = 0; j < 1 << typeB.word; ++j) {
      b->setStored(j);
      const double y = b->toDouble();
      ASSERT_EQ(*a < *b, x < y);
      ASSERT_EQ(*a > *b, x > y);
      ASSERT_EQ((*a * *b).toDouble(), product.cast(sc_dt::sc_fxval(x) * sc_dt::sc_fxval(y))) << x << " * " << y;
      *d.ours = *a;
      const sc_dt::sc_fxval held(d.ours->toDouble());
      *d.ours += *b;
      ASSERT_EQ(d.ours->toDouble(), d.cast(held + sc_dt::sc_fxval(y))) << held.to_double() << " + " << y;
      *d.ours = *a;
      *d.ours -= *b;
      ASSERT_EQ(d.ours->toDouble(), d.cast(held - sc_dt::sc_fxval(y))) << held.to_double() << " - " << y;
    }
  }
}

class SmallTypes : public testing::TestWithParam<std::tuple<unsigned, bool, bool>> {};

TEST_P(SmallTypes, AgreeWithSystemCOnEveryPair) {
  const auto [wordA, signA, signB] = GetParam();
  const int fractionA = static_cast<int>(wordA) / 2 + 1;
  for (unsigned wordB = 1; wordB <= 6; ++wordB) {
    const int mode = static_cast<int>(wordA + wordB);
    for (int o = 0; o < 4; ++o) {
      const auto overflow = static_cast<fxpModeOverflow_tag>(o);
      for (const auto& [rounding, scRounding] : roundings) {
        // A target of half the word and less fraction than either operand: all casts round, many overflow.
        Twin d({(wordA + wordB) / 2 + 1, 1 - mode % 3, signA}, overflow, rounding, scRounding);
        Twin product({wordA, fractionA - 1, signA || signB}, overflow, rounding, scRounding);
        SCOPED_TRACE(std::to_string(wordA) + "x" + std::to_string(wordB) + " " + std::string(modeName(overflow)) + " " +
                     std::string(modeName(rounding)));
        compareAllPairs({wordA, fractionA, signA}, {wordB, 2, signB}, d, product);
        if (HasFatalFailure()) return;
      }
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Fixpt, SmallTypes,
                         testing::Combine(testing::Values(1, 2, 3, 4, 5, 6), testing::Bool(), testing::Bool()));

}  // namespace
