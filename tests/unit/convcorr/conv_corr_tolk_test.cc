// What the front and the processor add to the sums: sizes that vary, tuning, stages, ranks, regions.
#include "orvane/convcorr/conv_corr_tolk.h"

#include <gmock/gmock.h>

#include <complex>
#include <vector>

#include "orvane/platform/karn_fixpt_3_make.h"
#include "tests/support/conv_corr_bench.h"
#include "tests/support/region_run.h"

namespace BP::test {
namespace {

using P = Problem<double, double, double>;
using DoubleBench = Bench<double, double, double>;
using testing::Each;
using testing::ElementsAre;

const P ramp{{3, 1}, {4, 2}, {1, 2, 3}, {1, 2, 3, 4, 5, 6, 7, 8}, 10, OutputModeSame};

TEST(ConvCorrFront, SizesFilterAndPadChangeBetweenRuns) {
  std::mt19937 random(11);
  for (const OutputModeEnum outputMode : allModes) {
    for (const PadTypeEnum padType : allPads) {
      const auto next = [&] {
        P p = randomProblem<double, double, double>(random, 7, 10);
        p.outputMode = outputMode;
        p.padType = padType;
        return p;
      };
      DoubleBench bench(next(), true);
      for (int step = 0; step < 8; ++step) {
        P p = next();
        for (int d = 0; d < 2; ++d) {
          bench.hDims[d] = p.hDims[d];
          bench.uDims[d] = p.uDims[d];
        }
        bench.problem.u = p.u;
        bench.front->tune(p.h.data(), nullptr, &p.padValue);
        bench.front->setup(p.h.data(), bench.problem.u.data(), bench.y.data(), &p.padValue, true);
        bench.y.assign(bench.y.size(), -77);
        ASSERT_EQ(bench.run(p.outputCount()), solve(p)) << p;
      }
      bench.front->setup(setupFinish);
    }
  }
}

TEST(ConvCorrFront, ComplexPadValueIsReadInFullOnlyIfItIsComplex) {
  using C = std::complex<float>;
  Problem<C, C, C> p{{3, 1}, {1, 1}, {{1, 0}, {1, 0}, {1, 0}}, {{0, 0}}, {2, 5}, OutputModeSame};
  Bench<C, C, C> bench(p);
  EXPECT_EQ(bench.run(1)[0], C(4, 10));
  bench.front->setup(p.h.data(), p.u.data(), bench.y.data(), &p.padValue, false);
  EXPECT_EQ(bench.run(1)[0], C(4, 0));
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
    EXPECT_THAT(std::vector(y.begin() + 3, y.end()), Each(-77));
  }
}

TEST(ConvCorrFront, AnIntermediateThatOutgrowsItsArrayIsNotComputed) {
  DoubleBench bench({{2, 1}, {4, 4}, {1, 1}, std::vector<double>(64, 1), 0, OutputModeSame}, true, {1, 1});
  bench.uDims[0] = bench.uDims[1] = 8;
  bench.run(0);
  bench.uDims[0] = 2;
  EXPECT_EQ(bench.run(16)[0], 4.0);
}

TEST(ConvCorrFront, AShrunkSeparableFilterIsReadNoFurther) {  // the address sanitizer is the judge
  const P p{{4, 1}, {4, 2}, {1, 2, 3, 4}, std::vector<double>(8, 1), 5, OutputModeSame};
  DoubleBench bench(p, true, {1, 1});
  std::vector<double> column{2};
  bench.front->tune(column.data(), nullptr, nullptr);
  bench.hDims[0] = 1;
  EXPECT_THAT(bench.run(8), ElementsAre(4, 4, 4, 4, 12, 12, 12, 12));
}

TEST(ConvCorrFront, AnAlgorithmModeOutOfRangeDoesNothing) {
  for (const PadTypeEnum padType : {PadTypeConstant, PadTypeReplicate, PadTypeEnum(6)}) {
    for (const std::vector<double>& row : {std::vector<double>{}, {1, 2}}) {
      P p = ramp;
      p.algorithmMode = padType == PadTypeEnum(6) ? AlgorithmModeCorrelation : AlgorithmModeEnum(7);
      p.padType = padType;
      DoubleBench bench(p, true, row);
      bench.run(0);
      bench.front->tune(nullptr, nullptr, &p.padValue);
      bench.run(0);
    }
  }
}

TEST(ConvCorrFront, PassesAndStages) {
  DoubleBench plain(ramp), separable(ramp, false, {1});
  EXPECT_EQ(plain.front->getConvCorr1(), plain.front->getConvCorr());
  EXPECT_EQ(plain.front->getConvCorr2(), plain.front->getConvCorr());
  EXPECT_NE(separable.front->getConvCorr1(), separable.front->getConvCorr2());
  EXPECT_TRUE(separable.front->isSeparable() && separable.front->getIsSeparable());
  EXPECT_TRUE(plain.front->useConstantPad());
  const auto before = plain.run(8);
  for (const int stage : {5, 6, 2, 2}) plain.front->setup(static_cast<setupModeT>(stage));
  EXPECT_EQ(plain.run(8), before) << "stages 5, 6, 2 and 2 again";
}

TEST(ConvCorrFront, EachFixedPointCastTakesTheModesOfItsRole) {
  using namespace KarnDSPFixpt;  // NOLINT: types and modes by their short names
  const auto role = [](unsigned word, fxpModeOverflow_tag overflow) {
    return makeAttributes({.value = {word, 0}, .product = {3, 0}, .accumulator = {3, 0}, .overflow = overflow});
  };
  const auto input = role(4, fxpOverflowSaturate), filter = role(4, fxpOverflowZero),
             accumulator = role(3, fxpOverflowWrap), output = role(3, fxpOverflowSymmetric);
  const auto line = [](const DSPDataAttributesHandle& type, const std::vector<int>& values) {
    auto array = makeFixpt(type, static_cast<int>(values.size()));
    for (std::size_t i = 0; i < values.size(); ++i) (*array)[static_cast<int>(i)] = values[i];
    return array.release();
  };
  int dims[] = {4};
  ReferenceHost host;
  ConvCorrTolk<Fixpt, Fixpt, Fixpt> front(host.getAdaptor(), 1, dims, 1, dims, PadTypeReplicate, OutputModeValid,
                                          AlgorithmModeCorrelation, NormNone, false, input, output, filter,
                                          accumulator);
  host.provideWorkVectors(front.getAllocator());
  Fixpt* const y = line(output, {0});
  front.setup(line(filter, {-3, 2, 1, -2}), line(input, {7, -5, 1, -4}), y, nullptr, false);
  front.computeOutputs();
  // Products -21, -10, 1, 8 saturate to -4, -4, 1, 3; sums -4, -8, 1, 4 wrap to -4, 0, 1, -4; -4 is not symmetric.
  EXPECT_EQ((*y)[0].toDouble(), -3);
}

TEST(ConvCorrProcessor, ARestrictedRegionGivesThePartOfTheWholeOutput) {
  std::mt19937 random(3);
  for (int trial = 0; trial < 100; ++trial) {
    RegionRun run(random);
    const auto& p = run.problem;
    const auto part = run([&](AllocatorTolk* allocator, auto& s) {
      return ConvCorr<float, float, float, AllocatorTolk>(allocator, 2, s.hDims, false, s.uDims, p.outputMode,
                                                          p.algorithmMode, p.norm, p.padType, s.centre, s.h, s.u, s.y,
                                                          &s.region);
    });
    for (std::size_t i = 0; i < part.size(); ++i) {
      ASSERT_TRUE(sameBits(part[i], outputAt(p, run.column(i), run.row(i)))) << p << ", output " << i;
    }
  }
}

}  // namespace
}  // namespace BP::test
