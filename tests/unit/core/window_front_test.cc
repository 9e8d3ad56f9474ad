// What all fronts have in common: how the host gives extents, and calls that come before any data.
#include "orvane/core/window_front.h"

#include <gmock/gmock.h>

#include <functional>
#include <memory>
#include <vector>

#include "orvane/convcorr/conv_corr_tolk.h"
#include "orvane/host/reference_host.h"
#include "orvane/matching/template_matching_tolk.h"
#include "orvane/median/median_filter_tolk.h"

namespace BP::test {
namespace {

using KarnDSPFixpt::Fixpt;

/// Extents, window and input of a front, and its outputs in mode same with pad replicate.
struct Scene {
  int hNumDims, uNumDims;
  std::vector<int> hDims{2, 1}, rowDims{1, 1}, uDims{3, 1}, roi = std::vector<int>(4);
  std::vector<double> h{1, 10}, row{2}, u{1, 2, 3}, y = std::vector<double>(8, -77);

  /// No pointer to entries that the host says are not there.
  static int* tableOf(int count, std::vector<int>& dims) { return count > 0 ? dims.data() : nullptr; }

  template <class FrontT, class StartT, class... ArgsT>
  std::vector<double> run(StartT&& start, ArgsT... args) {
    ReferenceHost host;
    FrontT front(host.getAdaptor(), hNumDims, tableOf(hNumDims, hDims), args...);
    host.provideWorkVectors(front.getAllocator());
    start(front);
    front.computeOutputs();
    EXPECT_TRUE(host.getMessages().empty());
    return y;
  }
  auto input() { return std::pair(uNumDims, tableOf(uNumDims, uDims)); }

  std::vector<double> convolve() {
    const auto [count, dims] = input();
    return run<ConvCorrTolk<double, double, double>>(
        [&](auto& front) { front.setup(h.data(), u.data(), y.data(), nullptr, false); }, count, dims, PadTypeReplicate,
        OutputModeSame, AlgorithmModeCorrelation, NormNone, true);
  }
  std::vector<double> convolveTwice() {
    const auto [count, dims] = input();
    return run<ConvCorrTolk<double, double, double>>(
        [&](auto& front) { front.setup(h.data(), row.data(), u.data(), y.data(), nullptr, false); }, hNumDims,
        tableOf(hNumDims, rowDims), count, dims, PadTypeReplicate, OutputModeSame, AlgorithmModeCorrelation, true);
  }
  std::vector<double> median() {
    const auto [count, dims] = input();
    return run<MedianFilterTolk<double, double>>([&](auto& front) { front.setup(u.data(), y.data(), nullptr, false); },
                                                 count, dims, PadTypeReplicate, OutputModeSame, true);
  }
  std::vector<double> match() {
    const auto [count, dims] = input();
    return run<TemplateMatchingTolk<double, double, double>>(
        [&](auto& front) {
          front.setup(h.data(), u.data(), roi.data(), y.data(), nullptr, 0, nullptr, nullptr, nullptr, nullptr, false);
        },
        count, dims, PadTypeReplicate, OutputModeSame, AlgorithmModeSAD, TMModeMetric, true, false, false,
        SearchMethodExhaustive);
  }
};

TEST(WindowFrontTest, NegativeRanksCountAsNoEntries) {
  const auto outputs = [](int hNumDims, int uNumDims, auto run) { return std::invoke(run, Scene{hNumDims, uNumDims}); };
  const auto expect = [&](auto run, std::vector<double> withoutInput, std::vector<double> withoutWindow) {
    withoutInput.resize(8, -77), withoutWindow.resize(8, -77);
    for (const int none : {0, -1}) {
      EXPECT_EQ(outputs(2, none, run), withoutInput) << "input rank " << none;
      EXPECT_EQ(outputs(none, 2, run), withoutWindow) << "window rank " << none;
      EXPECT_THAT(outputs(none, none, run), testing::Each(-77)) << "both ranks " << none;
    }
  };
  expect(&Scene::convolve, {11}, {1, 2, 3});
  expect(&Scene::convolveTwice, {22}, {2, 4, 6});
  expect(&Scene::median, {1}, {1, 2, 3});
  expect(&Scene::match, {0}, {0, 1, 2});
}

/// Calls everything that swaps data on a front that was given none.
template <class FrontT, class... ArgsT>
void swapBeforeTheStart(ArgsT... args) {
  ReferenceHost host;
  const KarnDSPFixpt::DSPDataAttributesHandle type(16, 0, 16, 0, 16, 0, host.getAdaptor(), fxpOverflowSaturate,
                                                   fxpRoundFloor, true, false, "value", "product", "sum",
                                                   KarnSimCommon::overrideNone);
  int dims[2] = {1, 1};
  std::int16_t data = 7;
  const auto make = [&](auto... handles) {
    FrontT front(host.getAdaptor(), 2, dims, 2, dims, PadTypeConstant, OutputModeSame, args..., handles...);
    front.tune(&data, &data, nullptr);
    front.updateInputPointers(&data, &data);
    front.updateOutputPointers(&data, &data, &data, &data, &data);
  };
  if constexpr (std::is_same_v<FrontT, MedianFilterTolk<Fixpt, Fixpt>>) {
    make(type, type, type);
  } else {
    make(type, type, type, type);
  }
  EXPECT_EQ(data, 7);
  EXPECT_TRUE(host.getMessages().empty());
}

TEST(WindowFrontTest, SwapsBeforeAnyObjectWasGivenDoNothing) {
  swapBeforeTheStart<ConvCorrTolk<Fixpt, Fixpt, Fixpt>>(AlgorithmModeConvolution, NormNone, false);
  swapBeforeTheStart<MedianFilterTolk<Fixpt, Fixpt>>(false);
  swapBeforeTheStart<TemplateMatchingTolk<Fixpt, Fixpt, Fixpt>>(AlgorithmModeSAD, TMModeBestMatchNeighborhood, false,
                                                                false, true, SearchMethodExhaustive);
}

}  // namespace
}  // namespace BP::test
