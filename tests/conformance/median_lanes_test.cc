// Medians of every vector target have the bits of the plain selection, through the API for people.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "orvane/filters/fixed_median.h"
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
    Median<T> job(window, input, {mode, {pad, content == Content::few ? -0.0 : std::is_same_v<T, bool> ? 1 : 0.75}});
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
  auto& engine = this->random;
  for (int round = 0; round < 150; ++round) {
    const auto mode = static_cast<OutputMode>(round % 3);
    const auto pad = static_cast<PadRule>(round / 3 % static_cast<int>(padTypes.size()));
    const Extents input{pick(engine, 1, 90), pick(engine, 1, 60)};
    const int most = round % 15 == 0 ? 40 : 9;
    const auto extent = [&](std::size_t d) {
      const int any = pick(engine, 1, most);
      return mode == OutputMode::valid ? std::min<std::int64_t>(any, input[d]) : any;
    };
    const std::int64_t width = extent(0), height = round % 2 == 0 ? std::min(width, input[1]) : extent(1);
    this->expectSame({width, height}, input, mode, pad, static_cast<Content>(pick(engine, 0, 3)));
    if (this->HasFatalFailure()) return;
  }
}

TYPED_TEST(MedianLanes, ManyStripsAndRows) {
  const Extents input{560, 140};
  for (const std::int64_t side : {2, 3, 5, 7, 9, 12, 15}) {
    const Content content = side % 2 == 0 ? Content::fewWithNaN : Content::distinct;
    this->expectSame({side, side}, input, OutputMode::same, PadRule::mirror, content);
    if (this->HasFatalFailure()) return;
  }
  this->expectSame({31, 25}, {300, 40}, OutputMode::same, PadRule::replicate, Content::distinct);
  this->expectSame({101, 83}, {110, 30}, OutputMode::same, PadRule::circular, Content::distinct);
}

/// Raw outputs and, behind them, the statistics of all labels.
std::vector<double> outputsAndStatistics(FixedMedian& job, const FixedArray& input) {
  const FixedArray output = job.run(input);
  const auto* const bytes = static_cast<const unsigned char*>(output.data());
  const std::int64_t size = elementCount(output.extents()) * (output.type().word > 8 ? 2 : 1);
  std::vector<double> all(bytes, bytes + size);
  for (const FixedStatistics& s : job.statistics()) {
    for (const double x : {double(s.casts), double(s.overflows), double(s.lossy), s.minimum, s.maximum})
      all.push_back(x);
  }
  return all;
}

/// Types that fill their container and others, accumulators and outputs that hold all values and others.
TEST(FixedMedianLanes, OutputsAndStatistics) {
  std::mt19937 random(22);
  for (int round = 0; round < 80; ++round) {
    const FixedType type{pick(random, 0, 3) == 0   ? pick(random, 6, 16)
                         : pick(random, 0, 1) == 0 ? 8
                                                   : 16,
                         pick(random, -3, 9), pick(random, 0, 1) == 0};
    FixedMedianTypes types{.input = type, .modes = {.overflow = static_cast<Overflow>(pick(random, 0, 3))}};
    if (pick(random, 0, 4) == 0) types.accumulator = FixedType{type.word, type.fraction + pick(random, -1, 1), true};
    if (pick(random, 0, 4) == 0) types.output = FixedType{type.word, type.fraction + 1, type.isSigned};
    const Extents input{pick(random, 1, 200), pick(random, 1, 30)};
    const auto mode = static_cast<OutputMode>(pick(random, 1, 2));
    const auto pad = static_cast<PadRule>(pick(random, 0, static_cast<int>(padTypes.size()) - 1));
    const int side = 2 * pick(random, 0, 5) + 1;
    const Extents window{side, pick(random, 0, 1) == 0 ? side : pick(random, 1, 9)};
    FixedArray u(input, type);
    auto* const bytes = static_cast<unsigned char*>(u.data());
    const std::int64_t size = elementCount(input) * (type.word > 8 ? 2 : 1);
    std::generate_n(bytes, size, [&] { return static_cast<unsigned char>(pick(random, 0, 255)); });
    expectSameOnEveryTarget<double>(textOf(input, window, mode, pad) + ", type " + toText(type), [&] {
      FixedMedian job(window, input, types, {.mode = mode, .pad = {pad, std::ldexp(3, -type.fraction)}});
      return outputsAndStatistics(job, u);
    });
    if (testing::Test::HasFatalFailure()) return;
  }
}

}  // namespace
}  // namespace BP::test
