#include "orvane/correlation/stationary_roi_plan.h"

#include <gmock/gmock.h>

#include <random>

#include "tests/support/plan_scene.h"

namespace BP::test {
namespace {

/// A stationary plan over the parts of a scene, whose own plan is a moving one.
struct StationaryScene {
  PlanScene& scene;
  StationaryROIPlan<double, double, AllocatorTolk> plan;

  StationaryScene(PlanScene& parts, bool exceeds, bool allocateAll)
      : scene(parts),
        plan(&parts.allocator, parts.rank, &parts.filter, exceeds, parts.input.get(), &parts.output, parts.scope.get(),
             allocateAll) {
    scene.host.provideWorkVectors(scene.allocator);
    scene.allocator.refreshWorkVectors();
    for (const setupModeT stage : {setupAttachWork, setupLinkTables}) {
      scene.plan->setup(stage);
      plan.setup(stage);
    }
    setup(setupStart);
  }

  void setup(setupModeT stage) {
    scene.setup(stage);
    plan.setup(stage);
  }

  /// What the lists hold, in the order of a run.
  std::vector<SectorCopy> lists() {
    SectorRecorder recorder;
    if (plan.getInsideCount() > 0) recorder.runSector(plan.getInsideSector());
    for (int i = 0; i < plan.getBoundaryCount(); ++i) recorder.runSector(plan.getBoundarySector(i));
    for (int i = 0; i < plan.getOutsideCount(); ++i) recorder.runSector(plan.getOutsideSector(i));
    return recorder.sectors;
  }
};

TEST(StationaryROIPlanTest, ListsHoldTheMovingPlansSectorsThroughAnyChangeOfExtents) {
  std::mt19937 random(11);
  const auto pick = [&](int low, int high) { return std::uniform_int_distribution<int>(low, high)(random); };
  int overCapacity = 0, regainedInside = 0;
  for (int trial = 0; trial < 1500; ++trial) {
    const int rank = pick(1, 4), reach = pick(0, 2);
    const bool padUsesData = pick(0, 1) == 1, allocateAll = pick(0, 3) == 0;
    const auto extents = [&](int low, int high) {
      std::vector<int> values;
      for (int d = 0; d < rank; ++d) values.push_back(pick(low, high));
      return values;
    };
    std::vector<int> h = extents(1, 5), u = extents(1, 8);
    bool exceeds = false;
    for (std::size_t d = 0; d < h.size(); ++d) exceeds = exceeds || h[d] > u[d];
    PlanScene scene(h, extents(0, 4), u, {extents(-9, 1), extents(0, 20)}, {}, reach, padUsesData);
    StationaryScene stationary(scene, exceeds, allocateAll);
    ASSERT_EQ(stationary.lists(), sectorsOf(scene)) << "trial " << trial;

    for (int change = 0; change < 3; ++change) {
      const std::vector<SectorCopy> before = stationary.lists();
      stationary.setup(setupResize);
      stationary.setup(setupInvoke);
      ASSERT_EQ(stationary.lists(), before) << "nothing changed, trial " << trial;

      scene.hDims.values = extents(1, 5);
      scene.uDims.values = extents(1, 8);
      scene.hDims.ptr = scene.hDims.values.data();
      scene.uDims.ptr = scene.uDims.values.data();
      stationary.setup(setupStart);
      ASSERT_EQ(stationary.lists(), sectorsOf(scene)) << "trial " << trial << " change " << change;
      if (stationary.plan.getBoundaryCount() > stationary.plan.getBoundaryCapacity() ||
          stationary.plan.getOutsideCount() > stationary.plan.getOutsideCapacity()) {
        ++overCapacity;
      }
      if (exceeds && stationary.plan.getInsideCount() == 1) ++regainedInside;
    }
  }
  EXPECT_GT(overCapacity, 0) << "no trial went beyond the capacities";
  EXPECT_GT(regainedInside, 0) << "no filter ceased to exceed the input";
}

TEST(StationaryROIPlanTest, ListsExistAsFarAsTheScopeReaches) {
  const auto rooms = [](int reach, bool exceeds, bool allocateAll) {
    PlanScene scene({3, 3}, {1, 1}, {10, 10}, {{0, 0}, {10, 10}}, {}, reach, false);
    StationaryScene stationary(scene, exceeds, allocateAll);
    return std::tuple(stationary.plan.getBoundaryCapacity(), stationary.plan.getBoundaryRoom() > 0,
                      stationary.plan.getOutsideRoom() > 0);
  };
  EXPECT_EQ(rooms(0, false, false), std::tuple(0, false, false));
  EXPECT_EQ(rooms(1, false, false), std::tuple(8, true, false));
  EXPECT_EQ(rooms(1, true, false), std::tuple(9, true, false)) << "no inside, but the all-centre combination";
  EXPECT_EQ(rooms(2, false, false), std::tuple(8, true, true));
  EXPECT_EQ(rooms(0, false, true), std::tuple(8, true, true));
  AllocatorTolk allocator(nullptr);
  EXPECT_THROW(SectorList<BoundarySector>(&allocator, 30, 1 << 30, {"a", "b", "c", "d"}), std::bad_alloc);
}

}  // namespace
}  // namespace BP::test
