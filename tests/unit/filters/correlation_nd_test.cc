#include "orvane/filters/correlation_nd.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <utility>

#include "orvane/filters/convolution.h"
#include "tests/support/choices.h"
#include "tests/support/random_values.h"

namespace BP::filters {
namespace {

using test::pick;

template <class T>
class CorrelationNDTest : public testing::Test {};
using ElementTypes = testing::Types<float, double>;
TYPED_TEST_SUITE(CorrelationNDTest, ElementTypes);

template <class T>
Array<T> randomArray(std::mt19937& random, const Extents& extents) {
  Array<T> array(extents);
  for (T& value : array) value = test::RandomValue<T>::of(random, false);
  return array;
}

TYPED_TEST(CorrelationNDTest, EqualsConvolutionsOfRankOneAndTwoRunAfterRunAndPrintsNothing) {
  using T = TypeParam;
  std::mt19937 random(1);
  testing::internal::CaptureStdout();
  for (int trial = 0; trial < 60; ++trial) {
    const Extents inputs = trial % 2 ? Extents{pick(random, 4, 9), pick(random, 4, 9)} : Extents{pick(random, 4, 9)};
    const Extents filters = trial % 2 ? Extents{pick(random, 1, 4), pick(random, 1, 4)} : Extents{pick(random, 1, 4)};
    const OutputMode mode = test::modeChoices[trial % 3].first;
    const PadRule pad = test::padChoices[trial % 5].first;
    CorrelationND<T> correlation(randomArray<T>(random, filters), inputs, {mode, {pad, 0.1}});
    for (const double padValue : {0.5, -2.0}) {
      const auto filter = randomArray<T>(random, filters), input = randomArray<T>(random, inputs);
      correlation.setFilter(filter);
      correlation.setPadValue(padValue);
      const Array<T> output = correlation.run(input);
      const Array<T> expected = correlate(input, filter, {.mode = mode, .pad = {pad, padValue}});
      ASSERT_EQ(output.extents(), expected.extents());
      for (std::size_t i = 0; i < output.size(); ++i) ASSERT_TRUE(test::sameBits(output[i], expected[i])) << trial;
    }
  }
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
}

TEST(CorrelationNDRunTest, AFilterOfASingleOneMovesAVolume) {
  std::mt19937 random(2);
  const auto input = randomArray<float>(random, {4, 3, 5});
  for (int j = 0; j < 4 * 2 * 3; ++j) {
    Array<float> filter({4, 2, 3});
    filter[static_cast<std::size_t>(j)] = 1;
    const Array<float> output = correlateND(input, filter, {OutputMode::same, PadRule::circular});
    for (int i = 0; i < 4 * 3 * 5; ++i) {
      const int x = (i + j + 3) % 4, y = (i / 4 + j / 4 % 2) % 3, z = (i / 12 + j / 8 + 4) % 5;
      ASSERT_EQ(output[static_cast<std::size_t>(i)], input[static_cast<std::size_t>(x + 4 * y + 12 * z)]) << i;
    }
  }
}

TEST(CorrelationNDRunTest, AMovedFromObjectSaysSo) {
  const Array<float> filter({3, 3, 3});
  CorrelationND<float> job(filter, {5, 5, 5}, {.mode = OutputMode::valid});
  const CorrelationND<float> moved = std::move(job);
  EXPECT_EQ(moved.outputExtents(), (Extents{3, 3, 3}));
  EXPECT_THROW(job.run(Array<float>({5, 5, 5})), std::logic_error);  // NOLINT(bugprone-use-after-move)
}

}  // namespace
}  // namespace BP::filters
