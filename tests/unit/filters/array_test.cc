#include "orvane/filters/array.h"

#include <gmock/gmock.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <numeric>
#include <vector>

#include "orvane/filters/convolution.h"
#include "orvane/filters/fixed_array.h"
#include "tests/support/refusal.h"

namespace BP::filters {
namespace {

using testing::ElementsAre;

TEST(ExtentsTest, TakeIntegersOfAnyTypeAndCheckThem) {
  const std::size_t width = 4;
  const unsigned short height = 3;
  EXPECT_EQ((Extents{width, height, std::int8_t{2}}), (Extents{4, 3, 2}));
  EXPECT_REFUSAL("extent: 18446744073709551615; allowed are numbers up to 9223372036854775807",
                 Extents({std::numeric_limits<std::uint64_t>::max()}));
  EXPECT_REFUSAL("extents: rank 9; allowed are 0 to 8", Extents({1, 1, 1, 1, 1, 1, 1, 1, 1}));
}

TEST(ArrayTest, ComesFromAListAndCompares) {
  const Array<float> a({3, 2}, {1, 2, 3, 4, 5, 6});
  EXPECT_EQ(a(2, 1), 6);
  Array<float> b = a;
  EXPECT_TRUE(a == b);
  b(0, 1) = 7;
  EXPECT_FALSE(a == b);
  EXPECT_FALSE(a == Array<float>({2, 3}, {1, 2, 3, 4, 5, 6}));
  b.fill(2);
  EXPECT_THAT(b, testing::Each(2));
  EXPECT_EQ(Array<float>(a.subview({1, 0}, {2, 2})), Array<float>({2, 2}, {2, 3, 5, 6}));
  EXPECT_REFUSAL("view: 3 elements; extents 3 x 2 need 6", Array<float>({3, 2}, {1, 2, 3}));
}

TEST(ViewTest, OfPartsOfParts) {
  std::vector<int> values(5 * 4 * 3);
  std::iota(values.begin(), values.end(), 0);
  const ArrayView<int> whole(values, {5, 4, 3});
  const ArrayView<const int> part = whole.subview({1, 1, 1}, {3, 2, 2}).subview({1, 0, 0}, {2, 2, 2});
  EXPECT_EQ(part(1, 1, 1), 3 + 5 * 2 + 20 * 2);
  EXPECT_EQ(part.pitch(1), 5);
  EXPECT_EQ(part.pitch(2), 20);
  EXPECT_THAT(Array<int>(part), ElementsAre(27, 28, 32, 33, 47, 48, 52, 53));
  EXPECT_FALSE(part.layout().isDense());
  EXPECT_TRUE(whole.subview({0, 0, 1}, {5, 4, 2}).layout().isDense());
  EXPECT_EQ(whole.subview({5, 0, 0}, {0, 4, 3}).data(), values.data()) << "a part without elements points nowhere else";
  EXPECT_REFUSAL("part: start 3 x 0 x 0, extents 3 x 1 x 1; it must lie within extents 5 x 4 x 3",
                 whole.subview({3, 0, 0}, {3, 1, 1}));
  EXPECT_REFUSAL("part: start 0 x 0, extents 1 x 1; both need rank 3", whole.subview({0, 0}, {1, 1}));
}

TEST(ViewTest, Pitches) {
  std::vector<float> values(100);
  const ArrayView<float> padded(values, {4, 3, 2}, {6, 40});
  EXPECT_EQ(&padded(1, 2, 1) - values.data(), 1 + 2 * 6 + 40);
  EXPECT_EQ(ArrayView<float>(values.data(), {4, 3, 2}, 6).pitch(2), 18) << "planes follow without gaps";
  EXPECT_REFUSAL("pitch: 3 in dimension 1; for extents 4 x 3 at least 4 is needed", ArrayView(values, {4, 3}, 3));
  EXPECT_REFUSAL("pitch: -6 in dimension 1; for extents 4 x 3 at least 4 is needed", ArrayView(values, {4, 3}, -6));
  EXPECT_REFUSAL("pitch: 2 numbers for extents 4 x 3; allowed are 0 to 1", ArrayView(values, {4, 3}, {6, 7}));
  EXPECT_REFUSAL("view: 100 elements; extents 4 x 3 with this pitch need at least 104", ArrayView(values, {4, 3}, 50));
  EXPECT_EQ(ArrayView(values, {4, 1}, 1).layout().span(), 4) << "the pitch of a single line does not matter";
}

/// A multidimensional span of two indices, with the strides that it is given.
struct Span2 {
  static constexpr std::size_t rank() { return 2; }
  std::size_t extent(std::size_t d) const { return extents[d]; }
  std::size_t stride(std::size_t d) const { return strides[d]; }
  const float* data_handle() const { return elements; }

  const float* elements;
  std::array<std::size_t, 2> extents, strides;
};

TEST(ViewTest, OfMultidimensionalSpans) {
  std::vector<float> values(60);
  std::iota(values.begin(), values.end(), 0.0F);
  const Span2 lastIsFastest{values.data(), {3, 4}, {10, 1}};
  const ArrayView<const float> view = lastIsFastest;
  EXPECT_EQ(view.extents(), (Extents{4, 3}));
  EXPECT_EQ(view(3, 2), 23);
  const Span2 firstIsFastest{values.data(), {4, 3}, {1, 10}};
  EXPECT_EQ(ArrayView(firstIsFastest, IndexOrder::firstIsFastest)(3, 2), 23);
  EXPECT_REFUSAL("view: stride 10 of the last index; it must be 1, as this index is dimension 0",
                 (ArrayView<const float>(firstIsFastest)));
}

TEST(ViewTest, FixedPointPartsStayInPlace) {
  std::vector<std::int16_t> words(20);
  std::iota(words.begin(), words.end(), std::int16_t{0});
  const FixedView picture(ArrayView<std::int16_t>(words, {5, 4}), {16, 0, true});
  EXPECT_THAT(toDouble(picture.subview({1, 2}, {2, 2})), ElementsAre(11, 12, 16, 17));
  EXPECT_THAT(toDouble(FixedArray(picture.subview({4, 0}, {1, 3}))), ElementsAre(4, 9, 14));
  EXPECT_THAT(toDouble(FixedView(words.data(), {2, 2}, 7, {16, 0, true})), ElementsAre(0, 1, 7, 8));
}

/// Filters a rectangle of 5 x 3 elements into one of 3 x 2, at all places of both in 10 x 6 elements.
TEST(OverlapTest, LinesOfOnePitchMayLieBetweenEachOther) {
  std::vector<float> memory(60);
  const ArrayView<float> whole(memory, {10, 6});
  const Array<float> filter({3, 2}, {1, 1, 1, 1, 1, 1});
  Convolution<float> job(filter, {5, 3}, {.mode = OutputMode::valid});
  for (int place = 0; place < 6 * 4 * 8 * 5; ++place) {
    const int x = place % 6, y = place / 6 % 4, toX = place / 24 % 8, toY = place / 192;
    const bool shares = toX < x + 5 && x < toX + 3 && toY < y + 3 && y < toY + 2;
    const auto run = [&] { job.run(whole.subview({x, y}, {5, 3}), whole.subview({toX, toY}, {3, 2})); };
    SCOPED_TRACE(testing::Message() << x << ", " << y << " to " << toX << ", " << toY);
    if (shares) {
      EXPECT_REFUSAL(
          "output: overlaps the input; the two must not share memory, as outputs would overwrite inputs of "
          "others",
          run());
    } else {
      ASSERT_NO_THROW(run());
    }
  }
}

}  // namespace
}  // namespace BP::filters
