// Integers as inputs and as outputs: the bits of a converted copy, on every target and by the plain loop.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <tuple>
#include <vector>

#include "orvane/orvane.h"
#include "tests/support/every_target.h"

namespace BP::filters {
namespace {

using test::pick;

template <class PairT>
struct IntegerElements : testing::Test {
  using Input = std::tuple_element_t<0, PairT>;
  using Tap = std::tuple_element_t<1, PairT>;
  using Real = RealOf<Tap>;
  std::mt19937 random{31};

  /// A part of a larger array: its lines have gaps.
  Array<Input> memory;
  ArrayView<const Input> randomImage(const Extents& extents) {
    memory = Array<Input>({extents[0] + 5, extents[1] + 2});
    std::uniform_int_distribution<std::int64_t> any(std::numeric_limits<Input>::min(),
                                                    std::numeric_limits<Input>::max());
    for (Input& value : memory) value = static_cast<Input>(any(random));
    return std::as_const(memory).view().subview({3, 1}, extents);
  }
  Array<Tap> randomFilter(const Extents& extents) {
    const auto values = test::randomValues<Tap>(random, static_cast<int>(elementCount(extents)));
    Array<Tap> filter(extents);
    std::ranges::copy(values, filter.begin());
    return filter;
  }

  /// Jobs over integers and over their converted copy, and outputs of integers rounded from those.
  template <class Job, class CopyJob>
  void expectSame(const std::string& problem, Job& job, CopyJob& copyJob, const ArrayView<const Input>& image) {
    using Y = typename Job::Output;
    const Array<Real> copy = converted<Real>(image);
    test::expectSameOnEveryTarget<Y>(problem, [&] {
      const Array<Y> expected = copyJob.run(copy), found = job.run(image);
      EXPECT_TRUE(std::ranges::equal(expected, found, [](Y a, Y b) { return test::sameBits(a, b); })) << problem;
      if constexpr (std::is_floating_point_v<Y>) {
        expectRounded<std::uint8_t>(job, image, expected);
        expectRounded<std::int16_t>(job, image, expected);
        expectRounded<std::int32_t>(job, image, expected);
      }
      return std::vector<Y>(found.begin(), found.end());
    });
  }

