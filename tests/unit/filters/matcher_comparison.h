#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <optional>
#include <random>
#include <utility>
#include <vector>

#include "orvane/filters/template_matcher.h"
#include "tests/support/choices.h"
#include "tests/support/matching_model.h"

/// Matches against the model over random geometry; what one run finds must not depend on those before.
namespace BP::test {

constexpr std::pair<filters::Metric, AlgorithmModeEnum> matchMetrics[] = {
    {filters::Metric::sad, AlgorithmModeSAD},
    {filters::Metric::ssd, AlgorithmModeSSD},
    {filters::Metric::maxad, AlgorithmModeMaxAD},
    {filters::Metric::product, AlgorithmModeConvolution}};

/// Elements makes arrays and matchers, has the greatest extents, and says what comes out of the model's scores and
/// whether it is there.
template <class Elements>
class MatcherComparison {
 public:
  using Model = typename Elements::Model;
  using Scores = std::vector<typename Model::Score>;

  /// Some runs each of new matchers, with image, template and region changing in between.
  void compare(int trials) {
    for (int trial = 0; trial < trials && !testing::Test::HasFatalFailure(); ++trial) {
      SCOPED_TRACE(trial);
      choose();
      elements.choose(random, model);
      auto pattern = elements.randomPattern(random, model.hDims);
      options.region = randomRegion();
      auto matcher = elements.makeMatcher(pattern, {model.uDims[0], model.uDims[1]}, options);
      for (int run = 0; run < 3; ++run) {
        const auto image = elements.randomImage(random, model.uDims);
        model.u = elements.valuesOf(image);
        model.h = elements.valuesOf(pattern);
        check(matcher.run(image));
        pattern = elements.randomPattern(random, model.hDims);
        matcher.setTemplate(pattern);
        matcher.setRegion(randomRegion());
      }
      elements.checkCounts(matcher);
    }
  }

 private:
  /// A random geometry, for the model and for the matcher.
  void choose() {
    const auto& [mode, coreMode] = modeChoices[pick(random, 0, 2)];
    const auto& [metric, coreMetric] = matchMetrics[pick(random, 0, 3)];
    const int search = pick(random, 0, 1);
    options = {.metric = metric, .mode = mode, .search = static_cast<filters::Search>(search)};
    options.neighbourhood = pick(random, 0, 4);
    options.map = pick(random, 0, 1) == 1;
    model.outputMode = coreMode;
    model.metric = coreMetric;
    model.search = static_cast<SearchMethodEnum>(search);
    model.edge = std::max(static_cast<int>(options.neighbourhood), 1);
    for (int d = 0; d < 2; ++d) {
      model.uDims[d] = pick(random, 1, Elements::longestImage);
      const int most = Elements::longestPattern;
      model.hDims[d] = pick(random, 1, coreMode == OutputModeValid ? std::min(most, model.uDims[d]) : most);
    }
  }

  std::optional<filters::Rectangle> randomRegion() {
    model.hasRoi = pick(random, 0, 2) > 0;
    if (!model.hasRoi) return std::nullopt;
    for (int d = 0; d < 2; ++d) {
      model.roi[d] = pick(random, -4, 12);
      model.roi[2 + d] = pick(random, 0, 14);
    }
    return filters::Rectangle{model.roi[0], model.roi[1], model.roi[2], model.roi[3]};
  }

  /// Compares a run with a model that is as new.
  template <class MatchT>
  void check(const MatchT& match) {
    const auto expected = model.positions();
    ASSERT_EQ(match.found, !expected.isEmpty());
    const auto blockSize = static_cast<std::size_t>(options.neighbourhood * options.neighbourhood);
    if (expected.isEmpty()) {
      EXPECT_TRUE(match.positions.isEmpty());
      EXPECT_FALSE(match.regionValid || match.neighbourhoodValid);
      EXPECT_EQ(match.location, (std::array<std::int64_t, 2>{0, 0}));
      elements.expectScores({}, match.map, "map");
      return elements.expectScores(Scores(blockSize), match.neighbourhood, "block");
    }
    EXPECT_EQ(match.positions,
              (filters::Rectangle{expected.lo[0], expected.lo[1], expected.size[0], expected.size[1]}));
    Model searched = model;
    searched.mode = TMModeBestMatchNeighborhood;
    searched.block.resize(static_cast<std::size_t>(model.edge * model.edge));
    searched.call();
    for (std::size_t d = 0; d < 2; ++d) {
      const std::int64_t start = d == 0 ? match.window.x : match.window.y;
      EXPECT_EQ(match.location[d], searched.location[d]);
      EXPECT_EQ(start + model.centre(static_cast<int>(d)), match.location[d]);
    }
    EXPECT_EQ(match.regionValid, !model.hasRoi || searched.roiValid);
    EXPECT_EQ(match.neighbourhoodValid, blockSize > 0 && searched.blockValid);
    Scores block = elements.written(searched.block);
    elements.expectScore(block[static_cast<std::size_t>((model.edge - 1) / 2 * (model.edge + 1))], match.score);
    if (blockSize == 0) block.clear();
    elements.expectScores(block, match.neighbourhood, "block");
    Model mapped = model;
    mapped.mode = TMModeMetric;
    mapped.map.resize(options.map ? static_cast<std::size_t>(expected.size[0] * expected.size[1]) : 0);
    if (options.map) mapped.call();
    elements.expectScores(elements.written(mapped.map), match.map, "map");
  }

  std::mt19937 random{33};
  Elements elements;
  Model model{};
  filters::MatchOptions options;
};

}  // namespace BP::test
