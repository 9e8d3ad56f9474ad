// Every value of small types, cast in all modes that both know, against the fixed-point types of SystemC.

#include <gtest/gtest.h>

#include <array>

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

/// Casts every value of `from` into `to`, and compares with what SystemC makes of it in `theirs`.
template <class ScNumberT>
void expectSameCasts(const FixptType& from, const FixptType& to, fxpModeOverflow_tag overflow,
                     fxpModeRounding_tag rounding, ScNumberT theirs) {
  const auto given = makeFixpt(makeAttributes({.value = from, .product = from, .accumulator = from}));
  const auto ours = makeFixpt(
      makeAttributes({.value = to, .product = to, .accumulator = to, .overflow = overflow, .rounding = rounding}));
  for (int i = 0; i < 1 << from.word; ++i) {
    given->setStored(i);
    *ours = *given;
    theirs = given->toDouble();
    ASSERT_EQ(ours->toDouble(), theirs.to_double())
        << given->toDouble() << " to " << formatFixptType(to) << ' ' << modeName(overflow) << ' ' << modeName(rounding);
  }
}

TEST(FixptSystemC, CastsOfEveryValueAgree) {
  for (const bool fromSigned : {false, true}) {
    const FixptType from{9, 4, fromSigned};
    for (int word = 1; word <= 10; ++word) {
      for (int fraction = -2; fraction <= 5; ++fraction) {
        for (int mode = 0; mode < 4; ++mode) {
          for (const auto& [rounding, scRounding] : roundings) {
            const auto overflow = static_cast<fxpModeOverflow_tag>(mode);
            const sc_dt::sc_o_mode scOverflow = overflows[static_cast<std::size_t>(mode)];
            const auto bits = static_cast<unsigned>(word);
            expectSameCasts(from, {bits, fraction, true}, overflow, rounding,
                            sc_dt::sc_fix(word, word - fraction, scRounding, scOverflow));
            expectSameCasts(from, {bits, fraction, false}, overflow, rounding,
                            sc_dt::sc_ufix(word, word - fraction, scRounding, scOverflow));
            if (HasFatalFailure()) return;
          }
        }
      }
    }
  }
}

}  // namespace
