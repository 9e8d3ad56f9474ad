#include "orvane/filters/fixed_template_matcher.h"

#include <gtest/gtest.h>

#include <complex>
#include <memory>
#include <random>
#include <utility>
#include <vector>

#include "tests/support/fixed_model.h"
#include "tests/unit/filters/matcher_comparison.h"

namespace BP::filters {
namespace {

using test::Exact;
using test::ExactCast;
using test::pick;

/// The types of a match, and what its casts count; those of differences are not counted.
struct Casts : test::ExactCasts {
  FixedMatchTypes types;
  ExactCast uncounted;

  Exact difference(const Exact& a, const Exact& b) {
    const Exact first = sum(uncounted, a.re, a.im);
    return sum(uncounted, first.re - b.re, first.im - b.im);
  }
  Exact addUncounted(const Exact& a, const Exact& b) { return sum(uncounted, a.re + b.re, a.im + b.im); }
};

/// A score in the accumulator's type, operation by operation.
struct ExactWindowScore {
  std::shared_ptr<Casts> casts;

  template <class Model>
  Exact operator()(const Model& m, int index) const {
    Casts& c = *casts;
    Exact score{0, 0, c.isComplex};
    const int count = m.hDims[0] * m.hDims[1];
    for (int k = 0; k < count; ++k) {
      Exact a = m.imageAt(index, k);
      const bool isProduct = m.metric == AlgorithmModeConvolution;
      Exact t = m.h[static_cast<std::size_t>(isProduct ? count - 1 - k : k)];
      if (isProduct) {
        score = c.accumulate(score, c.multiply(a, t));
      } else if (m.metric == AlgorithmModeSSD) {
        const Exact d = c.difference(a, t);
        score = c.addUncounted(score, c.multiply(d, d));
      } else {
        if (m.metric == AlgorithmModeMaxAD) {
          for (Exact* v : {&a, &t}) *v = c.sum(c.uncounted, v->re, v->im);
        }
        const bool isGreater = c.isComplex ? squared(a) > squared(t) : a.re > t.re;
        const Exact d = isGreater ? c.difference(a, t) : c.difference(t, a);
        if (m.metric == AlgorithmModeSAD) {
          score = c.addUncounted(score, d);
        } else if (k == 0 || magnitude(d) > magnitude(score)) {
          score = d;
        }
      }
    }
    return score;
  }
  /// Beside a complex element a real one counts as complex.
  static mpq_class squared(const Exact& v) { return v.re * v.re + v.im * v.im; }
};

/// Random types, real and complex, short and long.
struct FixedElements {
  using Model = test::MatchingModel<Exact, Exact, Exact, ExactWindowScore>;
  static constexpr int longestImage = 7, longestPattern = 3;

  void choose(std::mt19937& random, Model& model) {
    casts = std::make_shared<Casts>();
    FixedMatchTypes& types = casts->types;
    types.input = pick(random, 0, 3) == 0 ? test::randomType(random, 30, 60) : test::randomType(random, 1, 6);
    types.inputIsComplex = pick(random, 0, 2) == 0;
    pattern = pick(random, 0, 1) == 0 ? types.input : test::randomType(random, 1, 60);
    patternIsComplex = pick(random, 0, 2) == 0;
    types.accumulator = test::randomType(random, 4, pick(random, 0, 1) == 0 ? 24 : 128);
    types.output = test::randomType(random, 2, 50);
    types.modes = test::randomModes(random);
    // Exact products; the library gives results of operations the sign of their operands.
    const bool squares = model.metric == AlgorithmModeSSD;
    types.accumulator.isSigned = types.accumulator.isSigned || squares;
    const FixedType &first = squares ? types.accumulator : types.input, &second = squares ? first : pattern;
    const bool isSigned = first.isSigned || second.isSigned;
    const bool isTooWide = first.word + second.word > 128;
    if ((squares || model.metric == AlgorithmModeConvolution) && (isTooWide || pick(random, 0, 1) == 1)) {
      types.product = {pick(random, 3, 100), pick(random, -2, 20), isSigned};
    }
    casts->isComplex = types.inputIsComplex || patternIsComplex;
    casts->setTypes(first, second, types.product, types.accumulator, types.output, types.modes);
    casts->uncounted = {types.accumulator, types.modes};
    model.windowScore.casts = casts;
    isCounted = model.metric == AlgorithmModeConvolution;
  }

  FixedTemplateMatcher makeMatcher(const FixedArray& h, const Extents& image, const MatchOptions& options) {
    return {h, image, casts->types, options};
  }
  FixedArray randomImage(std::mt19937& random, const int (&dims)[2]) {
    return test::randomFixed(random, {dims[0], dims[1]}, casts->types.input, casts->types.inputIsComplex);
  }
  FixedArray randomPattern(std::mt19937& random, const int (&dims)[2]) {
    return test::randomFixed(random, {dims[0], dims[1]}, pattern, patternIsComplex);
  }
  std::vector<Exact> valuesOf(const FixedArray& array) { return test::exactElements(array); }
  std::vector<Exact> written(std::vector<Exact> scores) {
    for (Exact& score : scores) score = casts->written(score);
    return scores;
  }

  void expectScore(const Exact& expected, const std::complex<double>& actual) {
    EXPECT_EQ(actual, std::complex<double>(expected.re.get_d(), expected.im.get_d()));
  }
  void expectScores(const std::vector<Exact>& expected, const FixedArray& actual, const char* what) {
    ASSERT_TRUE(valuesOf(actual) == expected) << what;
    if (expected.empty()) return;
    EXPECT_EQ(actual.type(), casts->types.output);
  }
  void checkCounts(FixedTemplateMatcher& matcher) {
    const auto statistics = matcher.statistics();
    test::expectCounts(test::labelled(statistics, "output"), casts->output.counts);
    if (isCounted) casts->expectCountsOfSums(statistics);
  }

  std::shared_ptr<Casts> casts;
  FixedType pattern;
  bool patternIsComplex = false;
  bool isCounted = false;
};

TEST(FixedTemplateMatcherTest, EachRunFindsWhatExactArithmeticFindsAndItsCastsAreCounted) {
  test::MatcherComparison<FixedElements>().compare(250);
}

TEST(FixedTemplateMatcherTest, AMovedFromObjectSaysSo) {
  const FixedArray pattern({2, 2}, {8, 0}), image({4, 4}, {8, 0});
  FixedTemplateMatcher first(pattern, {4, 4}, {.input = {8, 0}, .accumulator = {16, 0}, .output = {8, 0}});
  FixedTemplateMatcher second = std::move(first);
  EXPECT_TRUE(second.run(image).found);
  EXPECT_THROW(first.run(image), std::logic_error);  // NOLINT(bugprone-use-after-move)
}

}  // namespace
}  // namespace BP::filters
