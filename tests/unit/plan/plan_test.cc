#include "orvane/plan/plan.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <map>
#include <random>

#include "tests/support/plan_scene.h"

namespace BP::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// A scene in an output mode.
PlanScene sceneOf(OutputModeEnum mode, const std::vector<int>& h, const std::vector<int>& u, RegionSpec roi = {},
                  bool padUsesData = false) {
  std::vector<int> centre;
  for (const int extent : h) centre.push_back((extent - 1) / 2);
  return {h, centre, u, supportOf(mode, h, centre, u), std::move(roi), reachOf(mode), padUsesData};
}

TEST(PlanTest, KindsAndEdgesOfAWindowThatExceedsTheInput) {
  constexpr auto boundary = SectorCopy::boundary;
  PlanScene scene = sceneOf(OutputModeSame, {7, 1}, {4, 1});
  EXPECT_THAT(sectorsOf(scene),
              ElementsAre(SectorCopy{boundary, {1, 0}, {2, 0}, {0}, {0}}, SectorCopy{boundary, {0, 0}, {0, 0}, {0}, {}},
                          SectorCopy{boundary, {3, 0}, {3, 0}, {}, {0}}));
  EXPECT_TRUE(scene.plan->getFilterExceedsInput() && scene.plan->getIsHgtUpd(0));
  PlanScene negative = sceneOf(OutputModeSame, {9, 1}, {3, 1}, {{8, 0}, {2, 1}});
  EXPECT_THAT(sectorsOf(negative), IsEmpty()) << "a negative extent, where the formulas would give a centre";
}

TEST(PlanTest, RegionsThatDoNotMeetYieldNothingAndLeaveTheOriginAtTheSecond) {
  PlanScene scene = sceneOf(OutputModeSame, {9, 3}, {4, 5}, {{-40, 1}, {2, 2}});
  EXPECT_THAT(sectorsOf(scene), IsEmpty());
  EXPECT_EQ(scene.yOrigin.ptr[0], -40);
  EXPECT_EQ(scene.yOrigin.ptr[1], 1);
}

TEST(PlanTest, AMovingRegionNeedsNoFurtherSetUp) {
  PlanScene scene = sceneOf(OutputModeSame, {3, 3}, {10, 10}, {{2, 2}, {3, 3}});
  EXPECT_THAT(sectorsOf(scene), ElementsAre(SectorCopy{SectorCopy::inside, {2, 2}, {4, 4}, {}, {}}));
  for (const int x : {30, 9}) {
    scene.secondLoc.values[0] = x;
    scene.setup(setupInvoke);
    EXPECT_EQ(sectorsOf(scene).size(), x == 9 ? 1u : 0u);
  }
  EXPECT_EQ(scene.yDims.ptr[0], 1);
}

TEST(PlanTest, ReplanningChangesNothingAndAReturnGivesTheFirstPlan) {
  PlanScene scene = sceneOf(OutputModeFull, {4, 3}, {9, 6}, {}, true);
  const auto first = sectorsOf(scene);
  for (const int width : {9, 9, 2, 9}) {
    scene.uDims.values = {width, 6};
    scene.firstDims.values = {width + 3, 8};
    scene.setup(setupResize);
    EXPECT_EQ(scene.plan->getFilterExceedsInput(), width == 2);
    EXPECT_EQ(scene.plan->getHasInside(), width != 2);
    EXPECT_EQ(sectorsOf(scene) == first, width == 9);
  }
}

/// How a window lies in a dimension.
struct Crossing {
  bool low, high, misses;
};
Crossing crossingOf(int position, int hLoc, int h, int u) {
  const int first = position + hLoc, last = first + h - 1;
  return {first<0, last> u - 1, last < 0 || first > u - 1};
}

/// Checks a sector's kind and lists at one of its positions.
void checkSector(const PlanScene& scene, const SectorCopy& sector, const std::vector<int>& p) {
  for (int d = 0; d < scene.rank; ++d) {
    const auto i = PlanScene::at(d);
    const Crossing c = crossingOf(p[i], scene.hLoc.values[i], scene.hDims.values[i], scene.uDims.values[i]);
    EXPECT_TRUE(!c.low || std::ranges::count(sector.preEdge, d) == 1) << "low edge of dimension " << d;
    EXPECT_TRUE(!c.high || std::ranges::count(sector.postEdge, d) == 1) << "high edge of dimension " << d;
    EXPECT_FALSE(sector.kind == SectorCopy::inside && (c.low || c.high)) << "inside, dimension " << d;
    EXPECT_LE(sector.start[i], sector.end[i]) << "dimension " << d;
  }
}

