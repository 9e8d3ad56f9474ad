// Fixed-point sums in vector lanes: values and statistics of the plain loops on every target, on every path.
#include <gtest/gtest.h>

#include <cstring>
#include <map>
#include <random>
#include <string>
#include <vector>

#include "orvane/filters/fixed_convolution.h"
#include "orvane/lanes/target.h"
#include "tests/support/choices.h"
#include "tests/support/fixed_model.h"
#include "tests/support/near_types.h"

namespace BP::test {
namespace {

using namespace filters;

struct Outcome {
  std::vector<std::byte> bytes;
  std::vector<FixedStatistics> statistics;
};

void expectSame(const Outcome& found, const Outcome& wanted) {
  ASSERT_TRUE(found.bytes == wanted.bytes);
  ASSERT_EQ(found.statistics.size(), wanted.statistics.size());
  for (std::size_t i = 0; i < found.statistics.size(); ++i) {
    const FixedStatistics &f = found.statistics[i], &w = wanted.statistics[i];
    EXPECT_EQ(f.label, w.label);
    EXPECT_EQ(f.casts, w.casts) << f.label;
    EXPECT_EQ(f.overflows, w.overflows) << f.label;
    EXPECT_EQ(f.lossy, w.lossy) << f.label;
    EXPECT_EQ(f.minimum, w.minimum) << f.label;
    EXPECT_EQ(f.maximum, w.maximum) << f.label;
  }
}

TEST(FixedLanes, ValuesAndStatisticsOfThePlainLoopOnEveryPath) {
  std::mt19937 random(17);
  std::map<FixedPath, int> taken;
  for (int round = 0; round < 900 && !testing::Test::HasFatalFailure(); ++round) {
    const Extents input{pick(random, 1, round % 3 == 0 ? 200 : 60), pick(random, 1, 40)};
    const ConvolutionOptions options{.direction = static_cast<FilterDirection>(round % 2),
                                     .mode = static_cast<OutputMode>(round / 2 % 3),
                                     .pad = static_cast<PadRule>(round / 6 % 5)};
    const auto extent = [&](std::size_t d) {
      const int any = pick(random, 1, pick(random, 0, 3) ? 5 : 12);
      return options.mode == OutputMode::valid ? std::min<std::int64_t>(any, input[d]) : any;
    };
    const FixedType filterType = randomType(random, 2, pick(random, 0, 4) == 0 ? 34 : pick(random, 4, 16));
    const FixedArray filter = randomFixed(random, {extent(0), extent(1)}, filterType);
    const FixedTypes types = typesNear(random, filterType, static_cast<int>(elementCount(filter.extents())));
    const FixedArray image = randomFixed(random, input, types.input);
    FixedPath path{};
    const auto compute = [&] {
      FixedConvolution job(filter, input, types, options);
      path = job.path();
      const FixedArray output = job.run(image);
      const auto* const data = static_cast<const std::byte*>(output.data());
      const auto count = static_cast<std::size_t>(elementCount(output.extents()));
      const std::size_t bytes =
          count * static_cast<std::size_t>(detail::checkedContainerBits("output", types.output)) / 8;
      return Outcome{{data, data + bytes}, job.statistics()};
    };
    ASSERT_TRUE(lanes::forceTarget(lanes::plain));
    const Outcome wanted = compute();
    for (const std::string_view target : lanes::getTargets()) {
      ASSERT_TRUE(lanes::forceTarget(target));
      SCOPED_TRACE(testing::Message() << "round " << round << " on " << target << ", path " << int(path) << ", "
                                      << toText(types.input) << " * " << toText(filterType) << " -> "
                                      << (types.product ? toText(*types.product) : "exact") << " -> "
                                      << toText(types.accumulator) << " -> " << toText(types.output) << ", filter "
                                      << toText(filter.extents()) << ", input " << toText(input));
      expectSame(compute(), wanted);
    }
    ++taken[path];
  }
  lanes::forceTarget("");
  for (const FixedPath path : {FixedPath::exact, FixedPath::roundedProducts, FixedPath::checkedSums,
                               FixedPath::generalCasts, FixedPath::singleValues}) {
    EXPECT_GE(taken[path], 10) << describe(path);
  }
}

/// Values and types at the ends of what lanes hold, in memory of any alignment.
TEST(FixedLanes, EndsOfLanesAndOddAddresses) {
  struct Types {
    const char *input, *filter, *product, *accumulator, *output;
  };
  std::mt19937 random(18);
  for (const Types& t : {Types{"s32.0", "s2.0", "s34.0", "s40.0", "s40.0"},
                         {"s3.36", "u4.-1", "s3.29", "s32.63", "s39.52"},
                         {"s16.0", "s8.0", "s24.0", "s32.0", "s16.0"},
                         {"u16.0", "u16.0", "u32.0", "u32.0", "u8.-24"}}) {
    const FixedArray image = randomFixed(random, {40, 9}, fixedType(t.input));
    const FixedArray filter = randomFixed(random, {3, 3}, fixedType(t.filter));
    const FixedTypes types{.input = image.type(),
                           .accumulator = fixedType(t.accumulator),
                           .output = fixedType(t.output),
                           .product = fixedType(t.product)};
    std::vector<std::byte> shifted(detail::bytesOf(image.extents(), image.type(), false) + 1);
    std::memcpy(shifted.data() + 1, image.data(), shifted.size() - 1);
    const auto compute = [&](const void* data) {
      FixedConvolution job(filter, image.extents(), types, {.mode = OutputMode::same});
      const FixedArray output = job.run(FixedView(data, image.extents(), image.type()));
      const auto* const first = static_cast<const std::byte*>(output.data());
      return Outcome{{first, first + detail::bytesOf(output.extents(), output.type(), false)}, job.statistics()};
    };
    ASSERT_TRUE(lanes::forceTarget(lanes::plain));
    const Outcome wanted = compute(image.data());
    for (const std::string_view target : lanes::getTargets()) {
      SCOPED_TRACE(testing::Message() << t.input << " on " << target);
      ASSERT_TRUE(lanes::forceTarget(target));
      expectSame(compute(image.data()), wanted);
      expectSame(compute(shifted.data() + 1), wanted);
    }
    lanes::forceTarget("");
  }
}

/// Lines of several strips, of each width of operands.
TEST(FixedLanes, WideLines) {
  std::mt19937 random(19);
  for (const char* type : {"u8.0", "s8.0", "s16.0", "s24.0"}) {
    for (const PadRule rule : {PadRule::constant, PadRule::mirror}) {
      const FixedArray image = randomFixed(random, {2100, 5}, fixedType(type));
      const FixedArray filter = randomFixed(random, {9, 3}, fixedType("s8.0"));
      FixedTypes types{.input = image.type(), .accumulator = fixedType("s40.0"), .output = fixedType("s9.-8")};
      types.modes.gathering = Gathering::counts;
      const auto compute = [&] {
        FixedConvolution job(filter, image.extents(), types, {.mode = OutputMode::full, .pad = rule});
        const FixedArray output = job.run(image);
        const auto* const first = static_cast<const std::byte*>(output.data());
        return Outcome{{first, first + detail::bytesOf(output.extents(), output.type(), false)}, job.statistics()};
      };
      ASSERT_TRUE(lanes::forceTarget(lanes::plain));
      const Outcome wanted = compute();
      for (const std::string_view target : lanes::getTargets()) {
        SCOPED_TRACE(testing::Message() << type << " on " << target);
        ASSERT_TRUE(lanes::forceTarget(target));
        expectSame(compute(), wanted);
      }
    }
  }
  lanes::forceTarget("");
}

}  // namespace
}  // namespace BP::test
