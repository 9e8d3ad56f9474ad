// Metrics whose products are divided by norms, locations between positions, and several matches of one template.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <vector>

#include "orvane/orvane.h"
#include "tests/support/every_target.h"
#include "tests/support/refusal.h"

namespace BP::filters {
namespace {

using test::pick;

template <class T>
struct NormalisedMatch : testing::Test {
  std::mt19937 random{23};

  /// The stated formula, element by element.
  static T score(const Array<T>& image, const Array<T>& pattern, Metric metric, std::int64_t x, std::int64_t y) {
    const std::int64_t width = pattern.extents()[0], height = pattern.extents()[1];
    const auto at = [&](std::int64_t n) {
      return image[static_cast<std::size_t>(x + n % width + image.extents()[0] * (y + n / width))];
    };
    T aMean = 0, tMean = 0, sum = 0, aEnergy = 0, tEnergy = 0;
    if (metric == Metric::correlationCoefficient) {
      for (std::int64_t n = 0; n < width * height; ++n) aMean += at(n), tMean += pattern[static_cast<std::size_t>(n)];
      aMean /= T(width * height), tMean /= T(width * height);
    }
    for (std::int64_t n = 0; n < width * height; ++n) {
      const bool isPlain = metric == Metric::cosine;
      const T a = isPlain ? at(n) : at(n) - aMean;
      const T t = isPlain ? pattern[static_cast<std::size_t>(n)] : pattern[static_cast<std::size_t>(n)] - tMean;
      sum += a * t, aEnergy += a * a, tEnergy += t * t;
    }
    const T divisor = std::sqrt(aEnergy) * std::sqrt(tEnergy);
    return divisor == 0 ? 0 : sum / divisor;
  }

