#include "orvane/filters/convolution.h"

#include <gtest/gtest.h>

#include <complex>
#include <utility>
#include <vector>

#include "tests/support/conv_corr_model.h"
#include "tests/support/random_values.h"

namespace BP::filters {
namespace {

using test::Problem;
using test::randomValues;

constexpr std::pair<OutputMode, OutputModeEnum> modes[] = {
    {OutputMode::valid, OutputModeValid}, {OutputMode::same, OutputModeSame}, {OutputMode::full, OutputModeFull}};
constexpr std::pair<PadRule, PadTypeEnum> pads[] = {{PadRule::constant, PadTypeConstant},
                                                    {PadRule::replicate, PadTypeReplicate},
                                                    {PadRule::symmetric, PadTypeSymmetric},
                                                    {PadRule::circular, PadTypeCircular},
                                                    {PadRule::mirror, PadTypeMirror}};
constexpr std::pair<FilterDirection, AlgorithmModeEnum> directions[] = {
    {FilterDirection::convolution, AlgorithmModeConvolution}, {FilterDirection::correlation, AlgorithmModeCorrelation}};
constexpr std::pair<Normalisation, NormEnum> norms[] = {{Normalisation::none, NormNone},
                                                        {Normalisation::energy, NormWindowEnergy}};

template <class T>
void expectSame(const std::vector<T>& expected, const Array<T>& actual) {
  ASSERT_EQ(actual.size(), expected.size());
  for (std::size_t i = 0; i < expected.size(); ++i) {
    ASSERT_TRUE(test::sameBits(actual[i], expected[i])) << i << ": " << actual[i] << ", not " << expected[i];
  }
}

/// An input of 6 by 5, a filter of 4 by 3, a pad value of 2, or 2 - i.
template <class UT, class HT>
struct Scene {
  using YT = ConvolutionOutput<UT, HT>;
  std::mt19937 random{7};
  Problem<HT, UT, YT> problem{{4, 3}, {6, 5}, randomValues<HT>(random, 12), randomValues<UT>(random, 30)};
  ConvolutionOptions options;
  Scene() {
    options.padValue = {2, test::IsComplex<UT>::value ? -1.0 : 0.0};
    problem.padValue = static_cast<UT>(2);
    if constexpr (test::IsComplex<UT>::value) problem.padValue = {2, -1};
  }
  ArrayView<const UT> input() const { return {problem.u, {problem.uDims[0], problem.uDims[1]}}; }
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

TYPED_TEST(ConvolutionTest, EveryChoiceMeansWhatItSays) {
  Scene<typename TypeParam::Input, typename TypeParam::Filter> scene;
  auto& problem = scene.problem;
  auto& options = scene.options;
  for (const auto& [mode, coreMode] : modes) {
    for (const auto& [pad, corePad] : pads) {
      for (const auto& [direction, coreDirection] : directions) {
        for (const auto& [normalisation, norm] : norms) {
          options.mode = mode, problem.outputMode = coreMode;
          options.pad = pad, problem.padType = corePad;
          options.direction = direction, problem.algorithmMode = coreDirection;
          options.normalise = normalisation, problem.norm = norm;
          expectSame(solve(problem), convolve(scene.input(), scene.filter(), options));
        }
        problem.norm = NormNone, options.normalise = Normalisation::none;
        auto first = problem;
        first.h.resize(4);
        const std::vector row(problem.h.begin() + 4, problem.h.begin() + 7);
        expectSame(solveSeparable(first, row),
                   convolveSeparable(scene.input(), ArrayView(first.h, {4}), ArrayView(row, {3}), options));
      }
    }
  }
}

TEST(ConvolutionRunTest, AnObjectRunsOverOtherArraysFiltersAndPadValues) {
  Scene<float, float> scene;
  scene.options.mode = OutputMode::full;
  scene.problem.outputMode = OutputModeFull;
  Convolution<float> convolution(scene.filter(), {6, 5}, scene.options);
  EXPECT_EQ(convolution.outputExtents(), (Extents{9, 7}));
  Array<float> output({9, 7}), other({9, 7});
  for (int turn = 0; turn < 3; ++turn) {
    scene.problem.u = randomValues<float>(scene.random, 30);
    for (Array<float>* target : {&output, &other, &other}) {
      convolution.run(scene.input(), *target);
      expectSame(solve(scene.problem), *target);
    }
    scene.problem.h = randomValues<float>(scene.random, 12);
    scene.problem.padValue = static_cast<float>(turn);
    convolution.setFilter(scene.filter());
    convolution.setPadValue(turn);
  }
}

TEST(ConvolutionRunTest, ASeparableObjectRunsWithOtherFilters) {
  Scene<float, float> scene;
  scene.problem.outputMode = OutputModeSame;
  std::vector<float> column{1, 2, 3}, row{4, 5};
  SeparableConvolution<float> convolution(ArrayView(column, {3}), ArrayView(row, {2}), {6, 5},
                                          {.mode = OutputMode::same, .padValue = 2});
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

TEST(ConvolutionRunTest, OneDimensionAndCorrelation) {
  const std::vector<double> signal{1, 2, 3, 4}, filter{1, 10};
  expectSame({12, 23, 34}, convolve(ArrayView(signal, {4}), ArrayView(filter, {2})));
  expectSame({21, 32, 43}, correlate(ArrayView(signal, {4}), ArrayView(filter, {2})));
  EXPECT_EQ(outputExtents({4}, {2}, OutputMode::valid), Extents{3});
}

TEST(ConvolutionRunTest, TheFilterIsCopiedSoItMayOverlapAnything) {
  std::vector<float> memory{1, 2, 3, 4, 5, 6, 7, 8, 9, 10};
  const std::span all(memory);
  convolveInto(ArrayView<const float>(all.first(5), {5}), ArrayView<const float>(all.subspan(4, 2), {2}),
               ArrayView<float>(all.subspan(5, 4), {4}));
  EXPECT_EQ(memory,
            (std::vector<float>{1, 2, 3, 4, 5, 5 * 2 + 6 * 1, 5 * 3 + 6 * 2, 5 * 4 + 6 * 3, 5 * 5 + 6 * 4, 10}));
}

TEST(ConvolutionRunTest, AMovedFromObjectSaysSoAndCanBeAssignedTo) {
  Scene<double, double> scene;
  Convolution<double> first(scene.filter(), {6, 5});
  Convolution<double> second = std::move(first);
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
