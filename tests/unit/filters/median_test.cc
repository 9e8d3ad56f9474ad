#include "orvane/filters/median.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <limits>
#include <stdexcept>
#include <utility>
#include <vector>

#include "tests/support/choices.h"
#include "tests/unit/median/median_model.h"

namespace BP::filters {
namespace {

using test::medianOf;
using test::pick;
using test::Problem;
using testing::ElementsAre;

template <class T>
std::vector<T> listed(const Array<T>& array) {
  return std::vector<T>(array.begin(), array.end());
}

template <class T>
class RealMedianTest : public testing::Test {
 protected:
  /// Random values, few different ones, extremes, and from trial 3 on NaN too.
  static T value(std::mt19937& random, int trial) {
    using Limits = std::numeric_limits<T>;
    // Two of the greatest have a mean only if they are halved before the sum; the half of the least is rounded.
    const T few[] = {T(0),
                     T(-0.0),
                     T(1),
                     Limits::max(),
                     Limits::denorm_min(),
                     Limits::infinity(),
                     -Limits::infinity(),
                     Limits::quiet_NaN()};
    switch (trial % 4) {
      case 0: return test::RandomValue<T>::of(random, false);
      case 1: return T(pick(random, 0, 2));
      default: return few[pick(random, 0, trial % 4 == 2 ? 6 : 7)];
    }
  }
  static T mean(T lower, T upper) { return test::sum(test::product(upper, T(0.5)), test::product(lower, T(0.5))); }
};
using RealTypes = testing::Types<float, double>;
TYPED_TEST_SUITE(RealMedianTest, RealTypes);

/// With NaN no sort tells what comes out, but the selection still does, and its model throws beyond the window.
TYPED_TEST(RealMedianTest, EqualsTheSortAndTheStatedSelectionBitForBit) {
  using T = TypeParam;
  const auto isNan = [](T v) { return std::isnan(v); };
  std::mt19937 random(5);
  for (int trial = 0; trial < 80 && !this->HasFailure(); ++trial) {
    auto p = test::randomProblem<T, T, T>(random, 6, 9);
    for (T& u : p.u) u = this->value(random, trial);
    ConvolutionOptions options{.pad = {PadRule::constant, p.padValue}};
    test::forEachChoice(p, options, [&] {
      const Array<T> y = median(ArrayView<const T>(p.u, {p.uDims[0], p.uDims[1]}), {p.hDims[0], p.hDims[1]},
                                {.mode = options.mode, .pad = options.pad});
      ASSERT_EQ(y.extents(), Extents({p.yDim(0), p.yDim(1)}));
      for (int i = 0; i < static_cast<int>(y.size()) && !this->HasFailure(); ++i) {
        const T found = y[static_cast<std::size_t>(i)];
        const auto window = test::windowAt(p, i % p.yDim(0), i / p.yDim(0));
        const T selected = medianOf(window, test::rankBySelection<T>, this->mean);
        EXPECT_TRUE(test::sameBits(found, selected)) << p << ", output " << i << ": " << found << " for " << selected;
        if (std::any_of(window.begin(), window.end(), isNan)) continue;
        const T sorted = medianOf(window, test::rankBySort<T>, this->mean);
        EXPECT_TRUE(found == sorted || (isNan(found) && isNan(sorted))) << p << ": " << found << " for " << sorted;
      }
    });
  }
}

/// Every line of up to seven values out of four.
TYPED_TEST(RealMedianTest, NanNeverLeadsOutsideTheWindow) {
  using T = TypeParam;
  const T few[] = {T(1), T(2), T(3), std::numeric_limits<T>::quiet_NaN()};
  for (int n = 1; n <= 7; ++n) {
    std::vector<T> line(static_cast<std::size_t>(n));
    Median<T> median({n}, {n}, {.mode = OutputMode::valid});
    for (int code = 0; code < 1 << (2 * n); ++code) {
      for (std::size_t i = 0; i < line.size(); ++i) line[i] = few[code >> (2 * i) & 3];
      const T found = median.run(ArrayView<const T>(line, {n}))[0];
      ASSERT_TRUE(test::sameBits(found, medianOf(line, test::rankBySelection<T>, this->mean))) << n << ", " << code;
    }
  }
}

TEST(MedianTest, BoolCountsAndATieIsTrue) {
  std::mt19937 random(5);
  for (int trial = 0; trial < 40; ++trial) {
    Problem<int, int, int> p = test::randomProblem<int, int, int>(random, 6, 9);
    Array<bool> u({p.uDims[0], p.uDims[1]});
    for (std::size_t i = 0; i < u.size(); ++i) u[i] = (p.u[i] = pick(random, 0, 1)) == 1;
    p.padValue = trial % 2;
    ConvolutionOptions options{.pad = {PadRule::constant, static_cast<double>(p.padValue)}};
    test::forEachChoice(p, options, [&] {
      const Array<bool> y = median(u, {p.hDims[0], p.hDims[1]}, {.mode = options.mode, .pad = options.pad});
      for (int i = 0; i < static_cast<int>(y.size()); ++i) {
        const auto window = test::windowAt(p, i % p.yDim(0), i / p.yDim(0));
        const auto trueCount = std::count(window.begin(), window.end(), 1);
        ASSERT_EQ(y[static_cast<std::size_t>(i)], 2 * trueCount >= static_cast<std::ptrdiff_t>(window.size())) << p;
      }
    });
  }
}

TEST(MedianTest, AnObjectIsRunTunedAndMoved) {
  Median<double> first({3}, {2}, {.mode = OutputMode::full, .pad = {PadRule::constant, 9}});
  const std::vector<double> u{1, 2}, v{3, 4};
  EXPECT_THAT(listed(first.run({u, {2}})), ElementsAre(9, 2, 2, 9));
  first.setPadValue(-9);
  EXPECT_THAT(listed(first.run({v, {2}})), ElementsAre(-9, 3, 3, -9));
  Median<double> second(std::move(first));
  EXPECT_THAT(listed(second.run({u, {2}})), ElementsAre(-9, 1, 1, -9));
  EXPECT_THROW(first.run({u, {2}}), std::logic_error);  // NOLINT(bugprone-use-after-move): its use is what is tested
}

}  // namespace
}  // namespace BP::filters
