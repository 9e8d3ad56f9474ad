#include "orvane/filters/median.h"

#include <gmock/gmock.h>

#include <functional>
#include <limits>
#include <random>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/random_values.h"
#include "tests/unit/median/median_model.h"

namespace BP::filters {
namespace {

using testing::ElementsAre;

TEST(MedianTest, EqualsTheSortForEveryModeAndPad) {
  std::mt19937 random(4);
  const auto mean = [](float lower, float upper) { return upper * 0.5F + lower * 0.5F; };
  for (const int mode : {0, 1, 2}) {
    for (const int pad : {0, 1, 2, 3}) {
      test::Problem<float, float, float> p{{4, 3}, {7, 6}, {}, test::randomValues<float>(random, 42), 0.5F};
      p.outputMode = OutputModeEnum{mode};
      p.padType = PadTypeEnum{pad + 1};
      const Array<float> y = median(ArrayView<const float>(p.u, {7, 6}), {4, 3},
                                    {.mode = OutputMode{mode}, .pad = PadRule{pad}, .padValue = p.padValue});
      ASSERT_EQ(y.extents(), Extents({p.yDim(0), p.yDim(1)}));
      for (int i = 0; i < static_cast<int>(y.size()); ++i) {
        EXPECT_EQ(y[static_cast<std::size_t>(i)],
                  test::medianOf(test::windowAt(p, i % p.yDim(0), i / p.yDim(0)), test::rankBySort<float>, mean))
            << "mode " << mode << ", pad " << pad << ", output " << i;
      }
    }
  }
}

template <class T>
std::vector<T> listed(const Array<T>& array) {
  return std::vector<T>(array.begin(), array.end());
}

TEST(MedianTest, AnObjectIsRunTunedAndMoved) {
  Median<double> first({3}, {2}, {.mode = OutputMode::full, .padValue = 9});
  const std::vector<double> u{1, 2}, v{3, 4};
  EXPECT_THAT(listed(first.run({u, {2}})), ElementsAre(9, 2, 2, 9));
  first.setPadValue(-9);
  EXPECT_THAT(listed(first.run({v, {2}})), ElementsAre(-9, 3, 3, -9));
  Median<double> second(std::move(first));
  EXPECT_THAT(listed(second.run({u, {2}})), ElementsAre(-9, 1, 1, -9));
  EXPECT_THROW(first.run({u, {2}}), std::logic_error);  // NOLINT(bugprone-use-after-move): its use is what is tested
}

TEST(MedianTest, BoolCounts) {
  const bool u[] = {true, false, false, true, true};
  EXPECT_THAT(listed(median(ArrayView<const bool>(u, {5}), {2})), ElementsAre(true, false, true, true));
}

TEST(MedianTest, RefusalsNameArgumentValueAndWhatIsAllowed) {
  constexpr std::int64_t greatest = std::numeric_limits<std::int32_t>::max();
  float memory[16] = {};
  const auto run = [&](const Extents& input, std::size_t outputStart) {
    Median<float>({3}, {6}).run({memory, input}, {memory + outputStart, {4}});
  };
  const std::pair<std::string, std::function<void()>> refusals[] = {
      {"window: extent 0 in dimension 1; allowed are 1 to 2147483647",
       [] {
         Median<float>({3, 0}, {9, 9});
       }},
      {"window: rank 1; it must be that of the input, 2",
       [] {
         Median<float>({3}, {9, 9});
       }},
      {"window: extent 4 in dimension 0; with mode valid and an input of 3, allowed are 1 to 3",
       [] { Median<float>({4}, {3}); }},
      {"window: extent 2147483647 in dimension 0; for an input extent of 3, at most 1073741822 is allowed",
       [] { Median<float>({greatest}, {3}, {.mode = OutputMode::same}); }},
      {"input: rank 3; allowed are 1 and 2",
       [] {
         Median<float>({1}, {2, 2, 2});
       }},
      {"mode: 3; allowed are 0 (valid), 1 (same), 2 (full)", [] { Median<float>({1}, {2}, {.mode = OutputMode{3}}); }},
      {"input: extents 5; they must be 6", [&] { run({5}, 8); }},
      {"output: overlaps the input; the two must not share memory", [&] { run({6}, 5); }},
  };
  for (const auto& [message, call] : refusals) {
    EXPECT_THAT(call, testing::ThrowsMessage<std::invalid_argument>(message));
  }
}

}  // namespace
}  // namespace BP::filters