  Array<T> randomArray(const Extents& extents, bool special = false) {
    const auto values = test::randomValues<T>(random, static_cast<int>(elementCount(extents)), special);
    Array<T> array(extents);
    std::ranges::copy(values, array.begin());
    return array;
  }
};
using RealTypes = testing::Types<float, double>;
TYPED_TEST_SUITE(NormalisedMatch, RealTypes);

TYPED_TEST(NormalisedMatch, MapBestAndBlockOverRandomGeometryOnEveryTarget) {
  using T = TypeParam;
  for (int round = 0; round < 240 && !this->HasFailure(); ++round) {
    const Extents extents{pick(this->random, 1, 60), pick(this->random, 1, 40)};
    const Extents window{pick(this->random, 1, 9), pick(this->random, 1, 9)};
    MatchOptions options{.metric = round % 2 ? Metric::cosine : Metric::correlationCoefficient,
                         .mode = static_cast<OutputMode>(round / 2 % 3),
                         .neighbourhood = round % 5,
                         .map = round % 3 > 0};
    if (options.mode == OutputMode::valid && (window[0] > extents[0] || window[1] > extents[1])) continue;
    if (round % 4 == 0) {
      options.region = Rectangle{pick(this->random, -4, 20), pick(this->random, -4, 20), pick(this->random, 0, 60), 30};
    }
    const Array<T> image = this->randomArray(extents, round % 7 == 0), pattern = this->randomArray(window);
    TemplateMatcher<T> matcher(pattern, extents, options);
    const Rectangle p = matcher.positions();
    const auto expectedAt = [&](std::int64_t px, std::int64_t py) {
      const std::int64_t x = px - (window[0] - 1) / 2, y = py - (window[1] - 1) / 2;
      const bool isInside = x >= 0 && y >= 0 && x + window[0] <= extents[0] && y + window[1] <= extents[1];
      return std::pair(isInside, isInside ? this->score(image, pattern, options.metric, x, y) : T(0));
    };
    test::expectSameOnEveryTarget<T>("round " + std::to_string(round), [&] {
      const Match<T> match = matcher.run(image);
      EXPECT_EQ(match.found, !p.isEmpty());
      std::vector<T> scores(match.map.begin(), match.map.end());
      if (!match.found) return scores;
      T best = 0;
      std::array<std::int64_t, 2> location{-1000, -1000};
      for (const bool inside : {true, false}) {  // those at an edge come last
        for (std::int64_t i = 0; i < p.width * p.height; ++i) {
          const std::int64_t px = p.x + i % p.width, py = p.y + i / p.width;
          const auto [isInside, expected] = expectedAt(px, py);
          if (isInside != inside) continue;
          if (options.map) {
            EXPECT_TRUE(test::sameBits(match.map[static_cast<std::size_t>(i)], expected)) << i;
          }
          if (location[0] == -1000 || expected > best || (std::isnan(best) && !std::isnan(expected))) {
            best = expected;
            location = {px, py};
          }
        }
      }
      EXPECT_TRUE(test::sameBits(match.score, best)) << match.score << " for " << best;
      EXPECT_EQ(match.location, location);
      for (std::size_t n = 0; n < match.neighbourhood.size(); ++n) {
        const std::int64_t edge = options.neighbourhood, i = static_cast<std::int64_t>(n);
        const std::int64_t bx = match.location[0] - (edge - 1) / 2 + i % edge;
        const std::int64_t by = match.location[1] - (edge - 1) / 2 + i / edge;
        EXPECT_TRUE(test::sameBits(match.neighbourhood[n], expectedAt(bx, by).second)) << "block " << n;
      }
      scores.push_back(match.score);
      scores.push_back(static_cast<T>(match.location[0] + 1000 * match.location[1]));
      return scores;
    });
  }
}

/// A patch is found again in a picture that is brighter and of less contrast; a flat window has no direction.
TYPED_TEST(NormalisedMatch, BrightnessAndContrastDoNotMatter) {
  using T = TypeParam;
  Array<T> image({40, 30});
  for (T& pixel : image) pixel = T(pick(this->random, 0, 255));
  Array<T> patch({6, 5}), flat({6, 5});
  for (std::size_t n = 0; n < patch.size(); ++n) {
    patch[n] = image[static_cast<std::size_t>(17 + n % 6 + 40 * (9 + n / 6))] * T(0.25) + 90;
    flat[n] = 7;
  }
  const auto match = matchTemplate(image, patch, {.metric = Metric::correlationCoefficient});
  EXPECT_EQ(match.window, (Rectangle{17, 9, 6, 5}));
  EXPECT_NEAR(match.score, 1, 1e-5);
  EXPECT_NE(matchTemplate(image, patch, {.metric = Metric::cosine}).score, match.score);
  EXPECT_EQ(matchTemplate(image, flat, {.metric = Metric::correlationCoefficient}).score, 0);
  EXPECT_EQ(matchTemplate(Array<T>({9, 9}), patch, {.metric = Metric::cosine, .map = true}).score, 0);
}

/// A smooth hill at a known place between pixels.
Array<double> hill(double x, double y) {
  Array<double> image({40, 30});
  for (std::size_t n = 0; n < image.size(); ++n) {
    const double dx = static_cast<double>(n % 40) - x, dy = static_cast<double>(n / 40) - y;
    image[n] = std::exp(-(dx * dx + dy * dy) / 18);
  }
  return image;
}

TEST(RefineTest, TheBestMatchLiesBetweenPositions) {
  Array<double> pattern({11, 11});
  const Array<double> whole = hill(20, 15);
  for (std::size_t n = 0; n < pattern.size(); ++n) pattern[n] = whole[15 + n % 11 + 40 * (10 + n / 11)];
  for (const Metric metric : {Metric::ssd, Metric::sad, Metric::cosine, Metric::correlationCoefficient}) {
    const double error = metric == Metric::sad ? 0.2 : 0.02;  // no parabola at the tip of absolute values
    const auto match = matchTemplate(hill(18.3, 14.8), pattern, {.metric = metric, .refine = true});
    EXPECT_NEAR(match.refined[0], 18.3, error);
    EXPECT_NEAR(match.refined[1], 14.8, error);
    const auto edge = matchTemplate(hill(3, 14.8), pattern, {.metric = metric, .refine = true});
    EXPECT_EQ(edge.refined[0], static_cast<double>(edge.location[0])) << "no neighbour on one side";
    const auto peaks = matches(hill(18.3, 14.8), pattern, {.count = 1, .refine = true}, {.metric = metric});
    EXPECT_EQ(peaks.at(0).refined, match.refined);
    EXPECT_EQ(peaks.at(0).window, match.window);
  }
  EXPECT_REFUSAL("neighbourhood: 2; to refine, it must be 0 or at least 3",
                 TemplateMatcher<double>(pattern, {40, 30}, {.neighbourhood = 2, .refine = true}));
  EXPECT_REFUSAL("search: 1 (three-step); with this metric only 0 (exhaustive) is allowed",
                 TemplateMatcher<double>(pattern, {40, 30}, {.metric = Metric::cosine, .search = Search::threeStep}));
}

TEST(MatchesTest, GreedyByScoreThenOrderAndApart) {
  const float nan = std::numeric_limits<float>::quiet_NaN();
  const std::vector<float> scores{5,   1, 1, 9,  //
                                  4,   1, 2, 1,  //
                                  nan, 6, 1, 3};
  Match<float> match;
  match.map = Array<float>({4, 3});
  std::ranges::copy(scores, match.map.begin());
  match.positions = {10, 20, 4, 3};
  const auto placesOf = [&](const PeakOptions& options) {
    std::vector<std::pair<std::int64_t, std::int64_t>> places;
    for (const auto& peak : matches(match, options)) places.emplace_back(peak.location[0] - 10, peak.location[1] - 20);
    return places;
  };
  using testing::ElementsAre, testing::Pair;
  EXPECT_THAT(placesOf({.count = 3}), ElementsAre(Pair(1, 0), Pair(2, 0), Pair(1, 1)));
  EXPECT_THAT(placesOf({.count = 9, .distance = 2}), ElementsAre(Pair(1, 0), Pair(3, 1), Pair(1, 2)));
  EXPECT_THAT(placesOf({.count = 99, .distance = 0}), testing::SizeIs(11));
  match.metric = Metric::cosine;
  EXPECT_THAT(placesOf({.count = 3, .distance = 1.5}), ElementsAre(Pair(3, 0), Pair(1, 2), Pair(0, 0)));
  EXPECT_REFUSAL("count: 0; it must be at least 1", matches(match, {.count = 0}));
  match.map = {};
  EXPECT_REFUSAL("match: no map; its options must say map = true", matches(match, {}));
}

}  // namespace
}  // namespace BP::filters
