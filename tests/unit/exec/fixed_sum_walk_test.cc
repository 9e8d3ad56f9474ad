#include "orvane/exec/fixed_sum_walk.h"

#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "orvane/platform/karn_fixpt_3_make.h"

namespace BP {
namespace {

using KarnDSPFixpt::makeAttributes;
using KarnDSPFixpt::makeFixpt;

struct Table : CleverPtr<int> {
  std::vector<int> values;
  explicit Table(std::vector<int> given) : values(std::move(given)) { ptr = values.data(); }
};

/// A picture of 600 x 4 under a constant pad, filtered by ones of several extents.
class Scene {
 public:
  Scene() {
    std::vector<std::int16_t> ones(400, 1);
    std::memcpy(filter->data(), ones.data(), 2 * ones.size());
  }

  /// Filters by columns x rows ones, and returns the number of products that were counted.
  unsigned countProducts(int columns, int rows) {
    Table extents{{columns, rows}}, zero{{0, 0}}, loc{{-(columns / 2), -(rows / 2)}}, picture{{width, height}};
    const Block window(2, extents, zero, loc), in(2, picture, zero, zero), out(2, picture, zero, zero);
    sums.resize(window);
    walk.resize(window, in, 2);
    walk.setScratch(scratch.get());
    sums.begin(*input, *filter, *accumulator, false);
    Table first{{0, 0}}, last{{width - 1, height - 1}}, before{{0, 1}}, after{{0, 1}};
    OuterSector sector(2, first, last, before, after);
    sector.setPreEdgeCount(2);
    sector.setPostEdgeCount(2);
    const int strides[2] = {1, width};
    const LineSource<KarnDSPFixpt::Fixpt> source{input.get(), picture.ptr, strides, 2, PadTypeConstant, pad.get()};
    EXPECT_TRUE(walk.run(source, sector, &sector, window, in, out, {output.get(), strides}));
    return input->productFor(*filter).takeProperties()->getLogStruct()->casts;
  }

 private:
  static constexpr int width = 600, height = 4;
  KarnDSPFixpt::DSPDataAttributesHandle values = makeAttributes({.value = {16}, .product = {32}, .accumulator = {40}});
  KarnDSPFixpt::DSPDataAttributesHandle wide = makeAttributes({.value = {40}, .product = {80}, .accumulator = {90}});
  std::unique_ptr<KarnDSPFixpt::Fixpt> input = makeFixpt(values, width*height), filter = makeFixpt(values, 400),
                                       pad = makeFixpt(values, 1), accumulator = makeFixpt(wide, 1),
                                       scratch = makeFixpt(wide, 1), output = makeFixpt(wide, width*height);
  FixedSums sums;
  FixedSumWalk walk{&sums};
};

TEST(FixedSumWalkTest, CountsDoNotDependOnAFilterBefore) {
  constexpr unsigned inside = (3 * 600 - 2) * (3 * 4 - 2);  // taps in the picture, of all windows of 3 x 3
  Scene scene;
  EXPECT_EQ(scene.countProducts(3, 3), inside);
  scene.countProducts(300, 1);
  EXPECT_EQ(scene.countProducts(3, 3), inside);
}

}  // namespace
}  // namespace BP
