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

TEST(RegionTest, ARegionFollowsItsTables) {
  Table outerDims({4, 4}), outerLoc({0, 0}), innerDims({2, 2}), innerLoc({2, 0});
  const RestrictedRegion outer(2, outerDims, outerLoc), inner(2, innerDims, innerLoc);
  EXPECT_TRUE(inner.isWithinRegion(outer)) << "touching the edge from inside";
  innerLoc.values[0] = 3;
  EXPECT_FALSE(inner.isWithinRegion(outer));
  EXPECT_TRUE(inner.isWithinRegion(UnrestrictedRegion()));
}

}  // namespace
}  // namespace BP::test
