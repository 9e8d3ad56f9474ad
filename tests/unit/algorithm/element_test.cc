#include "orvane/algorithm/element.h"

#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <limits>

#include "orvane/core/allocator.h"
#include "orvane/matching/collector.h"

namespace BP::test {
namespace {

using C = std::complex<float>;
constexpr float infinity = std::numeric_limits<float>::infinity();

TEST(ElementTest, ProductsRoundOncePerOperation) {
  const float a = 1 + 0x1p-13F;  // a * a = 1 + 2^-12 + 2^-26, of which the last term is rounded away
  float sum = -(1 + 0x1p-12F);
  multiplyAdd(sum, a, a);
  EXPECT_EQ(sum, 0.0F);

  C both(-(1 + 0x1p-12F), 0);
  multiplyAdd(both, C(a, 0), C(a, 0));
  EXPECT_EQ(both, C(0, 0));
  C scaled(-(1 + 0x1p-12F), -(1 + 0x1p-12F));
  multiplyAdd(scaled, C(a, a), a);
  EXPECT_EQ(scaled, C(0, 0));
}

TEST(ElementTest, MixedProductsDifferInHowInfinitiesSpread) {
  C sum(0, 0);
  multiplyAdd(sum, C(1, 2), infinity);
  EXPECT_EQ(sum, C(infinity, infinity));
  sum = 0;
  multiplyAdd(sum, 2.0F, C(infinity, 1));
  EXPECT_EQ(sum.real(), infinity);
  EXPECT_TRUE(std::isnan(sum.imag())) << "infinity times the tap's imaginary 0";
  sum = 0;
  multiplyAdd(sum, 2.0F, C(3, 5));
  EXPECT_EQ(sum, C(6, 10));
  sum = C(1, 1);
  multiplyAdd(sum, C(1, 2), C(3, 5));
  EXPECT_EQ(sum, C(1 + 3 - 10, 1 + 5 + 6));
}

TEST(CollectorTest, TheFirstOfEqualsStaysAndAnEarlyNanForGood) {
  Allocator allocator;
  MinIdxCollector<Allocator, float> least(&allocator);
  const auto feedLeast = [&](float value, int x) { feed(least, value, x, 0); };
  feedLeast(5, 1);
  feedLeast(3, 2);
  feedLeast(3, 3);
  feedLeast(std::nanf(""), 4);
  EXPECT_EQ(least.getIndex().ptr[0], 2);
  least.setHasValue(false);
  feedLeast(std::nanf(""), 5);
  feedLeast(-infinity, 6);
  EXPECT_EQ(least.getIndex().ptr[0], 5);

  MaxCollector<Allocator, float> greatest(&allocator);
  for (float value : {2.0F, 4.0F, 3.0F}) feed(greatest, value);
  EXPECT_EQ(greatest.getValue().ptr[0], 4);
}

TEST(CollectorTest, ComplexValuesCompareBySquaredMagnitude) {
  EXPECT_FALSE(isGreater(C(3, 4), C(5, 0)));
  EXPECT_FALSE(isGreater(C(5, 0), C(3, 4)));
  EXPECT_TRUE(isGreater(C(0, -2), C(1, 1)));
}

}  // namespace
}  // namespace BP::test
