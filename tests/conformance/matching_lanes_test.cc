// Every vector target gives the matches of the plain loops, bit by bit, through the API for people.
#include <gtest/gtest.h>

#include <algorithm>
#include <complex>
#include <random>
#include <string>
#include <tuple>
#include <vector>

#include "orvane/filters/fixed_template_matcher.h"
#include "orvane/filters/template_matcher.h"
#include "orvane/lanes/target.h"
#include "tests/support/guarded_lines.h"
#include "tests/support/random_values.h"

namespace BP::test {
namespace {

using namespace filters;

template <class T>
bool isSame(const T& a, const T& b) {
  if constexpr (std::is_same_v<T, std::int32_t>) {
    return a == b;
  } else {
    return sameBits(a, b);
  }
}

template <class T>
bool sameScores(const Array<T>& a, const Array<T>& b) {
  return std::ranges::equal(a, b, isSame<T>);
}

template <class Score>
void expectSame(const Match<Score>& expected, const Match<Score>& found, const std::string& problem) {
  ASSERT_EQ(expected.found, found.found) << problem;
  ASSERT_EQ(expected.location, found.location) << problem;
  ASSERT_TRUE(isSame(expected.score, found.score)) << problem << expected.score << " " << found.score;
  ASSERT_EQ(expected.neighbourhoodValid, found.neighbourhoodValid) << problem;
  ASSERT_TRUE(sameScores(expected.neighbourhood, found.neighbourhood)) << problem << "neighbourhood";
  ASSERT_TRUE(sameScores(expected.map, found.map)) << problem << "map";
}

/// What elements are drawn from.
enum class Values {
  wide,     ///< many magnitudes
  special,  ///< NaN, infinities and zeros of both signs among them
  few       ///< a few whole numbers, so that scores are often equal
};

template <class T>
std::vector<T> valuesOf(std::mt19937& random, std::int64_t count, Values values) {
  std::vector<T> result;
  for (std::int64_t i = 0; i < count; ++i) {
    if constexpr (std::is_same_v<T, bool>) {
      result.push_back(pick(random, 0, 2) == 0);
    } else if (values == Values::few) {
      result.push_back(T(static_cast<float>(pick(random, 0, 2))));
    } else {
      result.push_back(RandomValue<T>::of(random, values == Values::special && pick(random, 0, 20) == 0));
    }
  }
  return result;
}

template <class Pair>
struct MatchingLanes : testing::Test {
  using UT = std::tuple_element_t<0, Pair>;
  using HT = std::tuple_element_t<1, Pair>;

  std::mt19937 random{21};
  GuardedLines memory{2, 640};

  MatchOptions anyOptions(int round) {
    MatchOptions options{.metric = static_cast<Metric>(round % 4),
                         .mode = static_cast<OutputMode>(round / 4 % 3),
                         .search = pick(random, 0, 5) == 0 ? Search::threeStep : Search::exhaustive,
                         .neighbourhood = pick(random, 0, 1) * pick(random, 1, 9),
                         .map = pick(random, 0, 1) != 0};
    if (pick(random, 0, 2) == 0) {
      options.region = Rectangle{pick(random, -4, 30), pick(random, -4, 20), pick(random, 0, 60), pick(random, 0, 40)};
    }
    return options;
  }

  /// Image and template stand against pages that nobody may touch.
  void compare(int round, const Extents& image, const Extents& pattern, Values kind, const MatchOptions& options) {
    const bool atEnd = pick(random, 0, 1) != 0;
    const auto values = valuesOf<UT>(random, elementCount(image), kind);
    auto taps = valuesOf<HT>(random, elementCount(pattern), kind);
    UT* const u = memory.template get<UT>(0, values.size(), atEnd);
    HT* const h = memory.template get<HT>(1, taps.size(), atEnd);
    std::copy(values.begin(), values.end(), u);
    std::copy(taps.begin(), taps.end(), h);
    if constexpr (std::is_same_v<UT, HT>) {
      if (pattern[0] <= image[0] && pattern[1] <= image[1] && pick(random, 0, 1) != 0) cutOut(u, image, h, pattern);
    }
    TemplateMatcher<UT, HT> matcher(ArrayView<const HT>(h, pattern), image, options);
    ASSERT_TRUE(lanes::forceTarget(lanes::plain));
    const auto expected = matcher.run(ArrayView<const UT>(u, image));
    for (const std::string_view target : lanes::getTargets()) {
      ASSERT_TRUE(lanes::forceTarget(target));
      expectSame(expected, matcher.run(ArrayView<const UT>(u, image)),
                 std::string(target) + ", round " + std::to_string(round) + ", image " + toText(image) + ", template " +
                     toText(pattern) + ", metric " + std::to_string(static_cast<int>(options.metric)) + ", mode " +
                     std::to_string(static_cast<int>(options.mode)) + ": ");
      if (this->HasFatalFailure()) break;
    }
    lanes::forceTarget("");
  }

