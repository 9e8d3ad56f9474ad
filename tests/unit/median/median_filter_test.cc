#include <gmock/gmock.h>

#include <array>
#include <limits>
#include <memory>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "orvane/host/reference_host.h"
#include "orvane/median/median_filter_tolk.h"
#include "tests/support/random_values.h"
#include "tests/unit/median/median_model.h"

namespace BP::test {
namespace {

using KarnDSPFixpt::DSPDataAttributesHandle;
using KarnDSPFixpt::Fixpt;
using KarnDSPFixpt::FixptFactory;
using testing::Each;
using testing::ElementsAre;

/// How values lie in memory: plain ones as they are, fixed-point ones as the stored integers of an array.
template <class T>
struct Elements {
  using Value = T;
  explicit Elements(const std::vector<T>& v, const DSPDataAttributesHandle* = nullptr)
      : count(v.size()), data(std::make_unique<T[]>(count)) {
    std::copy(v.begin(), v.end(), data.get());
  }
  T* get() { return data.get(); }
  T* handOver() { return data.get(); }
  T at(std::size_t i) { return data[i]; }
  std::size_t count;
  std::unique_ptr<T[]> data;
};
template <>
struct Elements<Fixpt> {
  using Value = int;
  Elements(const std::vector<int>& v, const DSPDataAttributesHandle* type)
      : count(v.size()), data(FixptFactory::createFixpt(*type, static_cast<int>(count), 0)) {
    for (std::size_t i = 0; i < count; ++i) (*data)[static_cast<int>(i)].setStored(v[i]);
  }
  /// The front that takes the object ends it.
  Fixpt* handOver() { return data; }
  int at(std::size_t i) { return static_cast<int>((*data)[static_cast<int>(i)].stored()); }
  std::size_t count;
  Fixpt* data;
};

struct Types {
  DSPDataAttributesHandle input, output, accumulator;
};

/// A front with its host and arrays; the output has room to spare, filled with `untouched`.
template <class T>
class Bench {
 public:
  using Value = typename Elements<T>::Value;
  using P = Problem<Value, Value, Value>;
  static constexpr Value untouched = static_cast<Value>(77);

  explicit Bench(const P& p, bool isVarSize = false, const Types* types = nullptr)
      : hDims{p.hDims[0], p.hDims[1]},
        uDims{p.uDims[0], p.uDims[1]},
        u(p.u, types ? &types->input : nullptr),
        y(std::vector<Value>(p.outputCount() + 100, untouched), types ? &types->output : nullptr),
        pad({p.padValue}, types ? &types->input : nullptr) {
    if constexpr (std::is_same_v<T, Fixpt>) {
      front = std::make_unique<MedianFilterTolk<T, T>>(host.getAdaptor(), 2, hDims.data(), 2, uDims.data(), p.padType,
                                                       p.outputMode, isVarSize, types->input, types->output,
                                                       types->accumulator);
    } else {
      front = std::make_unique<MedianFilterTolk<T, T>>(host.getAdaptor(), 2, hDims.data(), 2, uDims.data(), p.padType,
                                                       p.outputMode, isVarSize);
    }
    host.provideWorkVectors(front->getAllocator());
    front->setup(u.handOver(), y.handOver(), pad.handOver(), false);
  }

  /// The first `count` outputs of one run; the rest must stay as it was.
  std::vector<Value> run(std::size_t count) {
    front->computeOutputs();
    EXPECT_THAT(host.getMessages(), testing::IsEmpty());
    std::vector<Value> result;
    for (std::size_t i = 0; i < y.count; ++i) {
      if (i < count) {
        result.push_back(y.at(i));
      } else {
        EXPECT_EQ(y.at(i), untouched) << "written behind the output, at " << i;
      }
    }
    return result;
  }

