#include "orvane/algorithm/correlation.h"

#include <gmock/gmock.h>

#include <array>
#include <cmath>
#include <cstring>
#include <limits>
#include <memory>
#include <random>
#include <vector>

#include "orvane/algorithm/correlation_stand_alone.h"
#include "orvane/convcorr/conv_corr_tolk.h"
#include "orvane/core/visit_enumerator.h"
#include "orvane/host/reference_host.h"
#include "tests/support/pad_walk.h"
#include "tests/support/plan_scene.h"

namespace BP::test {
namespace {

using Index = std::vector<int>;
constexpr PadTypeEnum allPads[] = {PadTypeConstant, PadTypeReplicate, PadTypeSymmetric, PadTypeCircular};
constexpr OutputModeEnum allModes[] = {OutputModeValid, OutputModeSame, OutputModeFull};

std::size_t product(const Index& extents) {
  std::size_t count = 1;
  for (const int extent : extents) count *= static_cast<std::size_t>(std::max(extent, 0));
  return count;
}

/// A filter over an input, and a rectangle of positions that have outputs.
template <class T>
struct Problem {
  Index hDims, centre, uDims, first, yDims;
  std::vector<T> h, u, y;
  PadTypeEnum padType = PadTypeConstant;
  T padValue = T(-2.5);

  int rank() const { return static_cast<int>(hDims.size()); }

  /// The positions of an output mode; outputs start out as NaN.
  void place(OutputModeEnum mode) {
    first = Index(hDims.size(), 0);
    yDims = uDims;
    for (std::size_t d = 0; d < hDims.size(); ++d) {
      if (mode == OutputModeValid) first[d] = centre[d];
      if (mode == OutputModeFull) first[d] = centre[d] - hDims[d] + 1;
      yDims[d] += mode == OutputModeSame ? 0 : (mode == OutputModeFull ? 1 : -1) * (hDims[d] - 1);
    }
    clear();
  }
  void clear() { y.assign(product(yDims), std::numeric_limits<T>::quiet_NaN()); }

  std::unique_ptr<CorrelationStandAlone<T>> makeFront(OutputModeEnum mode) {
    auto front = std::make_unique<CorrelationStandAlone<T>>(rank(), hDims.data(), uDims.data(), padType, mode,
                                                            centre.data(), h.data(), u.data(), y.data());
    front->setPadValue(padValue);
    front->setup();
    return front;
  }

  /// What a coordinate vector reads as.
  T tapAt(const int* at) const {
    int linear = 0;
    for (int d = rank() - 1; d >= 0; --d) {
      const int n = uDims[static_cast<std::size_t>(d)];
      const bool isBeyond = at[d] < 0 || at[d] >= n;
      if (isBeyond && padType == PadTypeConstant) return padValue;
      linear = linear * n + (isBeyond ? walkTo(padType, at[d], n) : at[d]);
    }
    return u[static_cast<std::size_t>(linear)];
  }

