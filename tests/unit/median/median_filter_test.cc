#include <gmock/gmock.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "orvane/host/reference_host.h"
#include "orvane/median/median_filter_tolk.h"
#include "orvane/platform/karn_fixpt_3_make.h"
#include "tests/support/random_values.h"
#include "tests/unit/median/median_model.h"

namespace BP::test {
namespace {

using KarnDSPFixpt::DSPDataAttributesHandle;
using KarnDSPFixpt::Fixpt;
using KarnDSPFixpt::FixptFactory;
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

/// Runs problems of random extents, windows wider than the input among them, with every mode and pad, and calls
/// `check(output, window)` for each output.
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

template <class T>
T meanOf(T lower, T upper) {
  return sum(product(upper, T(0.5)), product(lower, T(0.5)));
}

/// With NaN no sort tells what comes out, but the selection still does, and its model throws beyond the window.
TYPED_TEST(RealMedianTest, EqualsTheSortAndTheStatedSelectionBitForBit) {
  using T = TypeParam;
  const auto value = [](std::mt19937& random, int trial) {
    constexpr T infinity = std::numeric_limits<T>::infinity();
    const T few[] = {T(0), T(-0.0), T(1), T(-1), infinity, -infinity, std::numeric_limits<T>::quiet_NaN()};
    switch (trial % 4) {
      case 0: return RandomValue<T>::of(random, false);
      case 1: return T(pick(random, 0, 2));
      default: return few[pick(random, 0, trial % 4 == 2 ? 5 : 6)];
    }
  };
  const auto isNan = [](T v) { return std::isnan(v); };
  forRandomProblems<T>(80, nullptr, value, [&](T y, const std::vector<T>& window) {
    const T selected = medianOf(window, rankBySelection<T>, meanOf<T>);
    EXPECT_TRUE(sameBits(y, selected)) << y << " for " << selected;
    if (std::any_of(window.begin(), window.end(), isNan)) return;
    const T sorted = medianOf(window, rankBySort<T>, meanOf<T>);
    EXPECT_TRUE(y == sorted || (isNan(y) && isNan(sorted))) << y << " for " << sorted;
  });
}

/// Every line of up to seven values out of four.
TYPED_TEST(RealMedianTest, NanNeverLeadsOutsideTheWindow) {
  using T = TypeParam;
  const T few[] = {T(1), T(2), T(3), std::numeric_limits<T>::quiet_NaN()};
  for (int n = 1; n <= 7; ++n) {
    std::vector<T> line(static_cast<std::size_t>(n));
    Bench<T> bench({{n, 1}, {n, 1}, {}, line});
    for (int code = 0; code < 1 << (2 * n); ++code) {
      for (std::size_t i = 0; i < line.size(); ++i) line[i] = few[code >> (2 * i) & 3];
      std::copy(line.begin(), line.end(), bench.u.get());
      bench.front->computeOutputs();
      ASSERT_TRUE(sameBits(bench.y.at(0), medianOf(line, rankBySelection<T>, meanOf<T>))) << n << ", code " << code;
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
  EXPECT_THAT(outputsOf<double>({{3, 3}, {2, 5}, {}, ones}), testing::IsEmpty()) << "no position is valid";
}

TEST(MedianTest, BoolCountsAndATieIsTrue) {
  const auto value = [](std::mt19937& random, int /*trial*/) { return pick(random, 0, 1) == 1; };
  forRandomProblems<bool>(40, nullptr, value, [](bool y, const std::vector<bool>& window) {
    const auto half = std::count(window.begin(), window.end(), true) * 2 - static_cast<std::ptrdiff_t>(window.size());
    EXPECT_EQ(y, half >= 0);
  });
  EXPECT_THAT(outputsOf<bool>({{4, 1}, {4, 1}, {}, {true, false, false, true}}), ElementsAre(true));
  EXPECT_THAT(outputsOf<bool>({{5, 1}, {5, 1}, {}, {true, false, false, true, false}}), ElementsAre(false));
  EXPECT_THAT(outputsOf<bool>({{0, 1}, {2, 1}, {}, {false, false}, false, OutputModeSame}), ElementsAre(true, true))
      << "no value at all is a tie";
}

DSPDataAttributesHandle fixpt(unsigned word, int fraction, fxpModeRounding_tag rounding = fxpRoundFloor,
                              fxpModeOverflow_tag overflow = fxpOverflowWrap, bool isComplex = false) {
  return KarnDSPFixpt::makeAttributes(
      {.value = {word, fraction}, .overflow = overflow, .rounding = rounding, .isComplex = isComplex});
}

TEST(FixptMedianTest, EqualsTheSortWithMeansByShift) {
  const Types types{fixpt(8, 3), fixpt(8, 3), fixpt(9, 3)};
  const auto value = [](std::mt19937& random, int trial) {
    return trial % 2 == 0 ? pick(random, -128, 127) : pick(random, 0, 3);
  };
  forRandomProblems<Fixpt>(30, &types, value, [](int y, const std::vector<int>& window) {
    EXPECT_EQ(y, medianOf(window, rankBySort<int>, [](int lower, int upper) { return (lower + upper) >> 1; }));
  });
}

TEST(FixptMedianTest, MeanIsFormedInTheAccumulatorTypeByItsRounding) {
  const auto mean = [](const DSPDataAttributesHandle& accumulator, int a, int b) {
    const Types types{fixpt(8, 0), fixpt(8, 0), accumulator};
    return outputsOf<Fixpt>({{2, 1}, {2, 1}, {}, {a, b}}, &types).at(0);
  };
  EXPECT_EQ(mean(fixpt(16, 0), 4, 3), 3);
  EXPECT_EQ(mean(fixpt(16, 0, fxpRoundConvergent), 4, 3), 4);
  EXPECT_EQ(mean(fixpt(16, 0), -4, -3), -4);
  EXPECT_EQ(mean(fixpt(16, 1, fxpRoundCeiling), -4, -3), -4) << "-3.5 exactly, floored by the output's type";
  EXPECT_EQ(mean(fixpt(8, 0, fxpRoundFloor, fxpOverflowSaturate), 100, 120), 63);
  EXPECT_EQ(mean(fixpt(8, 0), 100, 120), -18);
}

TEST(FixptMedianTest, ComplexElementsAreRankedByMagnitude) {
  const auto type = fixpt(8, 0, fxpRoundFloor, fxpOverflowWrap, true);
  int hDims[] = {3, 1}, uDims[] = {3, 1};
  ReferenceHost host;
  MedianFilterTolk<Fixpt, Fixpt> front(host.getAdaptor(), 2, hDims, 2, uDims, PadTypeReplicate, OutputModeValid, false,
                                       type, type, type);
  host.provideWorkVectors(front.getAllocator());
  Fixpt* const u = FixptFactory::createFixpt(type, 3, 0);
  Fixpt* const y = FixptFactory::createFixpt(type, 1, 0);
  (*u)[0].setComplex(0, -9);
  (*u)[1].setComplex(1, 0);
  (*u)[2].setComplex(3, -4);
  front.setup(u, y, nullptr, false);
  front.computeOutputs();
  EXPECT_EQ((*y)[0].toDouble(), 3);
  EXPECT_EQ(y->imaginaryToDouble(), -4);
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
    std::vector<double> expected;
    for (int i = 0; i < inputWidth * inputHeight; ++i) {
      expected.push_back(medianOf(windowAt(p, i % inputWidth, i / inputWidth), rankBySort<double>, meanOf<double>));
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

TEST(MedianFrontTest, OneDimensionIsALineMoreThanTwoFilterTheFirstPlaneAndNoneDoNothing) {
  float u[] = {4, 1, 3, 2, 9, 9, 9, 9}, y[8];
  int hDims[] = {3, 1, 2}, uDims[] = {4, 1, 2};
  for (const int rank : {1, 3, 0}) {
    std::fill_n(y, 8, -77.0F);
    ReferenceHost host;
    MedianFilterTolk<float, float> front(host.getAdaptor(), rank, hDims, rank, uDims, PadTypeReplicate, OutputModeSame,
                                         false);
    host.provideWorkVectors(front.getAllocator());
    front.setup(u, y, nullptr, false);
    front.computeOutputs();
    EXPECT_THAT(std::vector(y + 4, y + 8), testing::Each(-77)) << rank;
    const std::vector<float> nothing(4, -77), medians{4, 3, 2, 2};
    EXPECT_EQ(std::vector(y, y + 4), rank == 0 ? nothing : medians) << rank;
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
