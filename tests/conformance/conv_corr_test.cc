// Convolution and correlation against the plain model, bit for bit, over random geometry.
#include <gtest/gtest.h>

#include <complex>
#include <random>
#include <tuple>
#include <vector>

#include "tests/support/conv_corr_bench.h"
#include "tests/support/conv_corr_model.h"
#include "tests/support/random_values.h"

namespace BP::test {
namespace {

template <class HT, class UT, class YT>
std::string describe(const Problem<HT, UT, YT>& p) {
  const auto text = [](auto... numbers) { return ((std::to_string(numbers) + " ") + ...); };
  return "filter " + text(p.hDims[0], p.hDims[1]) + "input " + text(p.uDims[0], p.uDims[1]) + "output mode " +
         text(p.outputMode) + "algorithm " + text(p.algorithmMode) + "norm " + text(p.norm) + "pad " + text(p.padType);
}

template <class YT>
void expectSame(const std::vector<YT>& found, const std::vector<YT>& expected, const std::string& what) {
  ASSERT_EQ(found.size(), expected.size()) << what;
  for (std::size_t i = 0; i < found.size(); ++i) {
    ASSERT_TRUE(sameBits(found[i], expected[i]))
        << what << "output " << i << ": " << found[i] << " for " << expected[i];
  }
}

template <class Triple>
class ConvCorrConformance : public testing::Test {
 protected:
  using HT = std::tuple_element_t<0, Triple>;
  using UT = std::tuple_element_t<1, Triple>;
  using YT = std::tuple_element_t<2, Triple>;
  using P = Problem<HT, UT, YT>;
  using BenchT = Bench<HT, UT, YT>;

  /// Extents, now and then such that the window is wider than the input, and data.
  P randomProblem(bool special) {
    P p;
    for (int d = 0; d < 2; ++d) {
      p.hDims[d] = pick(random, 1, 7);
      p.uDims[d] = pick(random, 1, 10);
    }
    p.h = randomValues<HT>(random, p.hDims[0] * p.hDims[1], special);
    p.u = randomValues<UT>(random, p.uDims[0] * p.uDims[1], special);
    p.padValue = RandomValue<UT>::of(random, special);
    return p;
  }

  template <class CheckT>
  void forEachCombination(P p, CheckT&& check) {
    for (const auto outputMode : {OutputModeValid, OutputModeSame, OutputModeFull}) {
      for (const auto algorithmMode : {AlgorithmModeConvolution, AlgorithmModeCorrelation}) {
        for (const auto padType : allPads) {
          p.outputMode = outputMode;
          p.algorithmMode = algorithmMode;
          p.padType = padType;
          check(p);
        }
      }
    }
  }

