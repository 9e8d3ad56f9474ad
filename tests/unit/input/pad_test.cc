#include "orvane/input/pad.h"

#include <gtest/gtest.h>

#include <vector>

#include "orvane/core/allocator.h"
#include "orvane/input/pad_extended_input.h"
#include "tests/support/pad_walk.h"
#include "tests/support/plan_scene.h"

namespace BP::test {
namespace {

/// A sector that lists edges of dimensions.
struct Edges {
  Table preEdge, postEdge, unused{std::vector<int>(8, 0)};
  BoundarySector sector{2, unused, unused, preEdge, postEdge};
  Edges(std::vector<int> pre, std::vector<int> post) : preEdge(std::move(pre)), postEdge(std::move(post)) {
    sector.setPreEdgeCount(static_cast<int>(preEdge.values.size()));
    sector.setPostEdgeCount(static_cast<int>(postEdge.values.size()));
  }
};

template <int padType>
using PaddedInput = PadExtendedInput<double, double, Allocator, padType>;

/// An input of given extents whose element i holds i.
template <class InputT>
struct Scene {
  Allocator allocator;
  Table dims, zeros{std::vector<int>(8, 0)};
  std::vector<double> values;
  CleverPtr<double> data;
  InputT input{&allocator, static_cast<int>(dims.values.size()), dims, zeros, zeros, data};
  explicit Scene(std::vector<int> extents) : dims(std::move(extents)) {
    input.setup(setupStart);
    for (int i = 0; i < input.getBlock().getNumElements(); ++i) values.push_back(i);
    data.ptr = values.data();
  }
};

template <class T>
class RedirectionTest : public testing::Test {};
template <int N>
using Type = std::integral_constant<int, N>;
using DataBasedTypes =
    testing::Types<Type<PadTypeReplicate>, Type<PadTypeSymmetric>, Type<PadTypeCircular>, Type<PadTypeMirror>>;
TYPED_TEST_SUITE(RedirectionTest, DataBasedTypes);

TYPED_TEST(RedirectionTest, EveryCoordinateOfManyPeriodsReadsWhatAWalkFinds) {
  constexpr auto padType = static_cast<PadTypeEnum>(TypeParam::value);
  for (int n = 1; n <= 7; ++n) {
    Scene<PaddedInput<padType>> scene({n, 2});
    Edges both({0}, {0}), low({0}, {}), high({}, {0});
    for (int i = -9 * n; i < 9 * n; ++i) {
      int index[2] = {i, 1};
      const double read = *scene.input.getPad().readBoundary(scene.input.getBlock(), both.sector, 2, index);
      EXPECT_EQ(read, walkTo(padType, i, n) + n) << "coordinate " << i << " of " << n;
      int again[2] = {index[0], index[1]};
      scene.input.getPad().readBoundary(scene.input.getBlock(), both.sector, 2, again);
      EXPECT_EQ(again[0], index[0]) << "the boundary form leaves what is in range";
      if (i >= 0 && i < n) continue;
      int outside[2] = {i, 1};
      Edges& side = i < 0 ? low : high;
      EXPECT_EQ(*scene.input.getPad().readOutside(scene.input.getBlock(), side.sector, 2, outside), read);
    }
  }
}

TYPED_TEST(RedirectionTest, RepeatedOutsideReadsStayInTheArrayAndFollowTheFormula) {
  constexpr int padType = TypeParam::value;
  Scene<PaddedInput<padType>> scene({3, 4});
  Edges edges({0, 1}, {});
  int index[2] = {-2, -5};
  std::vector<int> rows;
  for (int tap = 0; tap < 4; ++tap) {
    index[0] = -2;  // as the algorithms do: dimension 0 is written per tap, dimension 1 per row
    const double* element = scene.input.getPad().readOutside(scene.input.getBlock(), edges.sector, 2, index);
    ASSERT_GE(element, scene.values.data());
    ASSERT_LT(element, scene.values.data() + scene.values.size());
    rows.push_back(index[1]);
  }
  const std::vector<int> expected = padType == PadTypeReplicate   ? std::vector<int>{0, 0, 0, 0}
                                    : padType == PadTypeSymmetric ? std::vector<int>{3, -4, 3, -4}
                                    : padType == PadTypeMirror    ? std::vector<int>{1, -1, 1, -1}
                                                                  : std::vector<int>{3, 3, 3, 3};
  EXPECT_EQ(rows, expected);
}

TEST(PadTest, WalksOfTwoDimensionsIgnoreListedHigherOnes) {
  Scene<PaddedInput<PadTypeSymmetric>> data({3, 2, 5});
  Scene<PaddedInput<PadTypeConstant>> constant({3, 2, 5});
  constant.input.padValues().ptr[0] = -1;
  Edges edges({0, 2}, {1, 2});
  std::vector<int> exactlyTwo{-1, 2};  // the leak and bounds checker watches the third entry
  EXPECT_EQ(*data.input.getPad().readBoundary(data.input.getBlock(), edges.sector, 2, exactlyTwo.data()), 3);
  exactlyTwo = {0, 1};
  EXPECT_EQ(*constant.input.getPad().readBoundary(constant.input.getBlock(), edges.sector, 2, exactlyTwo.data()), 3);
  exactlyTwo = {0, 2};
  EXPECT_EQ(*constant.input.getPad().readBoundary(constant.input.getBlock(), edges.sector, 2, exactlyTwo.data()), -1);
}

TEST(PadTest, AConstantPadTestsListedEdgesOnly) {
  Scene<PaddedInput<PadTypeConstant>> scene({3, 2});
  scene.input.padValues().ptr[0] = 7;
  Edges none({}, {}), low({0}, {});
  int index[2] = {-1, 1};
  EXPECT_EQ(*scene.input.getPad().readBoundary(scene.input.getBlock(), none.sector, 2, index), 2);
  EXPECT_EQ(*scene.input.getPad().readBoundary(scene.input.getBlock(), low.sector, 2, index), 7);
  EXPECT_EQ(index[0], -1) << "the coordinates stay";
}

TEST(InputTest, PadValuesReachOnlyWhereTheyMay) {
  CleverPtr<double> value;
  double seven = 7;
  value.ptr = &seven;
  Scene<PaddedInput<PadTypeConstant>> constant({2, 2});
  Scene<PaddedInput<PadTypeCircular>> circular({2, 2});
  Scene<Input<double, double, Allocator>> plain({2, 2});
  for (AnyInput<double>* input :
       {static_cast<AnyInput<double>*>(&constant.input), static_cast<AnyInput<double>*>(&circular.input),
        static_cast<AnyInput<double>*>(&plain.input)}) {
    input->padValues().ptr[0] = 1;
    input->setPadValue(value);
    const bool isSet = input == &constant.input;
    EXPECT_EQ(*input->padValueAt(0), isSet ? 7 : 1);
    input->setPadValueAt(0, 9);
    EXPECT_EQ(*input->padValueAt(0), isSet ? 9 : 1);
  }
  EXPECT_FALSE(constant.input.isDistanceBased());
  EXPECT_TRUE(circular.input.isDistanceBased());
  EXPECT_FALSE(plain.input.isDistanceBased());
}

TEST(ViewTest, AnInputKeepsItsRangeAnOutputFollowsOnEveryRun) {
  Scene<Input<double, double, Allocator>> scene({4, 3, 0, 2});
  EXPECT_EQ(scene.input.getBlock().getNumElements(), 0);
  EXPECT_EQ(scene.input.getBlock().getStrides().ptr[2], 12);
  EXPECT_EQ(scene.input.getBlock().getStrides().ptr[3], 0);

  Output<double, Allocator> output(&scene.allocator, 4, scene.dims, scene.zeros, scene.zeros, scene.data);
  output.setup(setupStart);
  scene.zeros.values[0] = 5;
  for (const setupModeT stage : {setupLinkTables, setupInvoke}) {
    scene.input.setup(stage);
    output.setup(stage);
    EXPECT_EQ(scene.input.getBlock().getStart().ptr[0], 0);
    EXPECT_EQ(output.getBlock().getStart().ptr[0], stage == setupInvoke ? 5 : 0);
    EXPECT_EQ(output.getBlock().getEnd().ptr[0], stage == setupInvoke ? 8 : 3);
  }
  Table index({1, 2, 0, 0});
  EXPECT_EQ(linearIndex(output.getBlock(), index), 9);
}

}  // namespace
}  // namespace BP::test
