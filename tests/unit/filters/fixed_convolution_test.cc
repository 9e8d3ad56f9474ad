#include "orvane/filters/fixed_convolution.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <array>
#include <complex>
#include <cstdint>
#include <random>
#include <vector>

#include "tests/support/fixed_model.h"

namespace BP::filters {
namespace {

using test::ExactCast;
using test::expectCounts;
using test::labelled;
using test::pick;
using testing::ElementsAre;

TEST(FixedConvolutionTest, EqualsIntegerArithmeticAndCountsItsCasts) {
  std::mt19937 random(3);
  for (int trial = 0; trial < 100; ++trial) {
    const FixedModes modes = test::randomModes(random);
    const FixedTypes types{
        .input = {8, 2, false}, .accumulator = {12, 3}, .output = {7, 1}, .product = FixedType{11, 4}, .modes = modes};
    const int taps = pick(random, 1, 5), count = pick(random, 5, 9);
    std::vector<std::uint8_t> input(static_cast<std::size_t>(count));
    std::vector<std::int16_t> filter(static_cast<std::size_t>(taps));
    for (auto& value : input) value = static_cast<std::uint8_t>(pick(random, 0, 255));
    for (auto& value : filter) value = static_cast<std::int16_t>(pick(random, -256, 255));
    FixedConvolution convolution(FixedView(ArrayView(filter, {taps}), {9, 4}), {count}, types,
                                 {.direction = FilterDirection::correlation});
    ExactCast product{*types.product, modes}, accumulator{types.accumulator, modes}, output{types.output, modes};
    std::vector<mpq_class> expected;
    std::vector<std::int8_t> actual(static_cast<std::size_t>(count - taps + 1));
    for (std::size_t p = 0; p < actual.size(); ++p) {
      mpq_class sum;
      for (std::size_t i = 0; i < filter.size(); ++i) {
        sum = accumulator(sum + product(mpq_class(input[p + i] * filter[i]) / (1 << (2 + 4))));
      }
      expected.push_back(output(sum));
    }
    convolution.run(FixedView(ArrayView(input, {count}), types.input),
                    MutableFixedView(ArrayView(actual, {count - taps + 1}), types.output));
    EXPECT_EQ(test::exactValues(FixedView(ArrayView(actual, {count - taps + 1}), types.output)), expected);
    const auto statistics = convolution.statistics();
    EXPECT_EQ(statistics.size(), 3U);
    expectCounts(labelled(statistics, "product"), product.counts);
    expectCounts(labelled(statistics, "accumulator"), accumulator.counts);
    expectCounts(labelled(statistics, "output"), output.counts);
  }
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
  FixedConvolution first(values({1, 10}, {12, 0}), {3}, bytes, {.mode = OutputMode::full, .padValue = 7});
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

TEST(FixedConvolutionTest, OnlyTheBitsOfAWordCount) {
  const std::vector<std::int16_t> filter{0x7003, -0x1001};  // 3 and -1 in 12 bits
  const std::vector<std::uint8_t> input{0xf5, 0x12};        // 5 and 2 in 4 bits
  FixedConvolution convolution(FixedView(ArrayView(filter, {2}), {12, 0}), {2},
                               {.input = {4, 0, false}, .accumulator = {20, 0}, .output = {20, 0}},
                               {.direction = FilterDirection::correlation});
  EXPECT_THAT(listOf(convolution.run(FixedView(ArrayView(input, {2}), {4, 0, false}))), ElementsAre(13));
}

TEST(FixedConvolutionTest, ComplexValuesOnEitherSide) {
  const std::vector<std::complex<double>> some{{1, 2}, {3, -4}};
  const FixedArray turned = quantise(ArrayView(some, {2}), {8, 0});
  const FixedArray real = values({5, 7}, {8, 0});
  for (const bool inputIsComplex : {true, false}) {
    const FixedTypes types{
        .input = {8, 0}, .inputIsComplex = inputIsComplex, .accumulator = {16, 0}, .output = {16, 0}};
    FixedConvolution convolution(inputIsComplex ? real : turned, {2}, types,
                                 {.direction = FilterDirection::correlation});
    const auto output = toComplex(convolution.run(inputIsComplex ? turned : real));
    EXPECT_EQ(output[0], std::complex<double>(5 + 21, 10 - 28));
  }
}

TEST(FixedConvolutionTest, NormalisedSumsOfEqualWindowsAreOne) {
  FixedTypes types{.input = {8, 0, false}, .accumulator = {40, 16}, .output = {16, 8}, .sqrt = FixedType{32, 12}};
  const ConvolutionOptions options{.normalise = Normalisation::energy};
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
                                        {.mode = OutputMode::full});
  // 3 * 0.5 becomes 2 between the passes.
  EXPECT_THAT(listOf(convolution.run(input)), ElementsAre(2, 3, 0, 4, 6, 0, 0, 0, 0));
  convolution.setFilters(values({2, 1}, {8, 2}), values({1, 3}, {8, 2}));
  EXPECT_THAT(listOf(convolution.run(input)), ElementsAre(6, 3, 0, 18, 9, 0, 0, 0, 0));
  EXPECT_EQ(labelled(convolution.statistics(), "output").casts, 18U);
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
