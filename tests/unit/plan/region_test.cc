#include "orvane/plan/region.h"

#include <gmock/gmock.h>

#include <string>

#include "orvane/plan/any_plan.h"
#include "tests/support/plan_scene.h"

namespace BP::test {
namespace {

/// Notes which operation a dispatch ends in, and on which blocks.
class PlanProbe : public AnyPlan {
 public:
  std::string call;
  void setup(setupModeT) override {}
  void restrictNone(AnyPlan&, const Region&) override { call = "none"; }
  void restrictByBlock(const Block& block, const void*) override { call = "block " + at(block); }
  void restrictByBlocks(const Block& first, const Block& second) override {
    call = "blocks " + at(first) + " " + at(second);
  }

 private:
  static std::string at(const Block& block) { return std::to_string(block.getLoc().ptr[0]); }
};

TEST(RegionTest, DispatchEndsInTheOperationOfTheTwoKinds) {
  Table dims({4}), one({1}), two({2});
  const RestrictedRegion first(1, dims, one), second(1, dims, two);
  const UnrestrictedRegion all;
  PlanProbe plan;
  const auto restrict = [&](const Region& a, const Region& b) {
    a.restrict(plan, b);
    return plan.call;
  };
  EXPECT_EQ(restrict(all, all), "none");
  EXPECT_EQ(restrict(all, second), "block 2");
  EXPECT_EQ(restrict(first, all), "block 1");
  EXPECT_EQ(restrict(first, second), "blocks 1 2");
}

TEST(RegionTest, Containment) {
  Table outerDims({4, 4}), outerLoc({0, 0}), innerDims({2, 2}), innerLoc({2, 0});
  const RestrictedRegion outer(2, outerDims, outerLoc), inner(2, innerDims, innerLoc);
  const UnrestrictedRegion all;
  EXPECT_TRUE(inner.isWithinRegion(outer)) << "touching the edge from inside";
  EXPECT_FALSE(outer.isWithinRegion(inner));
  EXPECT_TRUE(outer.isWithinRegion(all));
  EXPECT_FALSE(all.isWithinRegion(outer));
  EXPECT_TRUE(all.isWithinRegion(all));
  for (const int loc : {-1, 3}) {
    innerLoc.values[0] = loc;  // the region follows its table
    EXPECT_FALSE(inner.isWithinRegion(outer));
  }
  const Block block(2, innerDims, innerLoc, innerLoc);
  EXPECT_TRUE(all.containsBlock(block));
  EXPECT_FALSE(all.isWithinBlock(block));
  EXPECT_TRUE(inner.isWithinBlock(block));
}

TEST(SectorTest, ResetForgetsOnStartAndInvokeOnly) {
  Table table({0});
  BoundarySector sector(1, table, table, table, table);
  for (const setupModeT stage : {setupResize, setupFinish, setupStart, setupInvoke}) {
    sector.setIsEmpty(true);
    sector.setPreEdgeCount(1);
    sector.setPostEdgeCount(1);
    sector.reset(stage);
    const bool forgets = stage == setupStart || stage == setupInvoke;
    EXPECT_EQ(sector.getIsEmpty(), !forgets);
    EXPECT_EQ(sector.getPreEdgeCount() + sector.getPostEdgeCount(), forgets ? 0 : 2);
  }
}

}  // namespace
}  // namespace BP::test
