// What the front and the processor add to medians: sizes that vary, stages, ranks, complex elements, regions.
#include <gmock/gmock.h>

#include <algorithm>
#include <vector>

#include "orvane/host/reference_host.h"
#include "orvane/median/median_filter_tolk.h"
#include "orvane/platform/karn_fixpt_3_make.h"
#include "tests/support/region_run.h"
#include "tests/unit/median/median_model.h"

namespace BP::test {
namespace {

using KarnDSPFixpt::Fixpt;
using testing::Each;
using testing::ElementsAre;

constexpr double untouched = 77;

/// A front of doubles with its host; the output has room to spare.
struct Bench {
  std::vector<int> hDims, uDims;
  std::vector<double> u, y = std::vector<double>(100, untouched);
  double pad = 9;
  ReferenceHost host;
  MedianFilterTolk<double, double> front;

  Bench(std::vector<int> window, std::vector<int> extents, std::vector<double> values, OutputModeEnum mode,
        PadTypeEnum padType = PadTypeConstant)
      : hDims(std::move(window)),
        uDims(std::move(extents)),
        u(std::move(values)),
        front(host.getAdaptor(), static_cast<int>(hDims.size()), hDims.data(), static_cast<int>(uDims.size()),
              uDims.data(), padType, mode, true) {
    host.provideWorkVectors(front.getAllocator());
    front.setup(u.data(), y.data(), mode == OutputModeValid ? nullptr : &pad, false);
  }
  /// The first `count` outputs of one run; the rest must stay as it was.
  std::vector<double> run(std::size_t count) {
    std::ranges::fill(y, untouched);
    front.computeOutputs();
    EXPECT_THAT(host.getMessages(), testing::IsEmpty());
    const auto behind = y.begin() + static_cast<std::ptrdiff_t>(count);
    EXPECT_THAT(std::vector(behind, y.end()), Each(untouched)) << "written behind the output";
    return {y.begin(), behind};
  }
};

TEST(MedianFront, AWindowMayShrinkAndGrowWithinItsStoreOnly) {
  Problem<double, double, double> p{{3, 2}, {4, 3}, {}, {}, 0, OutputModeSame, {}, {}, PadTypeSymmetric};
  for (int i = 0; i < 12; ++i) p.u.push_back((i * 7) % 12);
  Bench bench({3, 2}, {4, 3}, p.u, p.outputMode, p.padType);
  const auto check = [&](int width, int height, int inputWidth, int inputHeight, bool fits = true) {
    bench.hDims = {p.hDims[0] = width, p.hDims[1] = height};
    bench.uDims = {p.uDims[0] = inputWidth, p.uDims[1] = inputHeight};
    std::vector<double> expected;
    for (int i = 0; fits && i < inputWidth * inputHeight; ++i) {
      expected.push_back(medianOf(windowAt(p, i % inputWidth, i / inputWidth), rankBySort<double>,
                                  [](double lower, double upper) { return upper * 0.5 + lower * 0.5; }));
    }
    EXPECT_EQ(bench.run(expected.size()), expected) << width << " x " << height;
  };
  check(3, 2, 4, 3);
  check(1, 5, 2, 2);
  check(6, 1, 3, 4);
  for (const auto& [width, height] : {std::pair{7, 1}, {1 << 16, 1 << 16}, {0, 3}, {-1, -1}}) {
    check(width, height, 3, 4, false);
  }
  check(2, 2, 4, 3);
  bench.hDims = {3, 3};
  bench.front.setup(setupAttachWork);
  check(3, 3, 4, 3);
}

TEST(MedianFront, StagesMayRepeatAndOnlyThePadValueIsTuned) {
  Bench bench({3, 1}, {2, 1}, {1, 2}, OutputModeFull);
  double pad = -9;
  bench.front.tune(&pad, &pad, nullptr);
  EXPECT_THAT(bench.run(4), ElementsAre(9, 2, 2, 9));
  bench.front.tune(nullptr, nullptr, &pad);
  for (const int stage : {5, 6, 2, 2}) bench.front.setup(static_cast<setupModeT>(stage));
  EXPECT_THAT(bench.run(4), ElementsAre(-9, 1, 1, -9));
  EXPECT_EQ(bench.front.getMedianFilter(), bench.front.getMedianFilter()->getConvCorr2());
  EXPECT_THAT(Bench({3, 1}, {3, 1}, {3, 1, 2}, OutputModeValid).run(1), ElementsAre(2)) << "without a pad value";
}

TEST(MedianFront, OneDimensionIsALineMoreThanTwoFilterTheFirstPlaneAndNoneDoNothing) {
  const std::vector<double> u{4, 1, 3, 2, 9, 9, 9, 9};
  for (const auto& [window, extents] : {std::pair(std::vector{3}, std::vector{4}), {{3, 1, 2}, {4, 1, 2}}}) {
    EXPECT_THAT(Bench(window, extents, u, OutputModeSame, PadTypeReplicate).run(4), ElementsAre(4, 3, 2, 2));
  }
  Bench({}, {}, u, OutputModeSame, PadTypeReplicate).run(0);
}

TEST(MedianFront, AnEmptyWindowOfBooleansIsATie) {
  int hDims[] = {0, 1}, uDims[] = {2, 1};
  bool u[2] = {}, y[2] = {};
  ReferenceHost host;
  MedianFilterTolk<bool, bool> front(host.getAdaptor(), 2, hDims, 2, uDims, PadTypeReplicate, OutputModeSame, false);
  host.provideWorkVectors(front.getAllocator());
  front.setup(u, y, nullptr, false);
  front.computeOutputs();
  EXPECT_THAT(y, Each(true));
}

TEST(MedianFront, ComplexElementsAreRankedByMagnitude) {
  const auto type = KarnDSPFixpt::makeAttributes({.value = {8, 0}, .isComplex = true});
  int hDims[] = {3, 1}, uDims[] = {3, 1};
  ReferenceHost host;
  MedianFilterTolk<Fixpt, Fixpt> front(host.getAdaptor(), 2, hDims, 2, uDims, PadTypeReplicate, OutputModeValid, false,
                                       type, type, type);
  host.provideWorkVectors(front.getAllocator());
  Fixpt* const u = KarnDSPFixpt::makeFixpt(type, 3).release();
  Fixpt* const y = KarnDSPFixpt::makeFixpt(type, 1).release();
  (*u)[0].setComplex(0, -9);
  (*u)[1].setComplex(1, 0);
  (*u)[2].setComplex(3, -4);
  front.setup(u, y, nullptr, false);
  front.computeOutputs();
  EXPECT_EQ((*y)[0].toDouble(), 3);
  EXPECT_EQ(y->imaginaryToDouble(), -4);
}

TEST(MedianProcessor, ARegionOfInterestHoldsItsPartOfTheOutput) {
  std::mt19937 random(2);
  for (int trial = 0; trial < 20; ++trial) {
    RegionRun run(random);
    const auto& p = run.problem;
    const auto part = run([&](AllocatorTolk* allocator, auto& s) {
      return MedianFilter<float, float, AllocatorTolk>(allocator, 2, s.hDims, false, s.uDims, p.outputMode, p.padType,
                                                       s.centre, s.u, s.y, &s.region);
    });
    for (std::size_t i = 0; i < part.size(); ++i) {
      const auto window = windowAt(p, run.column(i), run.row(i));
      EXPECT_EQ(part[i], medianOf(window, rankBySort<float>, [](float a, float b) { return b * 0.5F + a * 0.5F; }));
    }
  }
}

}  // namespace
}  // namespace BP::test