  /// The loops over filter dimensions d and below, nested; every product and sum rounded by a trip through memory.
  void addTaps(int d, const Index& position, std::array<int, 8>& at, int f, volatile T& sum) const {
    if (d < 0) {
      const volatile T term = tapAt(at.data()) * h[static_cast<std::size_t>(f)];
      sum = sum + term;
      return;
    }
    const auto k = static_cast<std::size_t>(d);
    for (int j = 0; j < hDims[k]; ++j) {
      at[k] = position[k] - centre[k] + j;
      addTaps(d - 1, position, at, f * hDims[k] + j, sum);
    }
  }
  T nestedSum(const Index& position) const {
    volatile T sum = 0;
    std::array<int, 8> at{};
    addTaps(rank() - 1, position, at, 0, sum);
    return sum;
  }
};

/// Calls `visit(position, output)` for all outputs, in storage order.
template <class T, class VisitT>
void forEachOutput(const Problem<T>& problem, VisitT&& visit) {
  Index position = problem.first;
  for (const T& output : problem.y) {
    visit(position, output);
    for (std::size_t d = 0; d < position.size(); ++d) {
      if (++position[d] < problem.first[d] + problem.yDims[d]) break;
      position[d] = problem.first[d];
    }
  }
}

template <class T>
testing::AssertionResult sameBits(const T& a, const T& b) {
  if (std::memcmp(&a, &b, sizeof(T)) == 0) return testing::AssertionSuccess();
  return testing::AssertionFailure() << testing::PrintToString(a) << " is not " << testing::PrintToString(b);
}

template <class T>
void expectNestedSums(const Problem<T>& problem) {
  forEachOutput(problem, [&](const Index& position, const T& output) {
    ASSERT_TRUE(sameBits(output, problem.nestedSum(position)))
        << "pad " << problem.padType << " position " << testing::PrintToString(position) << " filter "
        << testing::PrintToString(problem.hDims) << " input " << testing::PrintToString(problem.uDims);
  });
}

class Random {
 public:
  explicit Random(unsigned seed) : engine(seed) {}
  int pick(int low, int high) { return std::uniform_int_distribution<int>(low, high)(engine); }
  Index extents(int rank, int high) {
    Index values;
    for (int d = 0; d < rank; ++d) values.push_back(pick(1, high));
    return values;
  }
  template <class T>
  void fill(std::vector<T>& values, std::size_t count) {
    values.resize(count);
    std::uniform_real_distribution<T> mantissa(-1, 1);
    for (T& value : values) value = std::ldexp(mantissa(engine), pick(-20, 20));
  }
  template <class T>
  Problem<T> problem(const Index& hDims, const Index& uDims) {
    Problem<T> result{hDims, hDims, uDims, {}, {}, {}, {}, {}};
    for (int& extent : result.centre) extent = pick(0, extent - 1);
    fill(result.h, product(hDims));
    fill(result.u, product(uDims));
    return result;
  }

