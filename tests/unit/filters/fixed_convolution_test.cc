#include "orvane/filters/fixed_convolution.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <numeric>
#include <random>
#include <vector>

#include "tests/support/choices.h"
#include "tests/support/conv_corr_model.h"
#include "tests/support/fixed_model.h"

namespace BP::filters {
namespace {

using test::Exact;
using test::ExactCast;
using test::expectCounts;
using test::labelled;
using test::pick;
using testing::ElementsAre;

/// A convolution of random types, real and complex, and geometry, with its exact model.
class Comparison {
 public:
  Comparison(std::mt19937& generator, bool normalised)
      : random(generator), isNormalised(normalised), p(test::randomProblem<int, int, int>(random, 4, 6)) {
    types.input = pick(random, 0, 3) == 0 ? test::randomType(random, 30, 50) : test::randomType(random, 1, 12);
    types.inputIsComplex = !isNormalised && pick(random, 0, 2) == 0;
    filterType = test::randomType(random, 1, 12);
    const bool filterIsComplex = !isNormalised && pick(random, 0, 2) == 0;
    types.accumulator = test::randomType(random, 4, pick(random, 0, 1) == 0 ? 24 : 128);
    types.output = test::randomType(random, 2, 50);
    types.modes = test::randomModes(random);
    if (pick(random, 0, 1) == 1) {
      const bool isSigned = types.input.isSigned || filterType.isSigned;
      types.product = {pick(random, 3, 60), pick(random, -2, 20), isSigned};
    }
    if (isNormalised) types.sqrt = test::randomType(random, 2, 40);
    casts.isComplex = types.inputIsComplex || filterIsComplex;
    casts.setTypes(types.input, filterType, types.product, types.accumulator, types.output, types.modes);
    u = test::randomFixed(random, {p.uDims[0], p.uDims[1]}, types.input, types.inputIsComplex);
    h = test::randomFixed(random, {p.hDims[0], p.hDims[1]}, filterType, filterIsComplex);
    std::iota(p.u.begin(), p.u.end(), 0);  // elements are looked up by these
    p.padValue = -1;
    const double padValue = pick(random, 0, 1) == 1 ? 0 : ExactCast{types.input, types.modes}(5).get_d();
    pad = Exact(padValue, 0, types.inputIsComplex);
    options = {.pad = {PadRule::constant, padValue}};
    if (isNormalised) options.normalise = Normalisation::energy;
  }

  void run() {
    const auto taps = test::exactElements(u), filter = test::exactElements(h);
    test::forEachChoice(p, options, [&] {
      SCOPED_TRACE(testing::Message() << p);
      FixedConvolution convolution(h, {p.uDims[0], p.uDims[1]}, types, options);
      const std::vector<Exact> found = test::exactElements(convolution.run(u));
      test::ExactCasts model = casts;
      if (isNormalised && !normFits(filter)) return;
      for (std::size_t i = 0; i < found.size(); ++i) {
        Exact sum({}, {}, casts.isComplex);
        mpq_class energy;
        for (std::size_t k = 0; k < filter.size(); ++k) {
          const int index = tapIndex(static_cast<int>(i), static_cast<int>(k));
          const Exact& tap = index < 0 ? pad : taps[static_cast<std::size_t>(index)];
          const bool flips = p.algorithmMode == AlgorithmModeConvolution;
          test::ExactCasts uncounted = casts;  // products of the pad value are not told
          const Exact product =
              (index < 0 ? uncounted : model).multiply(tap, filter[flips ? filter.size() - 1 - k : k]);
          sum = model.accumulate(sum, product);
          if (isNormalised) energy = casts.accumulator(energy + square(tap.re * tap.re));
        }
        if (isNormalised && energy < 0) continue;  // wrapped: no root to speak of
        ASSERT_TRUE(found[i] == model.written(isNormalised ? divided(sum, energy) : sum)) << "output " << i;
      }
      if (isNormalised) return;
      model.expectCountsOfSums(convolution.statistics());
      test::expectCounts(labelled(convolution.statistics(), "output"), model.output.counts);
      overflows += model.output.counts.overflows + model.accumulator.counts.overflows;
    });
  }

