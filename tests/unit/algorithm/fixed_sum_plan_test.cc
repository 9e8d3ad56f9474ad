#include "orvane/algorithm/fixed_sum_plan.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace BP {
namespace {

using KarnDSPFixpt::parseFixptType;
using lanes::FixedForm;

struct PlanCase {
  const char* what;
  const char *input, *filter, *product, *accumulator, *output;
  fxpModeRounding_tag rounding;
  fxpModeOverflow_tag overflow;
  std::vector<std::int64_t> taps;
  FixedSumPath path;
  int laneBits;
  FixedForm form;
};

/// Filters and types that just reach a bound, and that just pass it.
TEST(FixedSumPlan, FollowsTheBounds) {
  constexpr auto nearest = fxpRoundNearest, even = fxpRoundConvergent;
  constexpr auto saturate = fxpOverflowSaturate, wrap = fxpOverflowWrap;
  const PlanCase cases[] = {
      {"the greatest sum is that of the type",
       "u8.0",
       "u8.0",
       "u16.0",
       "u16.0",
       "u8.0",
       nearest,
       saturate,
       {128, 129},
       FixedSumPath::exact,
       32,
       FixedForm::exact},
      {"it exceeds the type by 255",
       "u8.0",
       "u8.0",
       "u16.0",
       "u16.0",
       "u8.0",
       nearest,
       saturate,
       {129, 129},
       FixedSumPath::checkedSums,
       32,
       FixedForm::quickRound},
      {"and wraps",
       "u8.0",
       "u8.0",
       "u16.0",
       "u16.0",
       "u8.0",
       nearest,
       wrap,
       {129, 129},
       FixedSumPath::generalCasts,
       32,
       FixedForm::any},
      {"a sum overflows on the way, not at the end",
       "u8.0",
       "s8.0",
       "s16.0",
       "s9.0",
       "s9.0",
       nearest,
       saturate,
       {2, -2},
       FixedSumPath::checkedSums,
       32,
       FixedForm::quickRound},
      {"taps without the bits that products drop",
       "s8.0",
       "s8.2",
       "s16.0",
       "s20.0",
       "s8.0",
       nearest,
       saturate,
       {4, -8},
       FixedSumPath::exact,
       32,
       FixedForm::exact},
      {"a tap with one of them",
       "s8.0",
       "s8.2",
       "s16.0",
       "s20.0",
       "s8.0",
       nearest,
       saturate,
       {4, -7},
       FixedSumPath::roundedProducts,
       32,
       FixedForm::quickRound},
      {"rounded to even",
       "s8.0",
       "s8.2",
       "s16.0",
       "s20.0",
       "s8.0",
       even,
       saturate,
       {4, -7},
       FixedSumPath::roundedProducts,
       32,
       FixedForm::round},
      {"a product that is just small enough",
       "s8.0",
       "s8.0",
       "s14.0",
       "s20.0",
       "s8.0",
       nearest,
       saturate,
       {64},
       FixedSumPath::exact,
       32,
       FixedForm::exact},
      {"a product just too great",
       "s8.0",
       "s8.0",
       "s14.0",
       "s20.0",
       "s8.0",
       nearest,
       saturate,
       {65},
       FixedSumPath::generalCasts,
       32,
       FixedForm::any},
      {"sums drop what is 0",
       "s8.0",
       "s8.2",
       "s16.2",
       "s20.0",
       "s8.0",
       nearest,
       saturate,
       {4, 8},
       FixedSumPath::exact,
       32,
       FixedForm::exact},
      {"sums drop bits",
       "s8.0",
       "s8.2",
       "s16.2",
       "s20.0",
       "s8.0",
       nearest,
       saturate,
       {4, 9},
       FixedSumPath::generalCasts,
       32,
       FixedForm::any},
      {"sums beyond 32 bits",
       "s16.0",
       "s16.0",
       "s32.0",
       "s40.0",
       "s16.0",
       nearest,
       saturate,
       {32767, 32767, 32767},
       FixedSumPath::exact,
       64,
       FixedForm::exact},
      {"sums that saturate at 32 bits",
       "s16.0",
       "s16.0",
       "s32.0",
       "s32.0",
       "s16.0",
       nearest,
       saturate,
       {32767, 32767, 32767},
       FixedSumPath::checkedSums,
       32,
       FixedForm::quickRoundWord},
      {"at 31 bits",
       "s16.0",
       "s16.0",
       "s32.0",
       "s31.0",
       "s16.0",
       nearest,
       saturate,
       {32767, 32767, 32767},
       FixedSumPath::checkedSums,
       32,
       FixedForm::quickRound},
      {"operands of 32 bits",
       "s32.0",
       "s16.0",
       "s48.0",
       "s60.0",
       "s16.0",
       nearest,
       saturate,
       {3},
       FixedSumPath::exact,
       64,
       FixedForm::exact},
      {"and of 33",
       "s33.0",
       "s16.0",
       "s49.0",
       "s60.0",
       "s16.0",
       nearest,
       saturate,
       {3},
       FixedSumPath::singleValues,
       0,
       FixedForm::any},
      {"sums beyond the lanes",
       "s32.0",
       "s32.0",
       "s64.0",
       "s64.0",
       "s16.0",
       nearest,
       saturate,
       {2147483647, 2147483647},
       FixedSumPath::singleValues,
       0,
       FixedForm::any},
  };
  for (const PlanCase& c : cases) {
    SCOPED_TRACE(c.what);
    const auto format = [&](const char* type) { return FixedFormat{parseFixptType(type), c.rounding, c.overflow}; };
    const FixedSumPlan plan = planFixedSum(
        {parseFixptType(c.input), parseFixptType(c.filter), format(c.product), format(c.accumulator), format(c.output)},
        c.taps);
    EXPECT_EQ(plan.path, c.path) << describe(plan.path);
    EXPECT_EQ(plan.laneBits, c.laneBits);
    if (plan.laneBits != 0) {
      EXPECT_EQ(plan.form, c.form);
    }
  }
}

/// Exact sums take the narrowest operands that hold lines and taps, shifted by half of the range or not.
TEST(FixedSumPlan, ChoosesNarrowOperands) {
  using lanes::DotOperands;
  struct DotCase {
    const char* input;
    std::vector<std::int64_t> taps;
    DotOperands dots;
    int bias;
    bool inTwo;
  };
  const std::vector<std::int64_t> many(512, 128), tooMany(513, 128);
  const DotCase cases[] = {{"u8.0", {-128, 127}, DotOperands::bytes, 0, false},
                           {"s8.0", {-128, 127}, DotOperands::bytes, 128, false},
                           {"s8.0", {0, 255}, DotOperands::signedBytes, 0, false},
                           {"u8.0", {0, 128}, DotOperands::signedBytes, -128, false},
                           {"u8.0", {-1, 128}, DotOperands::words, 0, false},
                           {"u9.0", {0, 1}, DotOperands::words, 0, false},
                           {"u16.0", {-32768, 32767}, DotOperands::words, -32768, false},
                           {"s16.0", {32768, 1}, DotOperands::none, 0, false},
                           {"s17.0", {1}, DotOperands::none, 0, false},
                           {"s16.0", {65535, 65535}, DotOperands::words, 0, true},
                           {"s16.0", {256 * 32767 + 127, 1}, DotOperands::words, 0, true},
                           {"s16.0", {256 * 32767 + 128, 1}, DotOperands::none, 0, false},
                           {"s16.0", many, DotOperands::words, 0, false},
                           {"s16.0", tooMany, DotOperands::none, 0, false}};
  for (const DotCase& c : cases) {
    const auto filter = parseFixptType("s26.0"), wide = parseFixptType("s60.0");
    const FixedFormat exact{wide, fxpRoundFloor, fxpOverflowSaturate};
    const FixedSumPlan plan = planFixedSum({parseFixptType(c.input), filter, exact, exact, exact}, c.taps);
    EXPECT_EQ(plan.path, FixedSumPath::exact);
    EXPECT_EQ(plan.dots, c.dots) << c.input << " * " << c.taps[0];
    EXPECT_EQ(plan.bias, c.bias) << c.input << " * " << c.taps[0];
    EXPECT_EQ(plan.dotsInTwo, c.inTwo) << c.input << " * " << c.taps[0];
  }
}

}  // namespace
}  // namespace BP
