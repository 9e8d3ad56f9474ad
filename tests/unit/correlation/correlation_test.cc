#include "orvane/correlation/correlation.h"

#include <gmock/gmock.h>

#include <cmath>
#include <limits>
#include <random>
#include <string_view>
#include <vector>

#include "orvane/core/visit_enumerator.h"
#include "orvane/correlation/correlation_stand_alone.h"
#include "orvane/lanes/target.h"
#include "tests/support/pad_walk.h"
#include "tests/support/plan_scene.h"
#include "tests/support/random_values.h"

namespace BP::test {
namespace {

using Index = std::vector<int>;

std::size_t at(int d) { return static_cast<std::size_t>(d); }

std::size_t product(const Index& extents) {
  int count = 1;
  for (const int extent : extents) count *= std::max(extent, 0);
  return at(count);
}

/// A filter over an input, with a rectangle of positions that have outputs.
template <class T>
struct Problem {
  Index hDims, centre, uDims, first, yDims;
  std::vector<T> h, u, y;
  PadTypeEnum padType = PadTypeConstant;
  T padValue = T(-2.5);

  int rank() const { return static_cast<int>(hDims.size()); }
  void clear() { y.assign(product(yDims), std::numeric_limits<T>::quiet_NaN()); }

  /// Sets the positions to those of an output mode.
  void place(OutputModeEnum mode) {
    const RegionSpec support = supportOf(mode, hDims, centre, uDims);
    first = support.loc;
    yDims = support.dims;
    clear();
  }

  CorrelationStandAlone<T> makeFront(OutputModeEnum mode) {
    return {rank(), hDims.data(), uDims.data(), padType, mode, centre.data(), h.data(), u.data(), y.data()};
  }
  void run(CorrelationStandAlone<T>& front) {
    clear();
    front.setPadValue(padValue);
    front.invoke();
  }
  void run(OutputModeEnum mode) {
    place(mode);
    CorrelationStandAlone<T> front = makeFront(mode);
    front.setup();
    run(front);
  }

  /// What a coordinate vector reads as.
  T tapAt(const Index& tap) const {
    int linear = 0;
    for (int d = rank() - 1; d >= 0; --d) {
      const int n = uDims[at(d)], i = tap[at(d)];
      const bool isBeyond = i < 0 || i >= n;
      if (isBeyond && padType == PadTypeConstant) return padValue;
      linear = linear * n + (isBeyond ? walkTo(padType, i, n) : i);
    }
    return u[at(linear)];
  }

  /// The sum over the window in the order of the filter; every operation is rounded by a trip through memory.
  T nestedSum(const Index& position) const {
    Index low = position, high = position;
    for (std::size_t d = 0; d < low.size(); ++d) high[d] = (low[d] -= centre[d]) + hDims[d] - 1;
    volatile T sum = 0;
    std::size_t f = 0;
    forEachPosition(low, high, [&](const Index& tap) {
      const volatile T term = tapAt(tap) * h[f++];
      sum = sum + term;
    });
    return sum;
  }

  Index positionOf(std::size_t output) const {
    Index position = first;
    for (std::size_t d = 0; d < first.size(); output /= at(yDims[d++])) {
      position[d] += static_cast<int>(output % at(yDims[d]));
    }
    return position;
  }
};

template <class T>
void expectNestedSums(const Problem<T>& p) {
  for (std::size_t i = 0; i < p.y.size(); ++i) {
    const T expected = p.nestedSum(p.positionOf(i));
    ASSERT_TRUE(sameBits(p.y[i], expected))
        << p.y[i] << " for " << expected << ", pad " << p.padType << " position "
        << testing::PrintToString(p.positionOf(i)) << " filter " << testing::PrintToString(p.hDims) << " input "
        << testing::PrintToString(p.uDims);
  }
}

template <class T>
struct CorrelationTest : testing::Test {
  std::mt19937 random{3};