  inline static std::uint64_t overflows = 0;
  inline static int zeroDivisors = 0, divisors = 0;

 private:
  int tapIndex(int i, int k) const {
    return tapAt(p, i % p.yDim(0) + p.firstTap(0) + k % p.hDims[0], i / p.yDim(0) + p.firstTap(1) + k / p.hDims[0]);
  }
  bool normFits(const std::vector<Exact>& filter) {
    square = {casts.product.type, types.modes};
    if (types.product) square.type.isSigned = types.input.isSigned;
    if (!types.product) square.type = {2 * types.input.word, 2 * types.input.fraction, types.input.isSigned};
    root = {*types.sqrt, types.modes};
    mpq_class energy;
    for (const Exact& v : filter) energy = casts.accumulator(energy + v.re * v.re);
    if (energy >= 0) filterNorm = root.root(energy);
    return energy >= 0;
  }
  Exact divided(const Exact& sum, const mpq_class& energy) {
    const mpq_class divisor = casts.accumulator(root.root(energy) * filterNorm);
    ++(divisor == 0 ? zeroDivisors : divisors);
    return Exact(divisor == 0 ? mpq_class(0) : casts.accumulator(sum.re / divisor));
  }

  std::mt19937& random;
  bool isNormalised;
  test::Problem<int, int, int> p;
  FixedTypes types;
  FixedType filterType;
  test::ExactCasts casts;
  FixedArray u, h;
  Exact pad;
  ConvolutionOptions options;
  ExactCast square, root;
  mpq_class filterNorm;
};

TEST(FixedConvolutionTest, EveryCastIsInItsPlaceAndCounted) {
  std::mt19937 random(5);
  for (int trial = 0; trial < 60 && !HasFailure(); ++trial) {
    SCOPED_TRACE(trial);
    Comparison(random, trial % 3 == 2).run();
  }
  EXPECT_GT(Comparison::overflows, 400U);
  EXPECT_GT(Comparison::zeroDivisors, 100);
  EXPECT_GT(Comparison::divisors, 100);
}

const FixedTypes bytes{.input = {8, 0, false}, .accumulator = {24, 0}, .output = {8, 0, false}};

FixedArray values(const std::vector<double>& list, const FixedType& type) {
  return quantise(ArrayView(list, {static_cast<std::int64_t>(list.size())}), type);
}
std::vector<double> listOf(const FixedArray& array) {
  const Array<double> list = toDouble(array);
  return {list.begin(), list.end()};
}

TEST(FixedConvolutionTest, RunsAgainWithOtherFiltersAndPadValuesAndAddsItsCountsUp) {
  const FixedArray input = values({1, 2, 250}, bytes.input);
  FixedConvolution first(values({1, 10}, {12, 0}), {3}, bytes,
                         {.mode = OutputMode::full, .pad = {PadRule::constant, 7}});
  FixedConvolution convolution = std::move(first);
  EXPECT_THAT(listOf(convolution.run(input)), ElementsAre(71, 12, 255, 255));
  convolution.setFilter(values({-1, 1}, {12, 0}));
  convolution.setPadValue(9);
  EXPECT_THROW(convolution.setPadValue(256), std::invalid_argument);
  EXPECT_THAT(listOf(convolution.run(input)), ElementsAre(8, 0, 0, 241));
  for (int call = 0; call < 2; ++call) {
    expectCounts(labelled(convolution.statistics(), "output"), {"output", 8, 4, 0, 0, 255});
  }
  EXPECT_THROW(first.statistics(), std::logic_error);
}

TEST(FixedConvolutionTest, NormalisedSumsOfEqualWindowsAreOne) {
  FixedTypes types{.input = {8, 0, false}, .accumulator = {40, 16}, .output = {16, 8}, .sqrt = FixedType{32, 12}};
  const ConvolutionOptions options{.mode = OutputMode::valid, .normalise = Normalisation::energy};
  FixedConvolution convolution(values({0.5, 0.5, 0.5, 0.5}, {16, 14}), {6}, types, options);
  EXPECT_THAT(listOf(convolution.run(values({0, 0, 0, 0, 200, 200}, types.input))),
              ElementsAre(0, 0.5, testing::DoubleNear(std::sqrt(0.5), 0x1p-8)));
  EXPECT_THAT(listOf(convolution.run(values({9, 9, 9, 9, 9, 9}, types.input))), ElementsAre(1, 1, 1));
}

TEST(FixedConvolutionTest, SeparablePassesMeetInTheOutputsType) {
  const FixedTypes types{.input = {8, 0}, .accumulator = {16, 2}, .output = {8, 0}};
  const FixedArray input({2, 2}, types.input);
  const_cast<std::int8_t*>(static_cast<const std::int8_t*>(input.data()))[0] = 3;
  FixedSeparableConvolution convolution(values({0.5, 1}, {8, 2}), values({1, 2}, {8, 2}), {2, 2}, types,
                                        {.mode = OutputMode::full, .pad = PadRule::constant});
  // 3 * 0.5 becomes 2 between the passes.
  EXPECT_THAT(listOf(convolution.run(input)), ElementsAre(2, 3, 0, 4, 6, 0, 0, 0, 0));
  convolution.setFilters(values({2, 1}, {8, 2}), values({1, 3}, {8, 2}));
  EXPECT_THAT(listOf(convolution.run(input)), ElementsAre(6, 3, 0, 18, 9, 0, 0, 0, 0));
  EXPECT_EQ(labelled(convolution.statistics(), "output").casts, 18U);
}

TEST(FixedConvolutionTest, TheSecondPadValueIsTheFirstFiltersSumInTheOutputsTypeTimesTheFirst) {
  const FixedTypes types{.input = {16, 0}, .accumulator = {24, 0}, .output = {5, 0}};
  FixedSeparableConvolution convolution(
      values({10, 10}, {8, 0}), values({1, -1}, {8, 0}), {2, 2}, types,
      {.direction = FilterDirection::correlation, .mode = OutputMode::full, .pad = {PadRule::constant, -1}});
  // The sum saturates to 15 before it is multiplied by -1; the intermediate's first element is -10.
  EXPECT_EQ(listOf(convolution.run(FixedArray({2, 2}, types.input)))[0], -15 + 10);
}

TEST(QuantiseTest, RoundsOverflowsAndCounts) {
  const std::vector<double> list{0.4, 1.5, -2.5, 300, -300};
  const auto cast = [&](Rounding rounding, Overflow overflow, FixedStatistics* statistics) {
    return listOf(quantise(ArrayView(list, {5}), {8, 0}, {rounding, overflow}, statistics));
  };
  FixedStatistics statistics{.label = "list"};
  EXPECT_THAT(cast(Rounding::nearest, Overflow::saturate, &statistics), ElementsAre(0, 2, -2, 127, -128));
  EXPECT_THAT(cast(Rounding::convergent, Overflow::symmetric, &statistics), ElementsAre(0, 2, -2, 127, -127));
  EXPECT_THAT(cast(Rounding::floor, Overflow::wrap, nullptr), ElementsAre(0, 1, -3, 44, -44));
  EXPECT_THAT(cast(Rounding::round, Overflow::zero, nullptr), ElementsAre(0, 2, -3, 0, 0));
  EXPECT_THAT(cast(Rounding::ceiling, Overflow::zero, nullptr), ElementsAre(1, 2, -2, 0, 0));
  EXPECT_THAT(cast(Rounding::zero, Overflow::zero, nullptr), ElementsAre(0, 1, -2, 0, 0));
  expectCounts(statistics, {"list", 10, 4, 6, -128, 127});
}

TEST(FixedTypeTest, TextsAndTypesAreOneAnother) {
  EXPECT_EQ(fixedType("s16.-4"), (FixedType{16, -4}));
  EXPECT_EQ(toText(fixedType("u8.0")), "u8.0");
  EXPECT_THROW(fixedType("s16"), std::invalid_argument);
  EXPECT_THROW(fixedType("s16.2000"), std::invalid_argument);
}

}  // namespace
}  // namespace BP::filters
