#include "orvane/filters/convolution.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <complex>
#include <limits>
#include <string_view>
#include <utility>
#include <vector>

#include "orvane/lanes/target.h"
#include "tests/support/choices.h"
#include "tests/support/conv_corr_model.h"

namespace BP::filters {
namespace {

using test::Problem;
using test::randomValues;

template <class T>
void expectSame(const std::vector<T>& expected, const Array<T>& actual) {
  ASSERT_EQ(actual.size(), expected.size());
  for (std::size_t i = 0; i < expected.size(); ++i) {
    ASSERT_TRUE(test::sameBits(actual[i], expected[i])) << i << ": " << actual[i] << ", not " << expected[i];
  }
}

/// A problem for the model and for the API.
template <class UT, class HT>
struct Scene {
  using YT = ConvolutionOutput<UT, HT>;
  Problem<HT, UT, YT> problem;
  ConvolutionOptions options;
  explicit Scene(const Problem<HT, UT, YT>& p) : problem(p) { options.pad.value = std::complex<double>(p.padValue); }
  Extents inputExtents() const { return {problem.uDims[0], problem.uDims[1]}; }
  ArrayView<const UT> input() const { return {problem.u, inputExtents()}; }
  ArrayView<const HT> filter() const { return {problem.h, {problem.hDims[0], problem.hDims[1]}}; }
};

template <class Pair>
class ConvolutionTest : public testing::Test {};
template <class UT, class HT>
struct ElementPair {
  using Input = UT;
  using Filter = HT;
};
using C32 = std::complex<float>;
using C64 = std::complex<double>;
using Pairs = testing::Types<ElementPair<float, float>, ElementPair<float, C32>, ElementPair<C32, float>,
                             ElementPair<C32, C32>, ElementPair<double, double>, ElementPair<double, C64>,
                             ElementPair<C64, double>, ElementPair<C64, C64>>;
TYPED_TEST_SUITE(ConvolutionTest, Pairs);

TYPED_TEST(ConvolutionTest, EveryChoiceEqualsThePlainModelBitForBitOnEveryTarget) {
  using UT = typename TypeParam::Input;
  using HT = typename TypeParam::Filter;
  std::mt19937 random(11);
  auto targets = lanes::getTargets();
  targets.push_back(lanes::plain);
  for (int trial = 0; trial < 30 && !this->HasFatalFailure(); ++trial) {
    const bool special = trial % 3 == 2;
    Scene<UT, HT> scene(test::randomProblem<HT, UT, ConvolutionOutput<UT, HT>>(random, 7, 10, special));
    const auto row = randomValues<HT>(random, test::pick(random, 1, 5));
    ASSERT_TRUE(lanes::forceTarget(targets[static_cast<std::size_t>(trial) % targets.size()]));
    test::forEachChoice(scene.problem, scene.options, [&] {
      for (const auto& [normalisation, norm] : test::normChoices) {
        scene.options.normalise = normalisation, scene.problem.norm = norm;
        SCOPED_TRACE(testing::Message() << scene.problem << ", target " << lanes::getTarget());
        Convolution<UT, HT> convolution(scene.filter(), scene.inputExtents(), scene.options);
        for (int run = 0; run < 2; ++run) expectSame(solve(scene.problem), convolution.run(scene.input()));
      }
      scene.options.normalise = Normalisation::none, scene.problem.norm = NormNone;
      Problem<HT, UT, ConvolutionOutput<UT, HT>> shape = scene.problem;
      shape.hDims[0] = static_cast<int>(shape.h.size()), shape.hDims[1] = static_cast<int>(row.size());
      if (special || (shape.outputMode == OutputModeValid && !shape.windowFits())) return;
      SCOPED_TRACE(testing::Message() << "separable " << shape);
      expectSame(solveSeparable(scene.problem, row),
                 convolveSeparable(scene.input(), ArrayView<const HT>(scene.problem.h, {shape.hDims[0]}),
                                   ArrayView<const HT>(row, {shape.hDims[1]}), scene.options));
    });
  }
  lanes::forceTarget("");
}

Scene<float, float> fixedScene(std::mt19937& random) {
  return Scene<float, float>({{4, 3}, {6, 5}, randomValues<float>(random, 12), randomValues<float>(random, 30), 2});
}

TEST(ConvolutionRunTest, AnObjectRunsOverOtherArraysFiltersAndPadValues) {
  std::mt19937 random(7);
  auto scene = fixedScene(random);
  scene.options.mode = OutputMode::full;
  scene.problem.outputMode = OutputModeFull;
  Array<float> output({9, 7}), other({9, 7});
  for (const auto& [normalisation, norm] : test::normChoices) {
    scene.options.normalise = normalisation, scene.problem.norm = norm;
    scene.options.pad = {PadRule::constant, 2};
    scene.problem.padValue = 2;
    Convolution<float> convolution(scene.filter(), {6, 5}, scene.options);
    EXPECT_EQ(convolution.outputExtents(), (Extents{9, 7}));
    for (int turn = 0; turn < 3; ++turn) {
      std::ranges::copy(randomValues<float>(random, 30), scene.problem.u.begin());
      for (Array<float>* target : {&output, &other, &output}) {  // so that each turn begins with the last one's arrays
        convolution.run(scene.input(), *target);
        expectSame(solve(scene.problem), *target);
      }
      scene.problem.h = randomValues<float>(random, 12);
      scene.problem.padValue = static_cast<float>(turn);
      convolution.setFilter(scene.filter());
      convolution.setPadValue(turn);
    }
  }
}

TEST(ConvolutionRunTest, ASeparableObjectRunsWithOtherFilters) {
  std::mt19937 random(7);
  auto scene = fixedScene(random);
  scene.problem.outputMode = OutputModeSame;
  std::vector<float> column{1, 2, 3}, row{4, 5};
  SeparableConvolution<float> convolution(ArrayView(column, {3}), ArrayView(row, {2}), {6, 5},
                                          {.mode = OutputMode::same, .pad = {PadRule::constant, 2}});
  for (int turn = 0; turn < 2; ++turn) {
    scene.problem.h = column;
    expectSame(solveSeparable(scene.problem, row), convolution.run(scene.input()));
    column = {-1, 0.5, 8};
    row = {3, 7};
    convolution.setFilters(ArrayView<const float>(column, {3}), ArrayView<const float>(row, {2}));
    convolution.setPadValue(5);
    scene.problem.padValue = 5;
  }
}

using Line = std::vector<double>;
Line valid(FilterDirection direction, const Line& h, const Line& u) {
  const auto lineOf = [](const Line& l) { return ArrayView(l, {static_cast<std::int64_t>(l.size())}); };
  const Array<double> y = convolve(lineOf(u), lineOf(h), {.direction = direction, .mode = OutputMode::valid});
  return {y.begin(), y.end()};
}

TEST(ConvolutionRunTest, KnownSums) {
  EXPECT_EQ(outputExtents({4}, {2}, OutputMode::valid), Extents{3});
  const double infinity = std::numeric_limits<double>::infinity();
  const double a = 1 + 0x1p-27;  // a * a = 1 + 2^-26 + 2^-54, of which the last term is rounded away
  for (const std::string_view target : {lanes::plain, std::string_view()}) {
    ASSERT_TRUE(lanes::forceTarget(target));
    EXPECT_EQ(valid(FilterDirection::convolution, {1, 10}, {1, 2, 3, 4}), (Line{12, 23, 34}));
    EXPECT_EQ(valid(FilterDirection::correlation, {1, 10}, {1, 2, 3, 4}), (Line{21, 32, 43}));
    EXPECT_EQ(valid(FilterDirection::correlation, {1, a}, {-(1 + 0x1p-26), a}), Line{0}) << "fused";
    EXPECT_EQ(valid(FilterDirection::correlation, {1, 1, 1, 1}, {1, 0x1p53, -0x1p53, 1}), Line{1})
        << "reordered or widened";
    EXPECT_TRUE(std::isnan(valid(FilterDirection::correlation, {0, 1}, {infinity, 1})[0])) << "zero taps count";
    EXPECT_FALSE(std::signbit(valid(FilterDirection::convolution, {1}, {-0.0})[0])) << "a sum that starts at +0";
  }
}

TEST(ConvolutionRunTest, TheFilterIsCopiedSoItMayOverlapAnything) {
  std::vector<float> memory{1, 2, 3, 4, 5, 6, 7, 8, 9, 10};
  const std::span all(memory);
  convolveInto(ArrayView<const float>(all.first(5), {5}), ArrayView<const float>(all.subspan(4, 2), {2}),
               ArrayView<float>(all.subspan(5, 4), {4}), {.mode = OutputMode::valid});
  EXPECT_EQ(memory,
            (std::vector<float>{1, 2, 3, 4, 5, 5 * 2 + 6 * 1, 5 * 3 + 6 * 2, 5 * 4 + 6 * 3, 5 * 5 + 6 * 4, 10}));
}

TEST(ConvolutionRunTest, AMovedFromObjectSaysSoAndCanBeAssignedTo) {
  std::mt19937 random(7);
  const auto scene = fixedScene(random);
  Convolution<float> first(scene.filter(), {6, 5}, {.mode = OutputMode::valid});
  Convolution<float> second = std::move(first);
  expectSame(solve(scene.problem), second.run(scene.input()));
  EXPECT_THROW(first.run(scene.input()), std::logic_error);
  EXPECT_THROW(first.setPadValue(1), std::logic_error);
  EXPECT_THROW(first.outputExtents(), std::logic_error);
  first = std::move(second);
  expectSame(solve(scene.problem), first.run(scene.input()));
}

TEST(ArrayTest, CopiesAreTheirOwnAndMovedFromArraysAreEmpty) {
  Array<int> first({2, 3});
  first[5] = 7;
  Array<int> second = first;
  second[5] = 8;
  EXPECT_EQ(first[5], 7);
  const Array<int> third = std::move(second);
  EXPECT_EQ(third[5], 8);
  EXPECT_EQ(third.extents(), (Extents{2, 3}));
  EXPECT_EQ(second.size(), 0U);  // NOLINT(bugprone-use-after-move)
}

}  // namespace
}  // namespace BP::filters