  template <class Y, class Job, class Exact>
  void expectRounded(Job& job, const ArrayView<const Input>& image, const Array<Exact>& exact) {
    Array<Y> rounded(exact.extents());
    const std::int64_t clipped = job.runRounded(image, rounded);
    std::int64_t expected = 0;
    for (std::size_t i = 0; i < exact.size(); ++i) {
      const double whole = std::nearbyint(static_cast<double>(exact[i]));
      const double kept = std::clamp<double>(whole, std::numeric_limits<Y>::min(), std::numeric_limits<Y>::max());
      expected += kept != whole ? 1 : 0;
      ASSERT_EQ(rounded[i], static_cast<Y>(kept)) << exact[i];
    }
    EXPECT_EQ(clipped, expected);
  }
};
using Pairs = testing::Types<std::tuple<std::uint8_t, float>, std::tuple<std::int8_t, double>,
                             std::tuple<std::int16_t, float>, std::tuple<std::uint16_t, std::complex<float>>,
                             std::tuple<std::int32_t, double>, std::tuple<std::uint32_t, double>>;
TYPED_TEST_SUITE(IntegerElements, Pairs);

TYPED_TEST(IntegerElements, FiltersHaveTheBitsOfAConvertedCopy) {
  using U = typename TestFixture::Input;
  using H = typename TestFixture::Tap;
  using Computed = typename TestFixture::Real;
  for (int round = 0; round < 36 && !this->HasFailure(); ++round) {
    const Extents image{pick(this->random, 1, round % 9 == 0 ? 1100 : 60), pick(this->random, 1, 60)};
    Extents window{pick(this->random, 1, 9), pick(this->random, 1, 9)};
    const ConvolutionOptions options{.direction = static_cast<FilterDirection>(round % 2),
                                     .mode = static_cast<OutputMode>(round / 2 % 3),
                                     .pad = {static_cast<PadRule>(round / 6 % 5), 0.5}};
    if (options.mode == OutputMode::valid && (window[0] > image[0] || window[1] > image[1])) window = {1, 1};
    ConvolutionOptions once = options;
    once.normalise = static_cast<Normalisation>(round % 4 == 3);
    const Array<H> filter = this->randomFilter(window);
    const auto from = this->randomImage(image);
    const std::string problem = test::textOf(image, window, options.mode, options.pad.rule);
    Convolution<U, H> job(filter, image, once);
    Convolution<Computed, H> copyJob(filter, image, once);
    this->expectSame(problem, job, copyJob, from);
    const ArrayView<const H> across(filter.data(), {window[0]}), down(filter.data(), {window[1]});
    SeparableConvolution<U, H> passes(across, down, image, options);
    SeparableConvolution<Computed, H> copyPasses(across, down, image, options);
    this->expectSame("separable, " + problem, passes, copyPasses, from);
  }
}

/// Maps, best matches of every metric and their blocks; correlations of volumes.
TYPED_TEST(IntegerElements, MatchesAndVolumesHaveTheBitsOfAConvertedCopy) {
  using U = typename TestFixture::Input;
  using Computed = typename TestFixture::Real;
  for (int round = 0; round < 36 && !this->HasFailure(); ++round) {
    const Extents image{pick(this->random, 9, 80), pick(this->random, 9, 50)};
    const auto from = this->randomImage(image);
    const Array<Computed> copy = converted<Computed>(from);
    Array<Computed> pattern({pick(this->random, 1, 9), pick(this->random, 1, 9)});
    for (Computed& t : pattern) t = copy[static_cast<std::size_t>(pick(this->random, 0, 80))];
    const MatchOptions options{.metric = static_cast<Metric>(round % 6),
                               .mode = static_cast<OutputMode>(round / 6 % 3),
                               .neighbourhood = 3,
                               .best = round % 4 != 3,
                               .map = round % 4 != 0};
    MatchOptions asked = options;
    if (!asked.best) asked.neighbourhood = 0;
    TemplateMatcher<U, Computed> job(pattern, image, asked);
    TemplateMatcher<Computed> copyJob(pattern, image, asked);
    test::expectSameOnEveryTarget<Computed>("round " + std::to_string(round), [&] {
      const auto expected = copyJob.run(copy), found = job.run(from);
      EXPECT_EQ(found.location, expected.location);
      std::vector<Computed> scores{found.score}, wanted{expected.score};
      for (const auto* block : {&found.map, &found.neighbourhood})
        scores.insert(scores.end(), block->begin(), block->end());
      for (const auto* block : {&expected.map, &expected.neighbourhood}) {
        wanted.insert(wanted.end(), block->begin(), block->end());
      }
      EXPECT_TRUE(std::ranges::equal(scores, wanted, [](Computed a, Computed b) { return test::sameBits(a, b); }));
      return scores;
    });
    const Extents volume{image[0], 3, 3}, window{pick(this->random, 1, 5), 2, 3};
    const ArrayView<const U> slices(this->memory.data(), volume);
    const auto taps = test::randomValues<Computed>(this->random, static_cast<int>(elementCount(window)));
    const ArrayView<const Computed> filter(taps, window);
    CorrelationND<Computed, U> stack(filter, volume, {.pad = static_cast<PadRule>(round % 5)});
    test::expectSameOnEveryTarget<Computed>("volume", [&] {
      const auto found = stack.run(slices);
      const auto expected = correlateND(converted<Computed>(slices), filter, {.pad = static_cast<PadRule>(round % 5)});
      EXPECT_TRUE(std::ranges::equal(found, expected));
      this->template expectRounded<std::uint16_t>(stack, slices, expected);
      return std::vector<Computed>(found.begin(), found.end());
    });
  }
}

/// Of the whole range, also where the sum of two values exceeds it.
TYPED_TEST(IntegerElements, MediansAreThoseOfDoubleRoundedToEven) {
  using U = typename TestFixture::Input;
  for (int round = 0; round < 20; ++round) {
    const Extents image{pick(this->random, 1, 40), pick(this->random, 1, 20)};
    const Extents window{pick(this->random, 1, 5), pick(this->random, 1, 4)};
    const auto from = this->randomImage(image);
    const MedianOptions options{.mode = round % 2 ? OutputMode::full : OutputMode::same,
                                .pad = {static_cast<PadRule>(round % 5), 7}};
    const Array<U> found = median(from, window, options);
    const Array<double> exact = median(converted<double>(from), window, options);
    for (std::size_t i = 0; i < exact.size(); ++i) ASSERT_EQ(found[i], static_cast<U>(std::nearbyint(exact[i])));
  }
}

TEST(RoundingTest, TiesGoToEvenAndTheRangeIsClosed) {
  const float nan = std::numeric_limits<float>::quiet_NaN(), infinity = std::numeric_limits<float>::infinity();
  const std::vector<float> values{-0.5F,   -0.51F, 0.5F, 1.5F,     2.5F,      254.5F,
                                  255.49F, 255.5F, nan,  infinity, -infinity, 7};
  const std::vector<std::uint8_t> expected{0, 0, 0, 2, 2, 254, 255, 255, 0, 255, 0, 7};
  for (const std::string_view target :
       {std::string_view("plain"), lanes::getTargets().front(), std::string_view("scalar")}) {
    ASSERT_TRUE(lanes::forceTarget(target));
    Array<std::uint8_t> rounded({12});
    EXPECT_EQ(convolveInto(ArrayView(values, {12}), Array<float>({1}, {1.0F}), rounded), 5) << target;
    EXPECT_TRUE(std::ranges::equal(rounded, expected)) << target;
  }
  lanes::forceTarget("");
}

}  // namespace
}  // namespace BP::filters