  std::array<int, 2> hDims, uDims;
  Elements<T> u, y, pad;
  ReferenceHost host;
  std::unique_ptr<MedianFilterTolk<T, T>> front;
};

template <class T>
std::vector<typename Elements<T>::Value> outputsOf(const typename Bench<T>::P& p, const Types* types = nullptr) {
  return Bench<T>(p, false, types).run(p.outputCount());
}

constexpr std::array allModes{OutputModeValid, OutputModeSame, OutputModeFull};
constexpr std::array allPads{PadTypeConstant, PadTypeReplicate, PadTypeSymmetric, PadTypeCircular};

/// Runs `trials` problems of random extents, windows wider than the input among them, with every mode and pad, and
/// calls `check(problem, output index, output, window)` for each output.
template <class T, class MakeValueT, class CheckT>
void forRandomProblems(int trials, const Types* types, MakeValueT makeValue, CheckT check) {
  std::mt19937 random(5);
  for (int trial = 0; trial < trials; ++trial) {
    typename Bench<T>::P p{};
    for (int d = 0; d < 2; ++d) {
      p.hDims[d] = pick(random, 1, 6);
      p.uDims[d] = pick(random, 1, 9);
    }
    for (int i = 0; i < p.uDims[0] * p.uDims[1]; ++i) p.u.push_back(makeValue(random, trial));
    p.padValue = makeValue(random, trial);
    for (const auto mode : allModes) {
      for (const auto pad : allPads) {
        p.outputMode = mode;
        p.padType = pad;
        const auto y = outputsOf<T>(p, types);
        for (int i = 0; i < static_cast<int>(y.size()); ++i) {
          SCOPED_TRACE(testing::Message() << "trial " << trial << ", window " << p.hDims[0] << " x " << p.hDims[1]
                                          << ", input " << p.uDims[0] << " x " << p.uDims[1] << ", mode " << mode
                                          << ", pad " << pad << ", output " << i);
          check(y[static_cast<std::size_t>(i)], windowAt(p, i % p.yDim(0), i / p.yDim(0)));
          if (testing::Test::HasFailure()) return;
        }
      }
    }
  }
}

template <class T>
class RealMedianTest : public testing::Test {};
using RealTypes = testing::Types<float, double>;
TYPED_TEST_SUITE(RealMedianTest, RealTypes);

TYPED_TEST(RealMedianTest, EqualsTheSortAndTheStatedSelectionBitForBit) {
  using T = TypeParam;
  constexpr T infinity = std::numeric_limits<T>::infinity();
  const auto value = [](std::mt19937& random, int trial) {
    const T few[] = {T(0), T(-0.0), T(1), T(-1), infinity, -infinity};
    switch (trial % 3) {
      case 0: return RandomValue<T>::of(random, false);
      case 1: return T(pick(random, 0, 2));
      default: return few[pick(random, 0, 5)];
    }
  };
  const auto mean = [](T lower, T upper) { return sum(product(upper, T(0.5)), product(lower, T(0.5))); };
  forRandomProblems<T>(60, nullptr, value, [&](T y, const std::vector<T>& window) {
    const T sorted = medianOf(window, rankBySort<T>, mean);
    EXPECT_TRUE(y == sorted || (std::isnan(y) && std::isnan(sorted))) << y << " for " << sorted;
    const T selected = medianOf(window, rankBySelection<T>, mean);
    EXPECT_TRUE(sameBits(y, selected)) << y << " for " << selected;
  });
}

TYPED_TEST(RealMedianTest, NanNeverLeadsOutsideTheWindow) {
  using T = TypeParam;
  const auto value = [](std::mt19937& random, int /*trial*/) {
    return pick(random, 0, 2) == 0 ? std::numeric_limits<T>::quiet_NaN() : T(pick(random, 0, 3));
  };
  const auto mean = [](T lower, T upper) { return sum(product(upper, T(0.5)), product(lower, T(0.5))); };
  forRandomProblems<T>(60, nullptr, value, [&](T y, const std::vector<T>& window) {
    EXPECT_TRUE(sameBits(y, medianOf(window, rankBySelection<T>, mean))) << y;
  });
  // Every line of up to seven values, of which the window sees all at once.
  const T few[] = {T(1), T(2), T(3), std::numeric_limits<T>::quiet_NaN()};
  for (int n = 1; n <= 7; ++n) {
    Problem<T, T, T> p{{n, 1}, {n, 1}, {}, std::vector<T>(static_cast<std::size_t>(n))};
    Bench<T> bench(p);
    for (int code = 0; code < 1 << (2 * n); ++code) {
      for (int i = 0; i < n; ++i)
        p.u[static_cast<std::size_t>(i)] = bench.u.data[static_cast<std::size_t>(i)] = few[code >> (2 * i) & 3];
      bench.front->computeOutputs();
      ASSERT_TRUE(sameBits(bench.y.at(0), medianOf(p.u, rankBySelection<T>, mean))) << n << ", code " << code;
    }
  }
}

TEST(MedianTest, KnownCases) {
  using V = std::vector<double>;
  const auto whole = [](V u) {
    const int n = static_cast<int>(u.size());
    return outputsOf<double>({{n, 1}, {n, 1}, {}, u}).at(0);
  };
  EXPECT_EQ(whole({5}), 5);
  EXPECT_EQ(whole({2, 1}), 1.5);
  EXPECT_EQ(whole({3, 1, 2}), 2);
  EXPECT_EQ(whole({4, 2, 1, 3}), 2.5);
  constexpr double most = std::numeric_limits<double>::max(), least = std::numeric_limits<double>::denorm_min();
  EXPECT_EQ(whole({most, most}), most) << "halved before the sum, which would overflow";
  EXPECT_EQ(whole({least, least}), 0) << "each half is rounded";

  V ones(25, 1);
  const V corner = outputsOf<double>({{3, 3}, {5, 5}, {}, ones, 0, OutputModeSame});
  EXPECT_EQ(corner[0], 0) << "5 of 9 values are pad";
  EXPECT_EQ(corner[1], 1) << "3 of 9 values are pad";
  EXPECT_THAT(outputsOf<double>({{4, 1}, {4, 1}, {}, {1, 2, 4, 8}, 0, OutputModeSame, {}, {}, PadTypeReplicate}),
              ElementsAre(1.5, 3, 6, 8))
      << "one value before the centre of a window of 4, two after";
}

TEST(MedianTest, BoolCountsAndATieIsTrue) {
  const auto value = [](std::mt19937& random, int /*trial*/) { return pick(random, 0, 1) == 1; };
  // std::vector<bool> has no array of bool, so windows are compared through their own count.
  forRandomProblems<bool>(40, nullptr, value, [](bool y, const std::vector<bool>& window) {
    const auto half = std::count(window.begin(), window.end(), true) * 2 - static_cast<std::ptrdiff_t>(window.size());
    EXPECT_EQ(y, half >= 0);
  });
  EXPECT_THAT(outputsOf<bool>({{4, 1}, {4, 1}, {}, {true, false, false, true}}), ElementsAre(true));
  EXPECT_THAT(outputsOf<bool>({{5, 1}, {5, 1}, {}, {true, false, false, true, false}}), ElementsAre(false));
}

constexpr int wrap = 0, saturate = 1;
constexpr int nearestEven = 1, floorRounding = 2;

DSPDataAttributesHandle fixptType(unsigned word, int fraction, int overflow, int rounding, const char* label,
                                  bool isComplex = false) {
  return {word,
          fraction,
          word,
          fraction,
          word,
          fraction,
          nullptr,
          static_cast<fxpModeOverflow_tag>(overflow),
          static_cast<fxpModeRounding_tag>(rounding),
          true,
          isComplex,
          label,
          "product",
          "sum",
          KarnSimCommon::overrideNone};
}

TEST(FixptMedianTest, EqualsTheSortWithMeansByShift) {
  const Types types{fixptType(8, 3, wrap, floorRounding, "in"), fixptType(8, 3, wrap, floorRounding, "out"),
                    fixptType(9, 3, wrap, floorRounding, "acc")};
  const auto value = [](std::mt19937& random, int trial) {
    return trial % 2 == 0 ? pick(random, -128, 127) : pick(random, 0, 3);
  };
  forRandomProblems<Fixpt>(30, &types, value, [](int y, const std::vector<int>& window) {
    EXPECT_EQ(y, medianOf(window, rankBySort<int>, [](int lower, int upper) { return (lower + upper) >> 1; }));
  });
}

TEST(FixptMedianTest, MeanIsFormedInTheAccumulatorTypeByItsRounding) {
  const auto mean = [](const DSPDataAttributesHandle& accumulator, int a, int b) {
    const Types types{fixptType(8, 0, wrap, floorRounding, "in"), fixptType(8, 0, wrap, floorRounding, "out"),
                      accumulator};
    return outputsOf<Fixpt>({{2, 1}, {2, 1}, {}, {a, b}}, &types).at(0);
  };
  EXPECT_EQ(mean(fixptType(16, 0, wrap, floorRounding, "acc"), 4, 3), 3);
  EXPECT_EQ(mean(fixptType(16, 0, wrap, nearestEven, "acc"), 4, 3), 4);
  EXPECT_EQ(mean(fixptType(16, 0, wrap, floorRounding, "acc"), -4, -3), -4);
  EXPECT_EQ(mean(fixptType(16, 1, wrap, floorRounding, "acc"), -4, -3), -4) << "-3.5, then floored into the output";
  EXPECT_EQ(mean(fixptType(8, 0, saturate, floorRounding, "acc"), 100, 120), 63);
  EXPECT_EQ(mean(fixptType(8, 0, wrap, floorRounding, "acc"), 100, 120), -18);
}

TEST(FixptMedianTest, ComplexElementsAreRankedByMagnitude) {
  const auto type = [](const char* label) { return fixptType(8, 0, wrap, floorRounding, label, true); };
  const DSPDataAttributesHandle in = type("in"), out = type("out");
  int hDims[] = {3, 1}, uDims[] = {3, 1};
  ReferenceHost host;
  MedianFilterTolk<Fixpt, Fixpt> front(host.getAdaptor(), 2, hDims, 2, uDims, PadTypeReplicate, OutputModeValid, false,
                                       in, out, type("acc"));
  host.provideWorkVectors(front.getAllocator());
  Fixpt* const u = FixptFactory::createFixpt(in, 3, 0);
  Fixpt* const y = FixptFactory::createFixpt(out, 1, 0);
  (*u)[0].setComplex(0, -9);
  (*u)[1].setComplex(1, 0);
  (*u)[2].setComplex(3, -4);
  front.setup(u, y, nullptr, false);
  front.computeOutputs();
  EXPECT_EQ((*y)[0].toDouble(), 3);
  EXPECT_EQ(y->imaginaryToDouble(), -4);
}

TEST(FixptMedianTest, TheEndMergesStatisticsOfTheOutputAlone) {
  Types types{fixptType(8, 0, wrap, floorRounding, "in"), fixptType(4, 0, saturate, floorRounding, "out"),
              fixptType(8, 0, wrap, floorRounding, "acc")};
  FixptLogMap map;
  {
    Bench<Fixpt> bench({{1, 1}, {3, 1}, {}, {1, 50, -60}}, false, &types);
    bench.front->setFixptLogMap(&map);
    bench.front->computeOutputs();
    EXPECT_TRUE(map.empty());
    bench.front->setup(setupFinish);
    ASSERT_EQ(map.size(), 1U);
    EXPECT_EQ(map.begin()->first, "out");
    bench.front->setFixptLogMap(nullptr);
  }
  EXPECT_EQ(map.size(), 1U);
}

TEST(MedianFrontTest, AWindowMayShrinkAndGrowWithinItsStoreOnly) {
  Problem<double, double, double> p{{3, 2}, {4, 3}, {}, {}, 0, OutputModeSame, {}, {}, PadTypeSymmetric};
  for (int i = 0; i < 12; ++i) p.u.push_back((i * 7) % 12);
  Bench<double> bench(p, true);
  const auto expectRun = [&](int width, int height, int inputWidth, int inputHeight) {
    bench.hDims = {width, height};
    bench.uDims = {inputWidth, inputHeight};
    std::copy_n(bench.hDims.data(), 2, p.hDims);
    std::copy_n(bench.uDims.data(), 2, p.uDims);
    const auto mean = [](double lower, double upper) { return upper * 0.5 + lower * 0.5; };
    std::vector<double> expected;
    for (int y = 0; y < inputHeight; ++y) {
      for (int x = 0; x < inputWidth; ++x) {
        expected.push_back(medianOf(windowAt(p, x, y), rankBySort<double>, mean));
      }
    }
    std::fill_n(bench.y.get(), 12, Bench<double>::untouched);
    EXPECT_EQ(bench.run(expected.size()), expected) << width << " x " << height;
  };
  const auto expectNothing = [&](int width, int height) {
    bench.hDims = {width, height};
    std::fill_n(bench.y.get(), 12, Bench<double>::untouched);
    bench.run(0);
  };
  expectRun(3, 2, 4, 3);
  expectRun(1, 5, 2, 2);
  expectRun(6, 1, 3, 4);
  expectNothing(7, 1);
  expectNothing(1 << 16, 1 << 16);
  expectNothing(0, 3);
  expectNothing(-1, -1);
  expectRun(2, 2, 4, 3);
  bench.hDims = {3, 3};
  bench.front->setup(setupAttachWork);
  expectRun(3, 3, 4, 3);
}

TEST(MedianFrontTest, AnEmptyWindowOfBoolIsATie) {
  Bench<bool> bench({{0, 1}, {2, 1}, {}, {false, false}, false, OutputModeSame});
  EXPECT_THAT(bench.run(2), ElementsAre(true, true));
}

TEST(MedianFrontTest, WindowBeyondTheInputGivesNoValidOutput) {
  Bench<float> bench({{3, 3}, {2, 5}, {}, std::vector<float>(10, 1)});
  bench.run(0);
}

TEST(MedianFrontTest, PadValueIsTunedBetweenRuns) {
  Bench<double> bench({{3, 1}, {2, 1}, {}, {1, 2}, 9, OutputModeFull});
  EXPECT_THAT(bench.run(4), ElementsAre(9, 2, 2, 9));
  double pad = -9;
  bench.front->tune(nullptr, nullptr, &pad);
  EXPECT_THAT(bench.run(4), ElementsAre(-9, 1, 1, -9));
  bench.front->tune(&pad, &pad, nullptr);
  for (const int stage : {5, 6, 2, 2}) bench.front->setup(static_cast<setupModeT>(stage));
  EXPECT_THAT(bench.run(4), ElementsAre(-9, 1, 1, -9));
  EXPECT_EQ(bench.front->getMedianFilter(), bench.front->getMedianFilter()->getConvCorr2());

  Bench<double> valid({{3, 1}, {3, 1}, {}, {3, 1, 2}});
  valid.front->setup(valid.u.get(), valid.y.get(), nullptr, false);  // no pad value, which is not asked for
  EXPECT_THAT(valid.run(1), ElementsAre(2));
}

TEST(MedianFrontTest, OneDimensionIsALineAndHigherRanksFilterTheFirstPlane) {
  float u[] = {4, 1, 3, 2, 9, 9, 9, 9}, y[8];
  int hDims[] = {3, 1, 2}, uDims[] = {4, 1, 2};
  for (const int rank : {1, 3}) {
    std::fill_n(y, 8, -77.0F);
    ReferenceHost host;
    MedianFilterTolk<float, float> front(host.getAdaptor(), rank, hDims, rank, uDims, PadTypeReplicate, OutputModeSame,
                                         false);
    host.provideWorkVectors(front.getAllocator());
    front.setup(u, y, nullptr, false);
    front.computeOutputs();
    EXPECT_THAT(y, ElementsAre(4, 3, 2, 2, -77, -77, -77, -77)) << rank;
  }
}

TEST(MedianFilterTest, ARegionOfInterestHoldsItsPartOfTheOutput) {
  Problem<float, float, float> p{{3, 3}, {7, 6}, {}, {}, 0, OutputModeSame, {}, {}, PadTypeCircular};
  std::mt19937 random(2);
  p.u = randomValues<float>(random, 42);
  int centres[] = {1, 1}, at[] = {2, 0}, size[] = {5, 4};
  CleverPtr<int> hDims, uDims, centre, loc, dims;
  hDims.ptr = p.hDims, uDims.ptr = p.uDims, centre.ptr = centres, loc.ptr = at, dims.ptr = size;
  std::vector<float> part(20);
  CleverPtr<float> u, y;
  u.ptr = p.u.data(), y.ptr = part.data();
  ReferenceHost host;
  AllocatorTolk allocator(host.getAdaptor());
  const RestrictedRegion region(2, dims, loc);
  MedianFilter<float, float, AllocatorTolk> processor(&allocator, 2, hDims, false, uDims, p.outputMode, p.padType,
                                                      centre, u, y, &region);
  host.provideWorkVectors(allocator);
  allocator.refreshWorkVectors();
  for (const auto stage : {setupAttachWork, setupLinkTables, setupStart}) processor.setup(stage);
  processor.invoke();
  std::vector<float> expected;
  for (int i = 0; i < 20; ++i) {
    std::vector<float> window = windowAt(p, at[0] + i % 5, at[1] + i / 5);
    expected.push_back(rankBySort(window, 4));
  }
  EXPECT_EQ(part, expected);
}

}  // namespace
}  // namespace BP::test