/// How often a plan of this reach must visit a position. In one dimension outside sections come from two generators.
int expectedVisits(const PlanScene& scene, const std::vector<int>& p, int reach) {
  bool misses = false, crosses = false;
  for (std::size_t d = 0; d < p.size(); ++d) {
    const Crossing c = crossingOf(p[d], scene.hLoc.values[d], scene.hDims.values[d], scene.uDims.values[d]);
    misses = misses || c.misses;
    crosses = crosses || c.low || c.high;
  }
  if (misses) return reach < 2 ? 0 : scene.rank == 1 ? 2 : 1;
  return crosses && reach == 0 ? 0 : 1;
}

TEST(PlanTest, SectorsTileTheFittedOutputOverRandomGeometry) {
  std::mt19937 random(7);
  const auto pick = [&](int low, int high) { return std::uniform_int_distribution<int>(low, high)(random); };
  int sectorCount = 0;
  for (int trial = 0; trial < 3000; ++trial) {
    const int rank = pick(1, 3), reach = rank == 3 ? pick(0, 1) : pick(0, 2);
    std::vector<int> h, centre, u;
    RegionSpec first, second;
    for (int d = 0; d < rank; ++d) {
      h.push_back(pick(1, 9));
      u.push_back(pick(1, 9));
      centre.push_back(pick(0, 3) == 0 ? pick(-3, 12) : h.back() / 2);
      first.loc.push_back(pick(-10, 4));
      first.dims.push_back(pick(0, 16));
      second.loc.push_back(pick(-10, 4));
      second.dims.push_back(pick(0, 16));
    }
    const bool hasRoi = pick(0, 1) == 1;
    PlanScene scene(h, centre, u, first, hasRoi ? second : RegionSpec{}, reach, pick(0, 1) == 1);

    std::map<std::vector<int>, int> visits;
    for (const SectorCopy& sector : sectorsOf(scene)) {
      ++sectorCount;
      forEachPosition(sector.start, sector.end, [&](const std::vector<int>& p) {
        checkSector(scene, sector, p);
        ++visits[p];
      });
    }
    const auto inRegion = [&](const RegionSpec& region, const std::vector<int>& p) {
      for (std::size_t d = 0; d < p.size(); ++d) {
        if (p[d] < region.loc[d] || p[d] >= region.loc[d] + region.dims[d]) return false;
      }
      return true;
    };
    forEachPosition(std::vector<int>(u.size(), -14), std::vector<int>(u.size(), 26), [&](const std::vector<int>& p) {
      const bool isOutput = inRegion(first, p) && (!hasRoi || inRegion(second, p));
      const auto found = visits.find(p);
      ASSERT_EQ(found == visits.end() ? 0 : found->second, isOutput ? expectedVisits(scene, p, reach) : 0)
          << "trial " << trial << " position " << testing::PrintToString(p) << " reach " << reach;
    });
    ASSERT_FALSE(HasFailure());
  }
  EXPECT_GT(sectorCount, 3000);
}

TEST(PlanTest, AnEmptyInputIsNeverRead) {
  for (const bool padUsesData : {false, true}) {
    PlanScene scene = sceneOf(OutputModeFull, {3, 3}, {0, 4}, {}, padUsesData);
    EXPECT_EQ(sectorsOf(scene).empty(), padUsesData) << "a constant pad needs no input, a data-based one does";
  }
}

TEST(PlanTest, TablesGoByTheirNamesInTheHost) {
  PlanScene scene = sceneOf(OutputModeSame, {3, 3}, {10, 10});
  std::vector<std::string> names;
  for (const auto& [name, record] : scene.allocator.getWorkVectors()) {
    names.push_back(name + ":" + std::to_string(record->width) + ":" + std::to_string(record->dataTypeId));
  }
  EXPECT_THAT(names, ElementsAre("bSEnd:2:6", "bSPreEdg:2:6", "bSPstEdg:2:6", "bSStart:2:6", "inSEnd:2:6",
                                 "inSStart:2:6", "isHgtUpd:2:8", "mLoc:10:6", "mWidth:10:6", "oSPreEdg:2:6",
                                 "oSPstEdg:2:6", "oSStart:2:6", "oSecEnd:2:6", "sCnt:2:6"));
}

TEST(PlanTest, CapacitiesFollowThePowers) {
  const struct {
    int rank;
    SectorKinds kinds;
    int boundary, outside;
  } cases[] = {
      {2, {true, true, false, true, false}, 8, 0},  {2, {false, true, false, true, false}, 9, 0},
      {2, {true, false, false, true, false}, 0, 0}, {2, {true, true, true, true, false}, 16, 8},
      {2, {true, true, true, false, false}, 8, 16}, {3, {false, false, false, true, true}, 50, 74},
  };
  for (const auto& c : cases) {
    const SectorCapacities capacities = capacitiesOf(c.rank, c.kinds);
    EXPECT_EQ(std::pair(capacities.boundary, capacities.outside), std::pair(c.boundary, c.outside));
  }
}

}  // namespace
}  // namespace BP::test
