#include "orvane/exec/terminal_kernel.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <functional>
#include <utility>
#include <vector>

#include "orvane/algorithm/algorithm.h"
#include "orvane/core/allocator.h"
#include "orvane/input/pad_extended_input.h"
#include "tests/support/plan_scene.h"

namespace BP::test {
namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;
using Position = std::pair<int, int>;
using FilterBlock = TraversableDataBlock<double, Allocator>;
using Out = Output<double, Allocator>;

/// Notes the windows that it is asked for, by the input index of their first element; the score is a given function.
template <class InputT>
class ProbeAlgorithm : public DistanceMetricAlgorithm<Allocator, FilterBlock, InputT, double, double> {
 public:
  using Base = DistanceMetricAlgorithm<Allocator, FilterBlock, InputT, double, double>;
  using Base::Base;

  std::vector<Position> windows;
  std::function<double(Position)> scoreOf = [](Position p) { return 100 * p.second + p.first; };

  void scoreAt(InsideSector&, Out& y1, int imageIndex) {
    const int pitch = this->input->getBlock().getDims().ptr[0];
    note({imageIndex % pitch, imageIndex / pitch}, y1);
  }
  void boundaryAt(BoundarySector&, Out& y1, CleverPtr<int>& index) { note({index.ptr[0], index.ptr[1]}, y1); }
  void outsideAt(OutsideSector&, Out& y1, CleverPtr<int>& index) { note({index.ptr[0], index.ptr[1]}, y1); }

 private:
  void note(Position window, Out& y1) {
    windows.push_back(window);
    y1.getBlock().getData().ptr[0] = scoreOf(window);
  }
};

/// A kernel over an input and an output of the same extents; the output begins at (`originX`, `originY`).
template <class InputT>
struct Scene {
  Allocator allocator;
  Table zeros{{0, 0}}, ones{{1, 1}}, hDims, hLoc{{-1, 0}}, hStart{{0, 0}}, hEnd{{0, 0}}, uDims, yOrigin;
  std::vector<double> pixels, results;
  CleverPtr<double> h, u, y, y1;
  double scratchValue = 0;
  FilterBlock filter{&allocator, 2, hDims, zeros, hLoc, hStart, hEnd, h};
  InputT input{&allocator, 2, uDims, zeros, zeros, u};
  Out output{&allocator, 2, uDims, yOrigin, zeros, y}, scratch{&allocator, 2, ones, zeros, zeros, y1};
  ProbeAlgorithm<InputT> algorithm{&allocator, &filter, &input};
  TerminalKernel<Out, ProbeAlgorithm<InputT>, Allocator> kernel{&allocator, &scratch, &algorithm};
  Table best{{-9, -9}}, start{{0, 0}}, end{{0, 0}}, edges{{0, 1}};
  InsideSector insideSector{2, start, end};
  BoundarySector boundarySector{2, start, end, edges, edges};
  OutsideSector outsideSector{2, start, end, edges, edges};

