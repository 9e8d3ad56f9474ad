// What the front and the processor add to matches: calls in a row, pointers, sizes that vary, low ranks.
#include "orvane/matching/template_matching_tolk.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "orvane/host/reference_host.h"
#include "tests/support/matching_calls.h"

namespace BP::test {
namespace {

using Front = TemplateMatchingTolk<double, double, double>;
using testing::Each;

TEST(MatchingFront, CallsInARowEqualThePlainModel) {
  std::mt19937 random(21);
  for (int trial = 0; trial < 1000 && !testing::Test::HasFailure(); ++trial) expectCallsLikeTheModel(random);
}

TEST(MatchingFront, PointersUpdatesAndVariableSizes) {
  int hDims[] = {2, 1}, uDims[] = {5, 1}, location[2], elsewhere[2];
  double h[] = {5, 6}, u[] = {1, 5, 6, 1, 1}, other[] = {0, 0, 0, 5, 6, 0, 7}, single[] = {7};
  ReferenceHost host;
  Front front(host.getAdaptor(), 2, hDims, 2, uDims, PadTypeConstant, OutputModeValid, AlgorithmModeMaxAD,
              TMModeBestMatch, true, false, false, SearchMethodExhaustive);
  host.provideWorkVectors(front.getAllocator());
  front.setup(h, u, nullptr, nullptr, location, 0, nullptr, nullptr, nullptr, nullptr, false);
  const auto found = [&](int* at) {
    front.computeOutputs();
    return at[0];
  };
  EXPECT_EQ(found(location), 1);
  front.updateInputPointers(other, nullptr);
  EXPECT_EQ(found(location), 3);
  uDims[0] = 7;
  hDims[0] = 1;
  front.tune(single, nullptr, nullptr);
  EXPECT_EQ(found(location), 6);
  front.updateOutputPointers(nullptr, elsewhere, nullptr, nullptr, nullptr);
  front.updateInputPointers(nullptr, h);
  EXPECT_EQ(found(elsewhere), 3);
  EXPECT_EQ(location[0], 6);
  EXPECT_FALSE(front.useConstantPad());
  EXPECT_EQ(front.getPadType(), PadTypeConstant);
}

/// Tables have as many entries as the rank says; the address sanitizer sees reads beyond them.
TEST(MatchingProcessor, ARankBelowTwoScoresNothingAndStaysWithinItsTables) {
  for (int code = 0; code < 2 * 3 * 4; ++code) {
    const int rank = code % 2;
    const auto mode = static_cast<TMModeEnum>(code / 2 % 3);
    const bool hasRoi = code / 6 % 2 == 1, isEmpty = code / 12 == 1;
    std::vector<int> extents(static_cast<std::size_t>(rank), 2), roi(static_cast<std::size_t>(rank), isEmpty ? 0 : 1);
    std::vector<int> at{7, 7};
    std::vector<double> values{1, 2}, scores{7, 7}, around{7, 7, 7, 7};
    bool valid[2] = {};
    CleverPtr<int> dims, roiTable, location;
    CleverPtr<double> data, y, block;
    CleverPtr<bool> blockValid, roiValid;
    dims.ptr = extents.data(), roiTable.ptr = roi.data(), location.ptr = at.data();
    data.ptr = values.data(), y.ptr = scores.data(), block.ptr = around.data();
    blockValid.ptr = &valid[0], roiValid.ptr = &valid[1];
    ReferenceHost host;
    AllocatorTolk allocator(host.getAdaptor());
    TemplateMatching<double, double, double, AllocatorTolk> processor(
        &allocator, rank, dims, false, dims, OutputModeSame, AlgorithmModeSAD, mode, hasRoi, true,
        SearchMethodExhaustive, roiTable, data, data, roiTable, roiTable, y, location, dims, block, blockValid,
        roiValid);
    host.provideWorkVectors(allocator);
    allocator.refreshWorkVectors();
    for (const auto stage : {setupAttachWork, setupLinkTables, setupStart}) processor.setup(stage);
    for (int run = 0; run < 2; ++run) processor.invoke();
    EXPECT_THAT(scores, Each(7)) << code;
    EXPECT_THAT(std::vector(at.begin() + rank, at.end()), Each(7)) << code;
    const bool isCleared = mode == TMModeBestMatchNeighborhood && hasRoi && isEmpty && rank == 1;
    EXPECT_THAT(std::vector(around.begin() + (isCleared ? 2 : 0), around.end()), Each(7)) << code;
  }
}

}  // namespace
}  // namespace BP::test
