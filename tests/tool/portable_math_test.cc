#include "tool/portable_math.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

namespace BP::tool {
namespace {

TEST(PortableMath, ExponentialStaysWithinAFewUnitsOfTheLibrarys) {
  for (double x = 0; x > -708; x -= 0.37) ASSERT_NEAR(exponential(x) / std::exp(x), 1, 1e-15) << x;
  EXPECT_EQ(exponential(0), 1);
  EXPECT_EQ(exponential(-1e9), 0);
}

TEST(PortableMath, CosineOfTurnsStaysWithinAFewUnitsOfTheLibrarys) {
  for (double t = -1.5; t < 1.5; t += 0.0017) {
    ASSERT_NEAR(cosineOfTurns(t), std::cos(2 * std::numbers::pi * t), 2e-15) << t;
  }
  EXPECT_EQ(cosineOfTurns(1e15), 1);
  EXPECT_EQ(cosineOfTurns(-7.5), -1);
}

}  // namespace
}  // namespace BP::tool
