#include "orvane/filters/template_matcher.h"

#include <gtest/gtest.h>

#include <complex>
#include <limits>
#include <random>
#include <type_traits>
#include <utility>
#include <vector>

#include "tests/unit/filters/matcher_comparison.h"

namespace BP::filters {
namespace {

using test::MatchingModel;
using test::pick;

/// Element types of image and template, and the model that computes them, bit for bit: booleans as the numbers 0 and 1.
template <class U, class H>
struct Pair {
  using Score = MatchScore<U, H>;
  using Model =
      std::conditional_t<std::is_same_v<U, bool>, MatchingModel<double, double, double>, MatchingModel<H, U, Score>>;
  using ModelScores = std::vector<typename Model::Score>;
  static constexpr int longestImage = 14, longestPattern = 5;

  void choose(std::mt19937&, Model&) {}
  void checkCounts(TemplateMatcher<U, H>&) {}
  TemplateMatcher<U, H> makeMatcher(const Array<H>& pattern, const Extents& image, const MatchOptions& options) {
    return TemplateMatcher<U, H>(pattern, image, options);
  }
  Array<U> randomImage(std::mt19937& random, const int (&dims)[2]) { return randomArray<U>(random, dims); }
  Array<H> randomPattern(std::mt19937& random, const int (&dims)[2]) { return randomArray<H>(random, dims); }
  template <class T>
  auto valuesOf(const Array<T>& array) {
    return std::vector<std::conditional_t<std::is_same_v<T, bool>, double, T>>(array.begin(), array.end());
  }
  ModelScores written(const ModelScores& scores) { return scores; }

  void expectScore(const typename Model::Score& expected, const Score& actual) {
    EXPECT_TRUE(test::sameBits(static_cast<typename Model::Score>(actual), expected)) << actual;
  }
  void expectScores(const ModelScores& expected, const Array<Score>& actual, const char* what) {
    ASSERT_EQ(actual.size(), expected.size()) << what;
    for (std::size_t i = 0; i < expected.size(); ++i) {
      const auto score = static_cast<typename Model::Score>(actual[i]);
      ASSERT_TRUE(test::sameBits(score, expected[i])) << what << " " << i << ": " << actual[i];
    }
  }

 private:
  /// Values that make ties and exact matches likely.
  template <class T>
  static Array<T> randomArray(std::mt19937& random, const int (&dims)[2]) {
    Array<T> array({dims[0], dims[1]});
    for (T& value : array) {
      if constexpr (std::is_same_v<T, bool>) {
        value = pick(random, 0, 1) == 1;
      } else {
        value = pick(random, 0, 1) == 0 ? T(static_cast<float>(pick(random, -2, 2)))
                                        : test::RandomValue<T>::of(random, false);
      }
    }
    return array;
  }
};

using C32 = std::complex<float>;
using C64 = std::complex<double>;
using Pairs =
    testing::Types<Pair<float, float>, Pair<float, C32>, Pair<C32, float>, Pair<C32, C32>, Pair<double, double>,
                   Pair<double, C64>, Pair<C64, double>, Pair<C64, C64>, Pair<bool, bool>>;
template <class T>
class TemplateMatcherTest : public testing::Test {};
TYPED_TEST_SUITE(TemplateMatcherTest, Pairs);

TYPED_TEST(TemplateMatcherTest, EachRunFindsWhatTheModelFinds) { test::MatcherComparison<TypeParam>().compare(150); }

TEST(TemplateMatcherRunTest, WithoutABestMatchThereIsAMapAlone) {
  const std::vector<float> image{5, 1, 4, 1}, pattern{1, 4};
  const auto match = matchTemplate(ArrayView(image, {4, 1}), ArrayView(pattern, {2, 1}), {.best = false, .map = true});
  EXPECT_FALSE(match.found);
  EXPECT_EQ(std::vector(match.map.begin(), match.map.end()), (std::vector<float>{7, 0, 6}));
}

TEST(TemplateMatcherRunTest, AnEarlyNanStaysALaterOneIsIgnored) {
  const std::vector<float> pattern{3};
  for (const std::size_t at : {0U, 2U}) {
    std::vector<float> image{1, 2, 2.5F, 3};
    image[at] = std::numeric_limits<float>::quiet_NaN();
    const auto match = matchTemplate(ArrayView(image, {4, 1}), ArrayView(pattern, {1, 1}), {.metric = Metric::ssd});
    EXPECT_EQ(match.location[0], at == 0 ? 0 : 3);
  }
}

TEST(TemplateMatcherRunTest, AMovedFromObjectSaysSo) {
  const Array<double> pattern({2, 2});
  TemplateMatcher<double> first(pattern, {4, 4});
  TemplateMatcher<double> second = std::move(first);
  EXPECT_TRUE(second.run(Array<double>({4, 4})).found);
  EXPECT_THROW(first.run(Array<double>({4, 4})), std::logic_error);  // NOLINT(bugprone-use-after-move)
}

}  // namespace
}  // namespace BP::filters
