// Matches against the plain model, bit for bit, over random geometry; what one run finds must not depend on those
// before.
#include "orvane/filters/template_matcher.h"

#include <gtest/gtest.h>

#include <utility>
#include <vector>

#include "tests/support/matching_model.h"
#include "tests/support/random_values.h"

namespace BP::filters {
namespace {

using test::MatchingModel;
using test::pick;

constexpr std::pair<OutputMode, OutputModeEnum> modes[] = {
    {OutputMode::valid, OutputModeValid}, {OutputMode::same, OutputModeSame}, {OutputMode::full, OutputModeFull}};
constexpr std::pair<Metric, AlgorithmModeEnum> metrics[] = {{Metric::sad, AlgorithmModeSAD},
                                                            {Metric::ssd, AlgorithmModeSSD},
                                                            {Metric::maxad, AlgorithmModeMaxAD},
                                                            {Metric::product, AlgorithmModeConvolution}};

/// Element types of image and template, and the model that computes them: booleans as the numbers 0 and 1.
template <class U, class H>
struct Pair {
  using UT = U;
  using HT = H;
  using Model = MatchingModel<H, U, MatchScore<U, H>>;
};
template <>
struct Pair<bool, bool> {
  using UT = bool;
  using HT = bool;
  using Model = MatchingModel<double, double, double>;
};

/// Values that make ties and exact matches likely.
template <class T>
Array<T> randomArray(std::mt19937& random, const int (&dims)[2]) {
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

template <class T>
class TemplateMatcherTest : public testing::Test {
 protected:
  using UT = typename T::UT;
  using HT = typename T::HT;
  using Model = typename T::Model;
  using Score = MatchScore<UT, HT>;

  /// A random geometry, for the model and for the matcher.
  void choose() {
    const auto& [mode, coreMode] = modes[pick(random, 0, 2)];
    const auto& [metric, coreMetric] = metrics[pick(random, 0, 3)];
    const int search = pick(random, 0, 1);
    options = {.metric = metric, .mode = mode, .search = static_cast<Search>(search)};
    options.neighbourhood = pick(random, 0, 4);
    options.map = pick(random, 0, 1) == 1;
    model.outputMode = coreMode;
    model.metric = coreMetric;
    model.search = static_cast<SearchMethodEnum>(search);
    model.edge = std::max(static_cast<int>(options.neighbourhood), 1);
    for (int d = 0; d < 2; ++d) {
      model.uDims[d] = pick(random, 1, 14);
      model.hDims[d] = pick(random, 1, mode == OutputMode::valid ? std::min(5, model.uDims[d]) : 5);
    }
  }

  std::optional<Region> randomRegion() {
    model.hasRoi = pick(random, 0, 2) > 0;
    if (!model.hasRoi) return std::nullopt;
    for (int d = 0; d < 2; ++d) {
      model.roi[d] = pick(random, -4, 12);
      model.roi[2 + d] = pick(random, 0, 14);
    }
    return Region{{model.roi[0], model.roi[1]}, {model.roi[2], model.roi[3]}};
  }

  static void expectScores(const decltype(Model::map)& expected, const Array<Score>& actual, const char* what) {
    ASSERT_EQ(actual.size(), expected.size()) << what;
    for (std::size_t i = 0; i < expected.size(); ++i) {
      const auto score = static_cast<typename decltype(Model::map)::value_type>(actual[i]);
      ASSERT_TRUE(test::sameBits(score, expected[i])) << what << " " << i << ": " << actual[i];
    }
  }

  /// Compares a run with a model that is as new.
  void check(const Match<Score>& match) {
    const auto expected = model.positions();
    ASSERT_EQ(match.found, !expected.isEmpty());
    if (expected.isEmpty()) {
      EXPECT_EQ(match.positions.size, (std::array<std::int64_t, 2>{0, 0}));
      EXPECT_FALSE(match.regionValid || match.neighbourhoodValid);
      EXPECT_EQ(match.location, (std::array<std::int64_t, 2>{0, 0}));
      EXPECT_EQ(match.map.size(), 0U);
      const auto edge = static_cast<std::size_t>(options.neighbourhood);
      return expectScores(decltype(Model::map)(edge * edge), match.neighbourhood, "block");
    }
    EXPECT_EQ(match.positions, (Region{{expected.lo[0], expected.lo[1]}, {expected.size[0], expected.size[1]}}));
    Model searched = model;
    searched.mode = TMModeBestMatchNeighborhood;
    searched.block.resize(static_cast<std::size_t>(model.edge * model.edge));
    searched.call();
    for (std::size_t d = 0; d < 2; ++d) {
      EXPECT_EQ(match.location[d], searched.location[d]);
      EXPECT_EQ(match.window.start[d] + model.centre(static_cast<int>(d)), match.location[d]);
    }
    EXPECT_EQ(match.regionValid, !model.hasRoi || searched.roiValid);
    EXPECT_EQ(match.neighbourhoodValid, options.neighbourhood > 0 && searched.blockValid);
    Array<Score> single({1, 1});
    single[0] = match.score;
    expectScores({model.scoreAt(searched.location[0], searched.location[1])}, single, "score");
    if (options.neighbourhood == 0) searched.block.clear();
    expectScores(searched.block, match.neighbourhood, "block");
    Model mapped = model;
    mapped.mode = TMModeMetric;
    mapped.map.resize(options.map ? static_cast<std::size_t>(expected.size[0] * expected.size[1]) : 0);
    if (options.map) mapped.call();
    expectScores(mapped.map, match.map, "map");
  }

  /// Some runs each of new matchers, with image, template and region changing in between.
  void compare(int trials) {
    for (int trial = 0; trial < trials && !testing::Test::HasFatalFailure(); ++trial) {
      SCOPED_TRACE(trial);
      choose();
      auto pattern = randomArray<HT>(random, model.hDims);
      options.region = randomRegion();
      TemplateMatcher<UT, HT> matcher(pattern, {model.uDims[0], model.uDims[1]}, options);
      for (int run = 0; run < 3; ++run) {
        const auto image = randomArray<UT>(random, model.uDims);
        model.u.assign(image.begin(), image.end());
        model.h.assign(pattern.begin(), pattern.end());
        check(matcher.run(image));
        pattern = randomArray<HT>(random, model.hDims);
        matcher.setTemplate(pattern);
        matcher.setRegion(randomRegion());
      }
    }
  }

  std::mt19937 random{33};
  Model model{};
  MatchOptions options;
};

using C32 = std::complex<float>;
using C64 = std::complex<double>;
using Pairs =
    testing::Types<Pair<float, float>, Pair<float, C32>, Pair<C32, float>, Pair<C32, C32>, Pair<double, double>,
                   Pair<double, C64>, Pair<C64, double>, Pair<C64, C64>, Pair<bool, bool>>;
TYPED_TEST_SUITE(TemplateMatcherTest, Pairs);

TYPED_TEST(TemplateMatcherTest, EachRunFindsWhatTheModelFinds) { this->compare(150); }

TEST(TemplateMatcherRunTest, WithoutABestMatchThereIsAMapAlone) {
  const std::vector<float> image{5, 1, 4, 1}, pattern{1, 4};
  const auto match = matchTemplate(ArrayView(image, {4, 1}), ArrayView(pattern, {2, 1}), {.best = false, .map = true});
  EXPECT_FALSE(match.found);
  EXPECT_EQ(std::vector(match.map.begin(), match.map.end()), (std::vector<float>{7, 0, 6}));
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