 private:
  std::mt19937 engine;
};

template <class T>
struct CorrelationTest : testing::Test {};
using ElementTypes = testing::Types<float, double>;
TYPED_TEST_SUITE(CorrelationTest, ElementTypes);

TYPED_TEST(CorrelationTest, EqualsNestedSumsBitForBit) {
  struct {
    int rank, trials, filterMax, inputMax;
  } const cases[] = {{1, 40, 9, 9}, {2, 30, 5, 6}, {3, 12, 4, 4}, {4, 6, 3, 3}, {5, 2, 2, 3}, {6, 1, 2, 3}};
  Random random(3);
  int oversize = 0, fitting = 0;
  for (const auto& c : cases) {
    for (int trial = 0; trial < c.trials; ++trial) {
      auto problem = random.problem<TypeParam>(random.extents(c.rank, c.filterMax), random.extents(c.rank, c.inputMax));
      for (std::size_t d = 0; d < problem.hDims.size(); ++d)
        ++(problem.hDims[d] > problem.uDims[d] ? oversize : fitting);
      for (const OutputModeEnum mode : allModes) {
        for (const PadTypeEnum padType : allPads) {
          problem.padType = padType;
          problem.place(mode);
          const auto front = problem.makeFront(mode);
          front->invoke();
          ASSERT_NO_FATAL_FAILURE(expectNestedSums(problem)) << "mode " << mode;
        }
      }
    }
  }
  EXPECT_GT(oversize, 20);
  EXPECT_GT(fitting, 20);
}

TYPED_TEST(CorrelationTest, EqualsTheHostsCorrelationInTwoDimensions) {
  Random random(4);
  for (int trial = 0; trial < 10; ++trial) {
    auto problem = random.problem<TypeParam>(random.extents(2, 6), random.extents(2, 9));
    for (std::size_t d = 0; d < 2; ++d) problem.centre[d] = (problem.hDims[d] - 1) / 2;
    for (const OutputModeEnum mode : allModes) {
      for (const PadTypeEnum padType : allPads) {
        problem.padType = padType;
        problem.place(mode);
        problem.makeFront(mode)->invoke();
        std::vector<TypeParam> y(problem.y.size(), std::numeric_limits<TypeParam>::quiet_NaN());
        ReferenceHost host;
        ConvCorrTolk<TypeParam, TypeParam, TypeParam> hosted(host.getAdaptor(), 2, problem.hDims.data(), 2,
                                                             problem.uDims.data(), padType, mode,
                                                             AlgorithmModeCorrelation, NormNone, false);
        host.provideWorkVectors(hosted.getAllocator());
        hosted.setup(problem.h.data(), problem.u.data(), y.data(), &problem.padValue, false);
        hosted.computeOutputs();
        for (std::size_t i = 0; i < y.size(); ++i) ASSERT_TRUE(sameBits(problem.y[i], y[i])) << "pad " << padType;
      }
    }
  }
}

TYPED_TEST(CorrelationTest, ContentsMayChangeBetweenRunsAndExtentsAheadOfASetUp) {
  Random random(5);
  for (const PadTypeEnum padType : allPads) {
    for (const Index& firstDims : {Index{2, 7, 5}, Index{7, 6, 5}}) {  // a filter of 3 exceeds the one, not the other
      auto problem = random.problem<TypeParam>({3, 3, 3}, firstDims);
      problem.padType = padType;
      problem.u.reserve(512);
      problem.y.reserve(512);
      problem.place(OutputModeSame);
      const auto front = problem.makeFront(OutputModeSame);
      for (const Index& dims : {Index{7, 6, 5}, Index{2, 2, 2}, Index{4, 2, 8}, Index{5, 5, 5}}) {
        std::copy(dims.begin(), dims.end(), problem.uDims.begin());  // the front refers to these arrays
        random.fill(problem.u, product(dims));
        problem.place(OutputModeSame);
        front->setup();
        front->invoke();
        ASSERT_NO_FATAL_FAILURE(expectNestedSums(problem));
        random.fill(problem.u, product(dims));
        random.fill(problem.h, product(problem.hDims));
        front->setPadValue(problem.padValue += 1);
        problem.clear();
        front->invoke();
        ASSERT_NO_FATAL_FAILURE(expectNestedSums(problem));
        front->setup();
        front->setup();
        problem.clear();
        front->invoke();
        ASSERT_NO_FATAL_FAILURE(expectNestedSums(problem));
      }
    }
  }
}

TYPED_TEST(CorrelationTest, WritesTheGivenPadValueToStandardOutputOnce) {
  for (const PadTypeEnum padType : allPads) {
    auto problem = Random(6).problem<TypeParam>({3}, {5});
    problem.padType = padType;
    problem.place(OutputModeFull);
    testing::internal::CaptureStdout();
    {
      TypeParam padValue(0.1F);
      CorrelationStandAlone<TypeParam> front(1, problem.hDims.data(), problem.uDims.data(), padType, OutputModeFull,
                                             &padValue, problem.centre.data(), problem.h.data(), problem.u.data(),
                                             problem.y.data());
      problem.padValue = padValue;
      padValue = 7;  // read by the constructor alone
      front.setup();
      front.invoke();
      front.invoke();
    }
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "ALLOCATOR Pad Value: 0.100000 \n");
    expectNestedSums(problem);

    testing::internal::CaptureStdout();
    problem.makeFront(OutputModeFull)->invoke();
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
  }
}

TYPED_TEST(CorrelationTest, DegenerateGeometryReadsAndWritesNothingBeyondItsArrays) {
  auto oversize = Random(7).problem<TypeParam>({4, 2}, {3, 5});
  oversize.place(OutputModeValid);
  EXPECT_THAT(oversize.y, testing::IsEmpty());
  oversize.makeFront(OutputModeValid)->invoke();

  for (const PadTypeEnum padType : allPads) {
    Problem<TypeParam> emptyInput = Random(8).problem<TypeParam>({3}, {0});
    emptyInput.padType = padType;
    emptyInput.place(OutputModeFull);
    emptyInput.makeFront(OutputModeFull)->invoke();
    if (padType == PadTypeConstant) {
      expectNestedSums(emptyInput);
    } else {
      EXPECT_THAT(emptyInput.y, testing::Each(testing::IsNan())) << "there is nothing that could be read";
    }
  }

  Problem<TypeParam> emptyFilter{{0, 3}, {0, 1}, {4, 4}, {}, {}, {}, std::vector<TypeParam>(16, 1), {}};
  emptyFilter.place(OutputModeSame);
  emptyFilter.makeFront(OutputModeSame)->invoke();
  for (const TypeParam& output : emptyFilter.y) EXPECT_TRUE(output == 0 || std::isnan(output));

  auto unknownPad = Random(9).problem<TypeParam>({3}, {5});
  unknownPad.padType = static_cast<PadTypeEnum>(5);
  unknownPad.place(OutputModeSame);
  unknownPad.makeFront(OutputModeSame)->invoke();
  EXPECT_THAT(unknownPad.y, testing::Each(testing::IsNan()));
}

/// Runs the problem's rectangle of positions, windows that miss the input included, `runs` times.
template <class T>
void runEverywhere(Problem<T>& problem, int runs) {
  visitEnumerator<1, 2, 3, 4>(problem.padType, [&](auto pad) {
    Allocator allocator;
    CleverPtr<int> hDims, centre, uDims;
    CleverPtr<T> h, u, y;
    hDims.ptr = problem.hDims.data();
    centre.ptr = problem.centre.data();
    uDims.ptr = problem.uDims.data();
    h.ptr = problem.h.data();
    u.ptr = problem.u.data();
    y.ptr = problem.y.data();
    constexpr auto everywhere = static_cast<OutputModeEnum>(3);
    Correlation<T, T, T, PadExtendedInput<T, T, Allocator, pad()>, Allocator> correlation(
        &allocator, problem.rank(), hDims, false, uDims, everywhere, centre, h, u, y);
    EXPECT_EQ(correlation.getConvCorr1(), &correlation);
    correlation.padValues().ptr[0] = problem.padValue;
    std::copy(problem.first.begin(), problem.first.end(), correlation.getRosLoc().ptr);
    std::copy(problem.yDims.begin(), problem.yDims.end(), correlation.getRosDims().ptr);
    correlation.setup(setupLinkTables);
    correlation.setup(setupStart);
    for (int run = 0; run < runs; ++run) {
      correlation.setup(setupInvoke);
      correlation.invoke();
    }
  });
}

TYPED_TEST(CorrelationTest, OneResponseServesAllWindowsThatMissTheInput) {
  for (const PadTypeEnum padType : allPads) {
    auto problem = Random(10).problem<TypeParam>({3, 2}, {5, 4});
    problem.padType = padType;
    problem.first = {-9, -7};
    problem.yDims = {25, 20};
    problem.clear();
    runEverywhere(problem, 2);
    if (padType == PadTypeConstant) {
      expectNestedSums(problem);  // the response is that same sum of products
      continue;
    }
    // Outside sectors are those that miss the input in some dimension and lie inside in the others.
    auto response = problem;
    if (padType == PadTypeReplicate) {
      // The first one lies below in dimension 0, where every tap reads the first element; the window stands where the
      // last boundary sector began, above the input in dimension 1, which the sector does not list.
      response.u.assign(response.u.size(), problem.u[15]);
    }
    const TypeParam* shared = nullptr;
    forEachOutput(problem, [&](const Index& position, const TypeParam& output) {
      bool misses = false, crosses = false;
      for (std::size_t d = 0; d < 2; ++d) {
        const int low = position[d] - problem.centre[d], high = low + problem.hDims[d] - 1, n = problem.uDims[d];
        const bool isMissing = high < 0 || low >= n;
        misses = misses || isMissing;
        crosses = crosses || (!isMissing && (low < 0 || high >= n));
      }
      if (!misses || crosses) {
        EXPECT_TRUE(sameBits(output, problem.nestedSum(position))) << testing::PrintToString(position);
        return;
      }
      if (shared == nullptr) shared = &output;
      EXPECT_TRUE(sameBits(output, *shared)) << testing::PrintToString(position);
      if (padType == PadTypeReplicate) {
        EXPECT_TRUE(sameBits(output, response.nestedSum(position))) << testing::PrintToString(position);
      }
    });
    ASSERT_NE(shared, nullptr);
  }
}

TYPED_TEST(CorrelationTest, ARegionWhollyBeyondTheInputHasAResponseFromTheFirstRunOn) {
  for (const PadTypeEnum padType : {PadTypeConstant, PadTypeReplicate}) {
    auto problem = Random(11).problem<TypeParam>({4, 3}, {3, 3});
    problem.hDims = {2, 2};
    problem.centre = {0, 0};
    problem.padType = padType;
    problem.first = {90, 80};
    problem.yDims = {3, 2};
    problem.clear();
    runEverywhere(problem, 1);
    expectNestedSums(problem);
  }
}

}  // namespace
}  // namespace BP::test
