// Every vector target gives the bits of the plain loops, through the API for people.
#include <gtest/gtest.h>

#include <algorithm>
#include <complex>
#include <random>
#include <string>
#include <tuple>
#include <vector>

#include "orvane/filters/convolution.h"
#include "orvane/filters/correlation_nd.h"
#include "tests/support/every_target.h"
#include "tests/support/guarded_lines.h"
#include "tests/support/random_values.h"

namespace BP::test {
namespace {

using namespace filters;

/// An extent of a window: mostly small, at times wider than any input here.
int windowExtent(std::mt19937& random) { return pick(random, 1, pick(random, 0, 3) != 0 ? 7 : 45); }

template <class Pair>
struct LanesConformance : testing::Test {
  using UT = std::tuple_element_t<0, Pair>;
  using HT = std::tuple_element_t<1, Pair>;
  using YT = ConvolutionOutput<UT, HT>;

  std::mt19937 random{11};
  GuardedLines memory{2, 32};

  /// Input and output stand against pages that nobody may touch, before or behind them.
  template <class JobT>
  void expectSame(const std::string& problem, JobT& job, const Extents& input, bool special) {
    const auto values = randomValues<UT>(random, static_cast<int>(elementCount(input)), special);
    const bool atEnd = pick(random, 0, 1) != 0;
    UT* const u = memory.template get<UT>(0, values.size(), atEnd);
    std::ranges::copy(values, u);
    const auto count = static_cast<std::size_t>(elementCount(job.outputExtents()));
    expectSameOnEveryTarget<YT>(problem, [&] {
      YT* const y = memory.template get<YT>(1, count, atEnd);
      std::fill_n(y, count, YT(-77));
      job.run(ArrayView<const UT>(u, input), ArrayView<YT>(y, job.outputExtents()));
      return std::vector<YT>(y, y + count);
    });
  }
};

using Pairs =
    testing::Types<std::tuple<float, float>, std::tuple<std::complex<float>, float>,
                   std::tuple<float, std::complex<float>>, std::tuple<std::complex<float>, std::complex<float>>,
                   std::tuple<double, double>, std::tuple<std::complex<double>, double>,
                   std::tuple<double, std::complex<double>>, std::tuple<std::complex<double>, std::complex<double>>>;
TYPED_TEST_SUITE(LanesConformance, Pairs);

TYPED_TEST(LanesConformance, OnePassAndTwoOverRandomGeometry) {
  using In = typename TestFixture::UT;
  using Tap = typename TestFixture::HT;
  auto& engine = this->random;
  constexpr int modes = 3, pads = static_cast<int>(padTypes.size()), choices = modes * pads * 2 * 2;
  for (int round = 0; round < 4 * choices; ++round) {
    const ConvolutionOptions options{.direction = static_cast<FilterDirection>(round / (modes * pads) % 2),
                                     .mode = static_cast<OutputMode>(round % modes),
                                     .pad = {static_cast<PadRule>(round / modes % pads), 0.75},
                                     .normalise = static_cast<Normalisation>(round / (modes * pads * 2) % 2)};
    const Extents input{pick(engine, 1, 40), pick(engine, 1, 30)};
    const bool isValid = options.mode == OutputMode::valid;
    const auto extent = [&](std::size_t d) {
      const int any = windowExtent(engine);
      return isValid ? std::min<std::int64_t>(any, input[d]) : any;
    };
    const Extents filter{extent(0), extent(1)};
    const bool special = pick(engine, 0, 2) == 0;
    const auto taps = randomValues<Tap>(engine, static_cast<int>(elementCount(filter)), special);
    Convolution<In, Tap> job(ArrayView<const Tap>(taps, filter), input, options);
    this->expectSame(textOf(input, filter, options.mode, options.pad.rule), job, input, special);
    if (options.normalise != Normalisation::none) continue;
    SeparableConvolution<In, Tap> passes(ArrayView<const Tap>(taps.data(), {filter[0]}),
                                         ArrayView<const Tap>(taps.data(), {std::min(filter[1], elementCount(filter))}),
                                         input, options);
    this->expectSame("separable, " + textOf(input, filter, options.mode, options.pad.rule), passes, input, special);
  }
}

template <class T>
struct LanesCorrelationND : testing::Test {};
TYPED_TEST_SUITE(LanesCorrelationND, testing::Types<float>);

TYPED_TEST(LanesCorrelationND, RanksOneToFour) {
  std::mt19937 random(12);
  for (int round = 0; round < 240; ++round) {
    const std::size_t rank = static_cast<std::size_t>(1 + round % 4);
    const CorrelationNDOptions options{static_cast<OutputMode>(round / 4 % 3),
                                       {static_cast<PadRule>(round / 12 % 5), 0.75}};
    std::vector<std::int64_t> u, h;
    for (std::size_t d = 0; d < rank; ++d) {
      u.push_back(pick(random, 1, d == 0 ? 40 : 6));
      const int any = pick(random, 1, d == 0 ? 9 : 4);
      h.push_back(options.mode == OutputMode::valid ? std::min<std::int64_t>(any, u[d]) : any);
    }
    const Extents input{std::span<const std::int64_t>(u)}, filter{std::span<const std::int64_t>(h)};
    const auto values = randomValues<TypeParam>(random, static_cast<int>(elementCount(input)), round % 3 == 0);
    const auto taps = randomValues<TypeParam>(random, static_cast<int>(elementCount(filter)), round % 3 == 0);
    CorrelationND<TypeParam> job(ArrayView<const TypeParam>(taps, filter), input, options);
    expectSameOnEveryTarget<TypeParam>(textOf(input, filter, options.mode, options.pad.rule), [&] {
      const Array<TypeParam> output = job.run(ArrayView<const TypeParam>(values, input));
      return std::vector<TypeParam>(output.begin(), output.end());
    });
  }
}

TEST(Lanes, LongRunsManyRowsAndTunedFilters) {
  std::mt19937 random(13);
  const Extents input{1300, 31};
  const auto values = randomValues<float>(random, 1300 * 31);
  for (const Extents& filter : {Extents{5, 4}, Extents{1, 9}, Extents{31, 1}, Extents{1700, 1}}) {
    const auto taps = randomValues<float>(random, static_cast<int>(elementCount(filter)));
    Convolution<float> job(ArrayView<const float>(taps, filter), input,
                           {.mode = OutputMode::same, .pad = PadRule::mirror});
    int runs = 0;
    expectSameOnEveryTarget<float>(toText(filter), [&] {
      std::vector<float> all;
      for (const float scale : {1.0F, -3.0F}) {  // a tuned filter takes effect in the next run
        auto tuned = taps;
        for (float& tap : tuned) tap *= scale;
        job.setFilter(ArrayView<const float>(tuned, filter));
        const auto output = job.run(ArrayView<const float>(values, input));
        all.insert(all.end(), output.begin(), output.end());
        ++runs;
      }
      return all;
    });
    EXPECT_EQ(runs, 2 * static_cast<int>(1 + lanes::getTargets().size()));
  }
}

TEST(Lanes, SeparableFiltersOverManyStripsAndRows) {
  std::mt19937 random(14);
  const Extents input{530, 530};
  const auto values = randomValues<float>(random, 530 * 530);
  const auto first = randomValues<float>(random, 5), second = randomValues<float>(random, 4);
  for (const PadRule pad : {PadRule::constant, PadRule::mirror}) {
    SeparableConvolution<float> job(ArrayView<const float>(first, {5}), ArrayView<const float>(second, {4}), input,
                                    {.mode = OutputMode::same, .pad = {pad, 3}});
    expectSameOnEveryTarget<float>("pad " + std::to_string(static_cast<int>(pad)), [&] {
      const auto output = job.run(ArrayView<const float>(values, input));
      return std::vector<float>(output.begin(), output.end());
    });
  }
}

}  // namespace
}  // namespace BP::test
