#include "orvane/filters/fixed_median.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cstdint>
#include <optional>
#include <random>
#include <tuple>
#include <vector>

#include "tests/support/choices.h"
#include "tests/support/fixed_model.h"
#include "tests/unit/median/median_model.h"

namespace BP::filters {
namespace {

using test::ExactCast;
using test::pick;
using testing::ElementsAre;

/// A median of random types and geometry, and the exact model of its runs.
class Comparison {
 public:
  explicit Comparison(std::mt19937& generator) : random(generator) {
    // Few bits make ties; many need the wide paths.
    types.input = pick(random, 0, 3) == 0 ? test::randomType(random, 60, 126) : test::randomType(random, 1, 9);
    if (pick(random, 0, 1) == 1) types.accumulator = test::randomType(random, 1, 128);
    if (pick(random, 0, 1) == 1) types.output = test::randomType(random, 1, 128);
    types.modes = test::randomModes(random);
    std::tie(mode, p.outputMode) = test::modeChoices[pick(random, 0, 2)];
    std::tie(pad, p.padType) = test::padChoices[pick(random, 0, 4)];
    for (int d = 0; d < 2; ++d) {
      p.uDims[d] = pick(random, 1, 6);
      p.hDims[d] = pick(random, 1, p.outputMode == OutputModeValid ? std::min(4, p.uDims[d]) : 4);
    }
    output = {types.output.value_or(types.input), types.modes};
  }

  void run() {
    const double padValue = pick(random, 0, 1) == 1 ? 0 : ExactCast{types.input, types.modes}(5).get_d();
    p.padValue = padValue;
    FixedMedian median({p.hDims[0], p.hDims[1]}, {p.uDims[0], p.uDims[1]}, types,
                       {.mode = mode, .pad = {pad, padValue}});
    for (int run = 0; run < 2; ++run) {
      const FixedArray u = test::randomFixed(random, {p.uDims[0], p.uDims[1]}, types.input);
      p.u = test::exactValues(u);
      ASSERT_EQ(test::exactValues(median.run(u)), expected());
      test::expectCounts(test::labelled(median.statistics(), "output"), output.counts);
    }
  }

 private:
  std::vector<mpq_class> expected() {
    const FixedType exact{types.input.word + 2, types.input.fraction + 1, types.input.isSigned};
    ExactCast input{types.input, types.modes}, accumulator{types.accumulator.value_or(exact), types.modes};
    const auto mean = [&](const mpq_class& lower, const mpq_class& upper) {
      return accumulator(accumulator(accumulator(lower) + upper) / 2);
    };
    std::vector<mpq_class> all;
    for (int i = 0; i < p.yDim(0) * p.yDim(1); ++i) {
      std::vector<mpq_class> values = test::windowAt(p, i % p.yDim(0), i / p.yDim(0));
      for (mpq_class& value : values) value = input(value);  // which symmetric overflow can change
      all.push_back(output(accumulator(test::medianOf(values, test::rankBySort<mpq_class>, mean))));
    }
    return all;
  }

  std::mt19937& random;
  FixedMedianTypes types;
  OutputMode mode;
  PadRule pad;
  test::Problem<mpq_class, mpq_class, mpq_class> p{};
  ExactCast output;
};

TEST(FixedMedianTest, EqualsTheExactSortOverTypesAndGeometryAndCountsItsOutputs) {
  std::mt19937 random(8);
  for (int trial = 0; trial < 400 && !testing::Test::HasFatalFailure(); ++trial) {
    SCOPED_TRACE(trial);
    Comparison(random).run();
  }
}

TEST(FixedMedianTest, ADefaultMeanIsRoundedOnceByItsMode) {
  const FixedType byte{8, 0, false};
  const std::vector<std::uint8_t> u{250, 253, 7, 8};
  for (const auto& [rounding, first, last] : {std::tuple{Rounding::floor, 251, 7}, {Rounding::convergent, 252, 8}}) {
    FixedMedian median({2}, {4}, {.input = byte, .modes = {.rounding = rounding}}, {.mode = OutputMode::valid});
    const Array<double> y = toDouble(median.run(FixedView(ArrayView(u, {4}), byte)));
    EXPECT_THAT(std::vector(y.begin(), y.end()), ElementsAre(first, 130, last));
  }
}

}  // namespace
}  // namespace BP::filters
