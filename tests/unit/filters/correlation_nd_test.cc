#include "orvane/filters/correlation_nd.h"

#include <gmock/gmock.h>

#include <stdexcept>
#include <vector>

#include "orvane/filters/convolution.h"
#include "tests/support/pad_walk.h"
#include "tests/support/random_values.h"

namespace BP::filters {
namespace {

using test::pick;
using test::randomValues;

template <class T>
class CorrelationNDTest : public testing::Test {};
using ElementTypes = testing::Types<float, double>;
TYPED_TEST_SUITE(CorrelationNDTest, ElementTypes);

template <class T>
Array<T> randomArray(std::mt19937& random, const Extents& extents) {
  Array<T> array(extents);
  std::ranges::copy(randomValues<T>(random, static_cast<int>(array.size())), array.begin());
  return array;
}

TYPED_TEST(CorrelationNDTest, EqualsConvolutionsOfRankOneAndTwoRunAfterRun) {
  using T = TypeParam;
  std::mt19937 random(1);
  for (int trial = 0; trial < 60; ++trial) {
    const Extents inputs = trial % 2 ? Extents{pick(random, 4, 9), pick(random, 4, 9)} : Extents{pick(random, 4, 9)};
    const Extents filters = trial % 2 ? Extents{pick(random, 1, 4), pick(random, 1, 4)} : Extents{pick(random, 1, 4)};
    const auto mode = static_cast<OutputMode>(trial % 3);
    const auto pad = static_cast<PadRule>(trial % 4);
    CorrelationND<T> correlation(randomArray<T>(random, filters), inputs, {mode, pad, 0.1});
    for (const double padValue : {0.5, -2.0}) {
      const auto filter = randomArray<T>(random, filters), input = randomArray<T>(random, inputs);
      correlation.setFilter(filter);
      correlation.setPadValue(padValue);
      const Array<T> output = correlation.run(input);
      const Array<T> expected = correlate(input, filter, {.mode = mode, .pad = pad, .padValue = padValue});
      ASSERT_EQ(output.extents(), expected.extents());
      for (std::size_t i = 0; i < output.size(); ++i) ASSERT_TRUE(test::sameBits(output[i], expected[i])) << trial;
    }
  }
}

TYPED_TEST(CorrelationNDTest, ReachesEveryElementOfAVolumeAndLeavesStandardOutputAlone) {
  using T = TypeParam;
  std::mt19937 random(2);
  const auto input = randomArray<T>(random, {4, 3, 5});
  for (const auto& [pad, type] : {std::pair(PadRule::replicate, PadTypeReplicate),
                                  {PadRule::symmetric, PadTypeSymmetric},
                                  {PadRule::circular, PadTypeCircular}}) {
    for (int j = 0; j < 4 * 2 * 3; ++j) {  // a filter with a single 1 moves the volume
      Array<T> filter({4, 2, 3});
      filter[static_cast<std::size_t>(j)] = 1;
      testing::internal::CaptureStdout();
      const Array<T> output = correlateND(input, filter, {OutputMode::same, pad});
      EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
      for (int i = 0; i < 4 * 3 * 5; ++i) {
        const int x = test::walkTo(type, i % 4 + j % 4 - 1, 4), y = test::walkTo(type, i / 4 % 3 + j / 4 % 2, 3);
        const int z = test::walkTo(type, i / 12 + j / 8 - 1, 5);
        ASSERT_EQ(output[static_cast<std::size_t>(i)], input[static_cast<std::size_t>(x + 4 * y + 12 * z)])
            << i << ' ' << j;
      }
    }
  }
}

TEST(CorrelationNDRefusalTest, NamesWhatDoesNotFit) {
  const Array<float> filter({3, 3, 3});
  const auto refusal = [](auto&& action) -> std::string {
    try {
      action();
    } catch (const std::invalid_argument& error) {
      return error.what();
    }
    return "accepted";
  };
  using Job = CorrelationND<float>;
  EXPECT_EQ(refusal([&] { Job(filter, {5, 5}); }), "filter: rank 3; it must be that of the input, 2");
  EXPECT_EQ(refusal([&] {
              Job(filter, {5, 2, 5});
            }),
            "filter: extent 3 in dimension 1; with mode valid and an input of 5 x 2 x 5, allowed are 1 to 2");
  EXPECT_EQ(refusal([&] { Job(filter, Extents{}); }), "input: rank 0; allowed are 1 to 8");
  EXPECT_EQ(refusal([&] { Job(filter, {5, 0, 5}); }), "input: extent 0 in dimension 1; allowed are 1 to 2147483647");
  EXPECT_EQ(refusal([&] {
              Job(filter, {2000, 2000, 2000});
            }),
            "input: 2000 x 2000 x 2000 are 8000000000 elements; at most 2147483647 are allowed");
  EXPECT_EQ(refusal([&] {
              Job(filter, {5, 5, 5}, {OutputMode::same, static_cast<PadRule>(5)});
            }),
            "pad: 5; allowed are 0 (constant), 1 (replicate), 2 (symmetric), 3 (circular), 4 (mirror)");
  EXPECT_EQ(refusal([&] {
              Job(filter, {5, 5, 5}, {OutputMode::same, PadRule::constant, 1e40});
            }),
            "padValue: 1e+40; it must lie in the range of the input's element type");
  Job job(filter, {5, 5, 5});
  const Array<float> input({5, 5, 5});
  Array<float> wrong({3, 3, 5});
  EXPECT_EQ(refusal([&] { job.run(input, wrong); }), "output: extents 3 x 3 x 5; they must be 3 x 3 x 3");
  const Job moved = std::move(job);
  EXPECT_EQ(moved.outputExtents(), (Extents{3, 3, 3}));
  EXPECT_THROW(job.run(input), std::logic_error);
}

}  // namespace
}  // namespace BP::filters