  std::mt19937 random{11};
};

using C64 = std::complex<float>;
using C128 = std::complex<double>;
using Triples =
    testing::Types<std::tuple<float, float, float>, std::tuple<float, C64, C64>, std::tuple<C64, float, C64>,
                   std::tuple<C64, C64, C64>, std::tuple<double, double, double>, std::tuple<double, C128, C128>,
                   std::tuple<C128, double, C128>, std::tuple<C128, C128, C128>>;
TYPED_TEST_SUITE(ConvCorrConformance, Triples);

TYPED_TEST(ConvCorrConformance, EveryCombinationEqualsThePlainModel) {
  for (int trial = 0; trial < 30; ++trial) {
    this->forEachCombination(this->randomProblem(trial % 3 == 2), [&](typename TestFixture::P p) {
      for (const auto norm : {NormNone, NormWindowEnergy}) {
        p.norm = norm;
        typename TestFixture::BenchT bench(p);
        expectSame(bench.run(p.outputCount()), solve(p), describe(p));
        expectSame(bench.run(p.outputCount()), solve(p), "second run " + describe(p));
        if (this->HasFatalFailure()) return;
      }
    });
    if (this->HasFatalFailure()) return;
  }
}

TYPED_TEST(ConvCorrConformance, SeparableIsTwoPasses) {
  for (int trial = 0; trial < 12; ++trial) {
    const auto row = randomValues<typename TestFixture::HT>(this->random, pick(this->random, 1, 5));
    this->forEachCombination(this->randomProblem(false), [&](typename TestFixture::P p) {
      typename TestFixture::BenchT bench(p, false, row);
      p.hDims[0] = static_cast<int>(p.h.size());
      p.hDims[1] = static_cast<int>(row.size());  // for the extents of the output
      expectSame(bench.run(p.outputCount()), solveSeparable(p, row), describe(p));
    });
    if (this->HasFatalFailure()) return;
  }
}

TYPED_TEST(ConvCorrConformance, SizesFilterAndPadChangeBetweenRuns) {
  this->forEachCombination(this->randomProblem(false), [&](typename TestFixture::P p) {
    typename TestFixture::BenchT bench(p, true);
    for (int step = 0; step < 6; ++step) {
      auto next = this->randomProblem(false);
      next.outputMode = p.outputMode;
      next.algorithmMode = p.algorithmMode;
      next.padType = p.padType;
      for (int d = 0; d < 2; ++d) {
        bench.hDims[d] = next.hDims[d];
        bench.uDims[d] = next.uDims[d];
      }
      bench.problem.u = next.u;
      bench.front->tune(next.h.data(), nullptr, &next.padValue);
      bench.front->setup(next.h.data(), bench.problem.u.data(), bench.y.data(), &next.padValue, true);
      bench.y.assign(bench.y.size(), typename TestFixture::YT(-77));
      expectSame(bench.run(next.outputCount()), solve(next), describe(next));
      if (this->HasFatalFailure()) return;
    }
    bench.front->setup(setupFinish);
  });
}

TEST(ConvCorrFront, TunedFilterAndPadValueTakeEffectOnTheNextRun) {
  Problem<double, double, double> p{{3, 1}, {4, 2}, {1, 2, 3}, {1, 2, 3, 4, 5, 6, 7, 8}, 10, OutputModeSame};
  std::vector<double> row{0.5, 2};
  for (const bool separable : {false, true}) {
    Bench<double, double, double> bench(p, false, separable ? row : std::vector<double>{});
    const auto expected = [&] { return separable ? solveSeparable(p, row) : solve(p); };
    p.hDims[1] = 1;
    expectSame(bench.run(8), expected(), "before");
    p.h = {3, -1, 0.25};
    p.padValue = -4;
    bench.front->tune(p.h.data(), nullptr, &p.padValue);
    expectSame(bench.run(8), expected(), "after");
    bench.front->tune(nullptr, nullptr, nullptr);
    expectSame(bench.run(8), expected(), "null changes nothing");
  }
}

TEST(ConvCorrFront, ComplexPadValueIsReadInFullOnlyIfItIsComplex) {
  Problem<C64, C64, C64> p{{3, 1}, {1, 1}, {{1, 0}, {1, 0}, {1, 0}}, {{0, 0}}, {2, 5}, OutputModeSame};
  Bench<C64, C64, C64> bench(p);
  EXPECT_EQ(bench.run(1)[0], C64(4, 10));
  bench.front->setup(p.h.data(), p.u.data(), bench.y.data(), &p.padValue, false);
  EXPECT_EQ(bench.run(1)[0], C64(4, 0));
}

TEST(ConvCorrFront, HigherRanksFilterTheFirstPlaneOnly) {
  int hDims[] = {2, 1, 2}, uDims[] = {3, 1, 3};
  std::vector<float> h{1, 2, 50, 60}, u{1, 2, 3, 4, 5, 6, 7, 8, 9}, y(9, -77);
  for (const NormEnum norm : {NormNone, NormWindowEnergy}) {
    ReferenceHost host;
    ConvCorrTolk<float, float, float> front(host.getAdaptor(), 3, hDims, 3, uDims, PadTypeReplicate, OutputModeSame,
                                            AlgorithmModeCorrelation, norm, false);
    host.provideWorkVectors(front.getAllocator());
    front.setup(h.data(), u.data(), y.data(), nullptr, false);
    front.computeOutputs();
    const float filterNorm = std::sqrt(1.0F + 4 + 2500 + 3600);  // of all elements, though one plane is walked
    const float sums[] = {5, 8, 9}, norms[] = {std::sqrt(5.0F), std::sqrt(13.0F), std::sqrt(18.0F)};
    for (std::size_t i = 0; i < 3; ++i) {
      EXPECT_EQ(y[i], norm == NormNone ? sums[i] : sums[i] / (filterNorm * norms[i])) << i;
    }
    EXPECT_EQ(std::vector<float>(y.begin() + 3, y.end()), std::vector<float>(6, -77));
  }
}

TEST(ConvCorrFront, AnIntermediateThatOutgrowsItsArrayIsNotComputed) {
  Problem<double, double, double> p{{2, 1}, {4, 4}, {1, 1}, std::vector<double>(64, 1), 0, OutputModeSame};
  Bench<double, double, double> bench(p, true, {1, 1});
  bench.uDims[0] = bench.uDims[1] = 8;
  bench.run(0);
  bench.uDims[0] = 2;
  EXPECT_EQ(bench.run(16)[0], 4.0);
}

TEST(ConvCorrFront, AShrunkSeparableFilterIsReadNoFurther) {  // the address sanitizer is the judge
  const Problem<double, double, double> p{{4, 1}, {4, 2}, {1, 2, 3, 4}, std::vector<double>(8, 1), 5, OutputModeSame};
  Bench<double, double, double> bench(p, true, {1, 1});
  std::vector<double> column{2};
  bench.front->tune(column.data(), nullptr, nullptr);
  bench.hDims[0] = 1;
  EXPECT_EQ(bench.run(8), (std::vector<double>{4, 4, 4, 4, 12, 12, 12, 12}));
}

TEST(ConvCorrFront, PassesAndStages) {
  Problem<double, double, double> p{{3, 1}, {4, 2}, {1, 2, 3}, {1, 2, 3, 4, 5, 6, 7, 8}, 10, OutputModeSame};
  Bench<double, double, double> plain(p), separable(p, false, {1});
  EXPECT_EQ(plain.front->getConvCorr1(), plain.front->getConvCorr());
  EXPECT_EQ(plain.front->getConvCorr2(), plain.front->getConvCorr());
  EXPECT_NE(separable.front->getConvCorr1(), separable.front->getConvCorr2());
  EXPECT_TRUE(separable.front->isSeparable() && separable.front->getIsSeparable());
  EXPECT_TRUE(plain.front->useConstantPad());
  const auto before = plain.run(8);
  for (const int stage : {5, 6, 2, 2}) plain.front->setup(static_cast<setupModeT>(stage));
  expectSame(plain.run(8), before, "stages 5, 6, 2 and 2 again");
}

TEST(ConvCorrFront, ARestrictedRegionGivesThePartOfTheWholeOutput) {
  std::mt19937 random(3);
  for (int trial = 0; trial < 100; ++trial) {
    Problem<float, float, float> p;
    for (int d = 0; d < 2; ++d) {
      p.hDims[d] = pick(random, 1, 5);
      p.uDims[d] = pick(random, 1, 9);
    }
    p.h = randomValues<float>(random, p.hDims[0] * p.hDims[1]);
    p.u = randomValues<float>(random, p.uDims[0] * p.uDims[1]);
    p.outputMode = OutputModeSame;
    p.padType = PadTypeSymmetric;
    CleverPtr<int> hDims, uDims, centre, loc, dims;
    CleverPtr<float> h, u, y;
    int centres[2] = {p.centre(0), p.centre(1)}, at[2], size[2];
    for (int d = 0; d < 2; ++d) {
      at[d] = pick(random, 0, p.uDims[d] - 1);
      size[d] = pick(random, 1, p.uDims[d] - at[d]);
    }
    hDims.ptr = p.hDims, uDims.ptr = p.uDims, centre.ptr = centres, loc.ptr = at, dims.ptr = size;
    std::vector<float> part(static_cast<std::size_t>(size[0] * size[1]));
    h.ptr = p.h.data(), u.ptr = p.u.data(), y.ptr = part.data();
    ReferenceHost host;
    AllocatorTolk allocator(host.getAdaptor());
    const RestrictedRegion region(2, dims, loc);
    ConvCorr<float, float, float, AllocatorTolk> processor(
        &allocator, 2, hDims, false, uDims, p.outputMode, p.algorithmMode, p.norm, p.padType, centre, h, u, y, &region);
    host.provideWorkVectors(allocator);
    allocator.refreshWorkVectors();
    for (const auto stage : {setupAttachWork, setupLinkTables, setupStart}) processor.setup(stage);
    processor.invoke();
    for (int i = 0; i < size[0] * size[1]; ++i) {
      const float expected = outputAt(p, at[0] + i % size[0], at[1] + i / size[0]);
      ASSERT_TRUE(sameBits(part[static_cast<std::size_t>(i)], expected)) << describe(p) << i;
    }
  }
}

}  // namespace
}  // namespace BP::test