  Scene(std::vector<int> extents, std::vector<int> window, std::vector<int> origin)
      : hDims(std::move(window)), uDims(std::move(extents)), yOrigin(std::move(origin)) {
    pixels.assign(static_cast<std::size_t>(uDims.values[0] * uDims.values[1]), 0);
    results.assign(pixels.size(), -1);
    u.ptr = pixels.data();
    y.ptr = results.data();
    y1.ptr = &scratchValue;
    kernel.setup(setupStart);
    output.setup(setupStart);
  }
  void cover(const std::vector<int>& first, const std::vector<int>& last) {
    std::ranges::copy(first, start.ptr);
    std::ranges::copy(last, end.ptr);
  }
};

using Padded = PadExtendedInput<double, double, Allocator, PadTypeSymmetric>;
using ConstantPadded = PadExtendedInput<double, double, Allocator, PadTypeConstant>;
using Plain = Input<double, double, Allocator>;

TEST(TerminalKernelTest, RunStoresEachWindowAtItsOutput) {
  Scene<Padded> scene({6, 5}, {3, 1}, {-1, 1});
  for (int kind = 0; kind < 3; ++kind) {
    scene.algorithm.windows.clear();
    scene.results.assign(30, -1);
    scene.cover({1, 2}, {2, 3});
    if (kind == 0) scene.kernel.runInside(scene.insideSector, scene.output);
    if (kind == 1) scene.kernel.runBoundary(scene.boundarySector, scene.output);
    if (kind == 2) scene.kernel.runOutside(scene.outsideSector, scene.output);
    // The window begins one to the left of the position; output element 0 lies at (-1, 1).
    EXPECT_THAT(scene.algorithm.windows, ElementsAre(Position(0, 2), Position(1, 2), Position(0, 3), Position(1, 3)));
    std::vector<double> expected(30, -1);
    for (const int i : {8, 9, 14, 15}) expected[static_cast<std::size_t>(i)] = 100 * (i / 6 + 1) + i % 6 - 2;
    EXPECT_THAT(scene.results, ElementsAreArray(expected)) << kind;
  }
}

template <class SceneT>
void expectPadOutput(SceneT& scene, double boundary, std::size_t windows) {
  scene.input.getPadOutput().ptr[0] = 5;
  scene.cover({0, 0}, {1, 0});
  scene.kernel.runOutside(scene.outsideSector, scene.output);
  EXPECT_EQ(scene.results[1], 5);
  EXPECT_EQ(scene.algorithm.windows.size(), 0u);
  scene.kernel.runBoundary(scene.boundarySector, scene.output);
  EXPECT_EQ(scene.results[1], boundary);
  EXPECT_EQ(scene.algorithm.windows.size(), windows);
}

TEST(TerminalKernelTest, WithoutAPadThatReadsTheInputOutputsTakeThePadOutput) {
  Scene<ConstantPadded> constant({4, 4}, {1, 1}, {0, 0});
  expectPadOutput(constant, 0, 2);
  Scene<Plain> plain({4, 4}, {1, 1}, {0, 0});
  expectPadOutput(plain, 5, 0);
}

TEST(TerminalKernelTest, SteppedSearchVisitsItsPattern) {
  for (const bool isInside : {true, false}) {
    Scene<Padded> scene({40, 40}, {1, 1}, {0, 0});
    scene.hLoc.values = {0, 0};
    scene.algorithm.scoreOf = [](Position p) { return std::abs(p.first - 22) + std::abs(p.second - 9); };
    scene.cover({0, 0}, {30, 30});
    if (isInside) scene.kernel.stepSearchInside(scene.insideSector, scene.output, scene.best);
    if (!isInside) scene.kernel.stepSearchBoundary(scene.boundarySector, scene.output, scene.best);
    const auto& windows = scene.algorithm.windows;
    EXPECT_THAT(scene.best.values, ElementsAre(22, 9));
    EXPECT_EQ(windows.size(), 8u * 9u) << "rounds of step 8 down to 1";
    EXPECT_THAT(std::vector<Position>(windows.begin(), windows.begin() + 9),
                ElementsAre(Position(7, 7), Position(15, 7), Position(23, 7), Position(7, 15), Position(15, 15),
                            Position(23, 15), Position(7, 23), Position(15, 23), Position(23, 23)));
    EXPECT_EQ(windows[9], Position(16, 0)) << "centre (23, 7), step 7, clipped to the low edge";
    EXPECT_EQ(windows[11], Position(isInside ? 30 : 29, 0)) << "and to the high one, outside the inside to one less";
  }
}

TEST(AlgorithmTest, StagesOfTheCommonSetUp) {
  Scene<Padded> scene({4, 4}, {3, 2}, {0, 0});
  EXPECT_TRUE(scene.algorithm.getIsStarted());
  EXPECT_EQ(scene.filter.getNumElements(), 6);
  scene.input.getPadOutput().ptr[0] = 5;
  scene.algorithm.getMinIdxCollector().setHasValue(true);
  scene.hDims.values = {2, 2};
  scene.kernel.setup(setupInvoke);
  EXPECT_EQ(scene.hEnd.values[0], 1);
  EXPECT_EQ(scene.filter.getNumElements(), 6) << "strides and counts wait for a resize";
  EXPECT_FALSE(scene.algorithm.getMinIdxCollector().getHasValue());
  scene.algorithm.getMinIdxCollector().setHasValue(true);
  scene.kernel.setup(setupResize);
  EXPECT_EQ(scene.filter.getNumElements(), 4);
  EXPECT_TRUE(scene.algorithm.getMinIdxCollector().getHasValue());
  EXPECT_EQ(scene.input.getPadOutput().ptr[0], 5);
  scene.kernel.setup(setupStart);
  EXPECT_EQ(scene.input.getPadOutput().ptr[0], 0);
}

}  // namespace
}  // namespace BP::test
