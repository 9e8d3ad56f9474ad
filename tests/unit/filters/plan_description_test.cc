#include "orvane/filters/plan_description.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <random>
#include <stdexcept>

#include "tests/support/pad_walk.h"
#include "tests/support/plan_scene.h"
#include "tests/support/random_values.h"

namespace BP::test {
namespace {

using testing::HasSubstr;

std::vector<PlanSector> asDescribed(const std::vector<SectorCopy>& sectors) {
  std::vector<PlanSector> result;
  for (const SectorCopy& s : sectors) {
    result.push_back({static_cast<SectorKind>(s.kind), s.start, s.end, s.preEdge, s.postEdge});
  }
  return result;
}

TEST(PlanDescriptionTest, IsThePlanThatAHostsProcessorRuns) {
  std::mt19937 random(11);
  for (int trial = 0; trial < 400; ++trial) {
    PlanRequest request{.mode = allModes[pick(random, 0, 2)], .pad = allPads[pick(random, 0, 4)]};
    std::vector<int> centre;
    RegionSpec region;
    const int rank = pick(random, 1, 3);
    for (int d = 0; d < rank; ++d) {
      request.input.push_back(pick(random, 1, 9));
      request.window.push_back(pick(random, 1, 9));
      centre.push_back((request.window.back() - 1) / 2);
      region.loc.push_back(pick(random, -12, 8));
      region.dims.push_back(pick(random, 1, 14));
    }
    if (pick(random, 0, 1) == 1) request.reach = pick(random, 0, 2);
    const bool hasRegion = pick(random, 0, 1) == 1;
    if (hasRegion) request.region = PlanRegion{region.loc, region.dims};
    const int reach = request.reach.value_or(request.mode == OutputModeValid ? 0 : 1);

    PlanScene scene(
        request.window, centre, request.input,
        hasRegion && reach == 2 ? RegionSpec{} : supportOf(request.mode, request.window, centre, request.input),
        hasRegion ? region : RegionSpec{}, reach, request.pad != PadTypeConstant);
    const PlanDescription plan = describePlan(request);
    ASSERT_EQ(plan.sectors, asDescribed(sectorsOf(scene))) << "trial " << trial;
    EXPECT_EQ(plan.centre, centre);
    EXPECT_EQ(plan.reach, reach);
    for (std::size_t d = 0; d < centre.size(); ++d) {
      const auto& sections = plan.dimensions[d].sections;
      const bool isEmpty = plan.output.extents[d] < 1;
      EXPECT_EQ(plan.dimensions[d].overlap, scene.plan->getIsHgtUpd(static_cast<int>(d)));
      int next = plan.output.first[d];
      for (const PlanSection& section : sections) {
        EXPECT_TRUE(isEmpty || section.first == next) << "the sections lie in the order in which they are listed";
        next += section.count;
      }
      EXPECT_EQ(next, plan.output.first[d] + std::max(plan.output.extents[d], 0));
    }
  }
}

TEST(PlanDescriptionTest, RefusesWhatDoesNotFit) {
  const PlanRequest good{.input = {9, 9}, .window = {3, 3}};
  const auto refused = [&](const char* words, auto&& spoil) {
    PlanRequest request = good;
    spoil(request);
    EXPECT_THAT([&] { describePlan(request); }, testing::ThrowsMessage<std::invalid_argument>(HasSubstr(words)));
  };
  EXPECT_NO_THROW(describePlan(good));
  refused("mode is none of", [](PlanRequest& r) { r.mode = static_cast<OutputModeEnum>(3); });
  refused("pad is none of", [](PlanRequest& r) { r.pad = static_cast<PadTypeEnum>(0); });
  refused("reach: -1", [](PlanRequest& r) { r.reach = -1; });
  refused("input has 0 dimensions", [](PlanRequest& r) { r.input.clear(); });
  refused("window: 0 is not one of 1 to", [](PlanRequest& r) { r.window[1] = 0; });
  refused("extents of the region", [](PlanRequest& r) { r.region = PlanRegion{{0, 0}, {1}}; });
  refused("region has more than", [](PlanRequest& r) { r.region = PlanRegion{{0, 0}, {1 << 20, 1 << 20}}; });
}

}  // namespace
}  // namespace BP::test
