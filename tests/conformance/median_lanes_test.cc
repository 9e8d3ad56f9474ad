// Medians of every vector target have the bits of the plain selection, through the API for people.
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

#include "orvane/filters/median.h"
#include "tests/support/every_target.h"
#include "tests/support/guarded_lines.h"
#include "tests/support/random_values.h"

namespace BP::test {
namespace {

using namespace filters;

/// What pictures are made of: values that are all different, few different ones of both signs and zeros of both, the
/// same with NaN, and special values everywhere.
enum class Content { distinct, few, fewWithNaN, special };

template <class T>
T valueOf(std::mt19937& random, Content content) {
  if constexpr (std::is_same_v<T, bool>) {
    return pick(random, 0, 1) != 0;
  } else {
    const int any = pick(random, 0, 40);
    if (content == Content::distinct || content == Content::special) {
      return RandomValue<T>::of(random, content == Content::special);
    }
    if (content == Content::fewWithNaN && any == 0) return std::numeric_limits<T>::quiet_NaN();
    return any < 12 ? T(0) : any < 24 ? -T(0) : T(pick(random, -2, 2)) * std::numeric_limits<T>::denorm_min();
  }
}

template <class T>
struct MedianLanes : testing::Test {
  std::mt19937 random{21};
  GuardedLines memory{2, 1024};

  /// Input and output stand against pages that nobody may touch, before or behind them.
  void expectSame(const Extents& window, const Extents& input, OutputMode mode, PadRule pad, Content content) {
    Median<T> job(window, input, {mode, pad, T(0.75)});
    const bool atEnd = pick(random, 0, 1) != 0;
    const auto size = static_cast<std::size_t>(elementCount(input));
    const auto count = static_cast<std::size_t>(elementCount(job.outputExtents()));
    T* const u = memory.template get<T>(0, size, atEnd);
    std::generate_n(u, size, [&] { return valueOf<T>(random, content); });
    const std::string problem = textOf(input, window, mode, pad) + ", content " + std::to_string(int(content));
    expectSameOnEveryTarget<T>(problem, [&] {
      T* const y = memory.template get<T>(1, count, atEnd);
      std::fill_n(y, count, T(-77));
      job.run(ArrayView<const T>(u, input), ArrayView<T>(y, job.outputExtents()));
      return std::vector<T>(y, y + count);
    });
  }
};
using Elements = testing::Types<float, double, bool>;
TYPED_TEST_SUITE(MedianLanes, Elements);

TYPED_TEST(MedianLanes, RandomGeometry) {
  auto& random = this->random;
  for (int round = 0; round < 1200; ++round) {
    const auto mode = static_cast<OutputMode>(round % 3);
    const auto pad = static_cast<PadRule>(round / 3 % static_cast<int>(padTypes.size()));
    const Extents input{pick(random, 1, 90), pick(random, 1, 60)};
    const int most = round % 7 == 0 ? 60 : 9;
    const auto extent = [&](std::size_t d) {
      const int any = pick(random, 1, most);
      return mode == OutputMode::valid ? std::min<std::int64_t>(any, input[d]) : any;
    };
    const std::int64_t width = extent(0), height = round % 2 == 0 ? std::min(width, input[1]) : extent(1);
    this->expectSame({width, height}, input, mode, pad, static_cast<Content>(pick(random, 0, 3)));
    if (this->HasFatalFailure()) return;
  }
}

TYPED_TEST(MedianLanes, ManyStripsAndRows) {
  const Extents input{1100, 300};
  for (const std::int64_t side : {2, 3, 5, 7, 9, 12, 15}) {
    for (const Content content : {Content::distinct, Content::fewWithNaN}) {
      this->expectSame({side, side}, input, OutputMode::same, PadRule::mirror, content);
      if (this->HasFatalFailure()) return;
    }
  }
  this->expectSame({31, 25}, input, OutputMode::same, PadRule::replicate, Content::distinct);
  this->expectSame({101, 83}, {300, 160}, OutputMode::same, PadRule::circular, Content::distinct);
}

}  // namespace
}  // namespace BP::test