  Index extents(int rank, int high) {
    Index values;
    for (int d = 0; d < rank; ++d) values.push_back(pick(random, 1, high));
    return values;
  }
  void fill(std::vector<T>& values, const Index& dims) {
    const auto fresh = randomValues<T>(random, static_cast<int>(product(dims)), pick(random, 0, 1) == 1);
    values.assign(fresh.begin(), fresh.end());  // in place: a front may refer to them
  }
  Problem<T> problem(const Index& hDims, const Index& uDims) {
    Problem<T> result{hDims, hDims, uDims, {}, {}, {}, {}, {}};
    for (int& extent : result.centre) extent = pick(random, 0, extent - 1);
    fill(result.h, hDims);
    fill(result.u, uDims);
    return result;
  }
};
using ElementTypes = testing::Types<float, double>;
TYPED_TEST_SUITE(CorrelationTest, ElementTypes);

TYPED_TEST(CorrelationTest, EqualsNestedSumsBitForBit) {
  struct {
    int rank, trials, filterMax, inputMax;
  } const cases[] = {{1, 40, 9, 9}, {2, 30, 5, 6}, {3, 12, 4, 4}, {4, 6, 3, 3}, {5, 2, 2, 3}, {6, 1, 2, 3}};
  int oversize = 0, fitting = 0;
  for (const auto& c : cases) {
    for (int trial = 0; trial < c.trials; ++trial) {
      auto p = this->problem(this->extents(c.rank, c.filterMax), this->extents(c.rank, c.inputMax));
      for (int d = 0; d < c.rank; ++d) ++(p.hDims[at(d)] > p.uDims[at(d)] ? oversize : fitting);
      for (const OutputModeEnum mode : allModes) {
        for (const PadTypeEnum padType : allPads) {
          p.padType = padType;
          for (const std::string_view target : {lanes::plain, std::string_view()}) {
            ASSERT_TRUE(lanes::forceTarget(target));
            p.run(mode);
            ASSERT_NO_FATAL_FAILURE(expectNestedSums(p)) << "mode " << mode << ", target " << lanes::getTarget();
          }
        }
      }
    }
  }
  EXPECT_GT(oversize, 20);
  EXPECT_GT(fitting, 20);
}

TYPED_TEST(CorrelationTest, ContentsMayChangeBetweenRunsAndExtentsAheadOfASetUp) {
  for (const PadTypeEnum padType : allPads) {
    for (const Index& firstDims : {Index{2, 7, 5}, Index{7, 6, 5}}) {  // the filter exceeds the first, not the second
      auto p = this->problem({3, 3, 3}, firstDims);
      p.padType = padType;
      p.u.reserve(512);  // the front refers to these arrays
      p.y.reserve(512);
      CorrelationStandAlone<TypeParam> front = p.makeFront(OutputModeSame);
      for (const Index& dims : {Index{7, 6, 5}, Index{2, 2, 2}, Index{4, 2, 8}, Index{5, 5, 5}}) {
        std::copy(dims.begin(), dims.end(), p.uDims.begin());
        this->fill(p.u, dims);
        p.place(OutputModeSame);
        front.setup();
        p.run(front);
        ASSERT_NO_FATAL_FAILURE(expectNestedSums(p));
        this->fill(p.h, p.hDims);
        this->fill(p.u, dims);
        p.padValue += 1;
        p.run(front);
        ASSERT_NO_FATAL_FAILURE(expectNestedSums(p));
      }
    }
  }
}

TYPED_TEST(CorrelationTest, WritesTheGivenPadValueToStandardOutputOnce) {
  for (const PadTypeEnum padType : allPads) {
    auto p = this->problem({3}, {5});
    p.padType = padType;
    p.padValue = TypeParam(0.1F);
    p.place(OutputModeFull);
    testing::internal::CaptureStdout();
    {
      TypeParam padValue = p.padValue;
      CorrelationStandAlone<TypeParam> front(1, p.hDims.data(), p.uDims.data(), padType, OutputModeFull, &padValue,
                                             p.centre.data(), p.h.data(), p.u.data(), p.y.data());
      padValue = 7;  // read by the constructor alone
      front.setup();
      front.invoke();
      front.invoke();
    }
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "ALLOCATOR Pad Value: 0.100000 \n");
    expectNestedSums(p);

    testing::internal::CaptureStdout();
    p.run(OutputModeFull);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
  }
}

TYPED_TEST(CorrelationTest, DegenerateGeometryReadsAndWritesNothingBeyondItsArrays) {
  auto p = this->problem({4, 2}, {3, 5});
  p.run(OutputModeValid);
  EXPECT_TRUE(p.y.empty());
  for (const PadTypeEnum padType : allPads) {
    p = this->problem({3}, {0});
    p.padType = padType;
    p.run(OutputModeFull);
    if (padType == PadTypeConstant) {
      expectNestedSums(p);
    } else {
      EXPECT_THAT(p.y, testing::Each(testing::IsNan())) << "there is nothing that could be read";
    }
  }
  p = this->problem({1, 3}, {4, 4});
  p.hDims[0] = 0;
  p.h = {};
  p.run(OutputModeSame);
  for (const TypeParam& output : p.y) EXPECT_TRUE(output == 0 || std::isnan(output)) << "a sum of no taps, or none";
  p = this->problem({3}, {5});
  p.padType = static_cast<PadTypeEnum>(6);
  p.run(OutputModeSame);
  EXPECT_THAT(p.y, testing::Each(testing::IsNan()));
}

/// Runs the problem's rectangle of positions, windows that miss the input included, `runs` times.
template <class T>
void runEverywhere(Problem<T>& p, int runs) {
  p.clear();
  Table hDims(p.hDims), centre(p.centre), uDims(p.uDims);
  CleverPtr<T> h, u, y;
  h.ptr = p.h.data(), u.ptr = p.u.data(), y.ptr = p.y.data();
  visitPadType(p.padType, [&](auto pad) {
    Allocator allocator;
    Correlation<T, T, T, PadExtendedInput<T, T, Allocator, pad()>, Allocator> correlation(
        &allocator, p.rank(), hDims, false, uDims, static_cast<OutputModeEnum>(3), centre, h, u, y);
    correlation.padValues().ptr[0] = p.padValue;
    std::copy(p.first.begin(), p.first.end(), correlation.getRosLoc().ptr);
    std::copy(p.yDims.begin(), p.yDims.end(), correlation.getRosDims().ptr);
    correlation.setup(setupLinkTables);
    correlation.setup(setupStart);
    for (int run = 0; run < runs; ++run) correlation.invoke();
  });
}

TYPED_TEST(CorrelationTest, OneResponseServesAllWindowsThatMissTheInput) {
  for (const PadTypeEnum padType : allPads) {
    auto p = this->problem({3, 2}, {5, 4});
    p.padType = padType;
    p.first = {-9, -7};
    p.yDims = {25, 20};
    runEverywhere(p, 2);
    if (padType == PadTypeConstant) {
      expectNestedSums(p);  // the response is that same sum of products
      continue;
    }
    TypeParam response = p.y[0];
    if (padType == PadTypeReplicate) {
      // The first outside sector lies below in dimension 0: every tap reads the first element there. The window stands
      // where the last boundary sector began, above the input in dimension 1, which the sector does not list.
      auto constant = p;
      constant.u.assign(p.u.size(), p.u[15]);
      response = constant.nestedSum(p.first);
    }
    for (std::size_t i = 0; i < p.y.size(); ++i) {
      const Index position = p.positionOf(i);
      bool misses = false, crosses = false;
      for (const std::size_t d : {0U, 1U}) {
        const int low = position[d] - p.centre[d], high = low + p.hDims[d] - 1, n = p.uDims[d];
        const bool isMissing = high < 0 || low >= n;
        misses = misses || isMissing;
        crosses = crosses || (!isMissing && (low < 0 || high >= n));
      }
      // A window that misses the input in one dimension and crosses an edge in the other is summed like any other.
      const TypeParam expected = misses && !crosses ? response : p.nestedSum(position);
      EXPECT_TRUE(sameBits(p.y[i], expected)) << "pad " << padType << " position " << testing::PrintToString(position);
    }
  }
}

TYPED_TEST(CorrelationTest, ARegionWhollyBeyondTheInputHasAResponseFromTheFirstRunOn) {
  for (const PadTypeEnum padType : {PadTypeConstant, PadTypeReplicate}) {
    auto p = this->problem({2, 2}, {3, 3});
    p.centre = {0, 0};
    p.padType = padType;
    p.first = {90, 80};
    p.yDims = {3, 2};
    runEverywhere(p, 1);
    expectNestedSums(p);
  }
}

}  // namespace
}  // namespace BP::test
