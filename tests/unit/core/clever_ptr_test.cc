#include "orvane/core/clever_ptr.h"

#include <gtest/gtest.h>

#include "orvane/core/allocator.h"

namespace BP {
namespace {

TEST(CleverPtrTest, StartsNullBorrowedAndUnnamed) {
  const CleverPtr<float> handle;
  EXPECT_EQ(handle.ptr, nullptr);
  EXPECT_FALSE(handle.owned);
  EXPECT_EQ(handle.getName(), "unnamed");
}

TEST(CleverPtrTest, BorrowedArrayOutlivesItsHandle) {
  int array[3] = {1, 2, 3};
  {
    CleverPtr<int> handle;
    handle.ptr = array;
  }
  EXPECT_EQ(array[2], 3);
}

TEST(CleverPtrTest, OwnedArrayIsReleased) {  // the leak checker is the judge
  Allocator allocator;
  CleverPtr<double> handle;
  allocator.allocateArray(handle, 5, "accumulator", "y1Data");
  handle.ptr[4] = 1;
  EXPECT_TRUE(handle.owned);
  EXPECT_EQ(handle.getName(), "unnamed");
}

}  // namespace
}  // namespace BP