 private:
  /// The template becomes a part of the image.
  void cutOut(const UT* u, const Extents& image, HT* h, const Extents& pattern) {
    const std::int64_t x = pick(random, 0, static_cast<int>(image[0] - pattern[0]));
    const std::int64_t y = pick(random, 0, static_cast<int>(image[1] - pattern[1]));
    for (std::int64_t j = 0; j < pattern[1]; ++j)
      std::copy_n(u + (y + j) * image[0] + x, pattern[0], h + j * pattern[0]);
  }
};

using Pairs = testing::Types<std::tuple<float, float>, std::tuple<std::complex<float>, float>,
                             std::tuple<float, std::complex<float>>,
                             std::tuple<std::complex<float>, std::complex<float>>, std::tuple<double, double>,
                             std::tuple<std::complex<double>, double>, std::tuple<double, std::complex<double>>,
                             std::tuple<std::complex<double>, std::complex<double>>, std::tuple<bool, bool>>;
TYPED_TEST_SUITE(MatchingLanes, Pairs);

TYPED_TEST(MatchingLanes, MapsSearchesAndNeighbourhoodsOverRandomGeometry) {
  auto& engine = this->random;
  for (int round = 0; round < 300; ++round) {
    const Extents image{pick(engine, 1, pick(engine, 0, 2) != 0 ? 40 : 90), pick(engine, 1, 40)};
    const int most = pick(engine, 0, 2) != 0 ? 6 : 34;
    const MatchOptions options = this->anyOptions(round);
    const auto extent = [&](std::size_t d) {
      const std::int64_t any = pick(engine, 1, most);
      return pick(engine, 0, 9) != 0 ? std::min(any, image[d]) : any;
    };
    const Extents pattern{extent(0), extent(1)};
    if (options.mode == OutputMode::valid && (pattern[0] > image[0] || pattern[1] > image[1])) continue;
    this->compare(round, image, pattern, static_cast<Values>(pick(engine, 0, 2)), options);
    if (this->HasFatalFailure()) return;
  }
}

/// Rows that take several runs, tiles and strips.
TYPED_TEST(MatchingLanes, LongRows) {
  for (int round = 0; round < 8; ++round) {
    const MatchOptions options{.metric = static_cast<Metric>(round % 4), .neighbourhood = 3, .map = true};
    this->compare(round, {5000, 30}, {5, 3}, round < 4 ? Values::few : Values::wide, options);
    if (this->HasFatalFailure()) return;
  }
}

FixedArray anyFixedArray(std::mt19937& random, const Extents& extents, const FixedType& type) {
  FixedArray array(extents, type);
  const int containers = static_cast<int>(array.extents()[0] * array.extents()[1]) * (type.word > 8 ? 2 : 1);
  for (int i = 0; i < containers; ++i)
    static_cast<unsigned char*>(array.data())[i] = random() & 255;  // also spare bits
  return array;
}

bool sameFixed(const FixedArray& a, const FixedArray& b) {
  const auto bytes = detail::bytesOf(a.extents(), a.type(), a.isComplex());
  return a.extents() == b.extents() &&
         std::equal(static_cast<const char*>(a.data()), static_cast<const char*>(a.data()) + bytes,
                    static_cast<const char*>(b.data()));
}

/// One fixed-point match on the target in use: results and counts.
struct FixedRun {
  FixedRun(const FixedArray& image, const FixedArray& pattern, const FixedMatchTypes& types,
           const MatchOptions& options) {
    FixedTemplateMatcher matcher(pattern, image.extents(), types, options);
    match = matcher.run(image);
    statistics = matcher.statistics();
  }
  bool operator==(const FixedRun& other) const {
    return match.found == other.match.found && match.location == other.match.location &&
           match.score == other.match.score && sameFixed(match.map, other.match.map) &&
           sameFixed(match.neighbourhood, other.match.neighbourhood) &&
           std::ranges::equal(statistics, other.statistics, [](const FixedStatistics& a, const FixedStatistics& b) {
             return a.label == b.label && a.casts == b.casts && a.overflows == b.overflows && a.lossy == b.lossy &&
                    a.minimum == b.minimum && a.maximum == b.maximum;
           });
  }

  FixedMatch match;
  std::vector<FixedStatistics> statistics;
};

/// Types for which lanes are exact, and others in which sums round, overflow or wrap.
TEST(FixedMatchingLanes, FixedPointResultsAndCounts) {
  std::mt19937 random(22);
  for (int round = 0; round < 120; ++round) {
    const int fraction = pick(random, 0, 2) == 0 ? pick(random, -2, 3) : 0;
    const auto anyType = [&](int low, int high) {
      return FixedType{pick(random, low, high), fraction + (pick(random, 0, 9) == 0 ? 1 : 0), pick(random, 0, 1) != 0};
    };
    FixedMatchTypes types{
        .input = anyType(1, pick(random, 0, 1) != 0 ? 8 : 16),
        .accumulator = anyType(pick(random, 0, 3) != 0 ? 20 : 4, 34),
        .output = anyType(4, 34),
        .modes = {static_cast<Rounding>(pick(random, 0, 5)), static_cast<Overflow>(pick(random, 0, 3))}};
    MatchOptions options{.metric = static_cast<Metric>(round % 3),
                         .mode = static_cast<OutputMode>(round / 3 % 3),
                         .neighbourhood = pick(random, 0, 4),
                         .map = true};
    if (options.metric == Metric::ssd) types.accumulator.isSigned = true;
    const Extents image{pick(random, 1, 9) == 1 ? 600 : pick(random, 6, 40), pick(random, 6, 40)};
    const int most = round % 8 == 0 ? 19 : 6;
    const Extents pattern{std::min<std::int64_t>(pick(random, 1, most), image[0]),
                          std::min<std::int64_t>(pick(random, 1, most), image[1])};
    const FixedArray u = anyFixedArray(random, image, types.input), h = anyFixedArray(random, pattern, anyType(1, 9));
    ASSERT_TRUE(lanes::forceTarget(lanes::plain));
    const FixedRun expected(u, h, types, options);
    for (const std::string_view target : lanes::getTargets()) {
      ASSERT_TRUE(lanes::forceTarget(target));
      ASSERT_TRUE(expected == FixedRun(u, h, types, options))
          << target << ", round " << round << ", input " << toText(types.input) << ", template " << toText(h.type())
          << ", accumulator " << toText(types.accumulator) << ", output " << toText(types.output) << ", metric "
          << static_cast<int>(options.metric);
    }
    lanes::forceTarget("");
  }
}

}  // namespace
}  // namespace BP::test
