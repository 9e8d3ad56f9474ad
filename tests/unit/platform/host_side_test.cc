#include <gmock/gmock.h>

#include <cstdint>
#include <cstring>
#include <limits>
#include <thread>

#include "orvane/platform/brekk_tolk.h"
#include "orvane/platform/libqv.h"
#include "orvane/platform/zdloader.h"

namespace {

using testing::ElementsAre;

TEST(BrekkAdaptorTolkTest, KeepsMessagesInOrderAndVectorsByNumber) {
  brekk::BrekkAdaptorTolk adaptor;
  tolkSetErrorStatus(&adaptor, "first");
  tolkSetErrorStatus(&adaptor, "second");
  EXPECT_THAT(adaptor.messages(), ElementsAre("first", "second"));
  adaptor.clearMessages();
  EXPECT_TRUE(adaptor.messages().empty());

  int vector[2];
  EXPECT_EQ(tolkGetWork(&adaptor, 3), nullptr);
  adaptor.bindWork(3, vector);
  EXPECT_EQ(tolkGetWork(&adaptor, 3), vector);
  EXPECT_EQ(tolkGetWork(&adaptor, 0), nullptr);
}

TEST(LibqvTest, BlocksAreAlignedAndWritable) {
  for (const std::size_t size : {std::size_t{0}, std::size_t{1}, std::size_t{64}, std::size_t{1000}}) {
    void* block = qvMalloc(size);
    ASSERT_NE(block, nullptr) << size;
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(block) % qvAlignment, 0u) << size;
    std::memset(block, 1, size);
    qvFree(block);
  }
  EXPECT_EQ(qvMalloc(std::numeric_limits<std::size_t>::max()), nullptr);
  qvFree(nullptr);
}

TEST(ZdLoaderTest, FindsFunctionsOnlyInNamedLibraries) {
  const ZdLoader loader(1);
  EXPECT_EQ(loader.getMethodPointer("cos"), nullptr);
  for (const char* none : {"no-such-library.so", ""}) EXPECT_NE(ZdLoader::addLibrary(none), "");
  EXPECT_EQ(loader.getMethodPointer("cos"), nullptr);

  ASSERT_EQ(ZdLoader::addLibrary("libm.so.6"), "");
  EXPECT_NE(loader.getMethodPointer("cos"), nullptr);
  EXPECT_EQ(loader.getMethodPointer("no_such_function"), nullptr);
  ZdLoader::clearLibraries();
  EXPECT_EQ(loader.getMethodPointer("cos"), nullptr);
}

TEST(ZdLoaderTest, ReportsTheLastBadStatusOnceToItsOwnClientAndThread) {
  const ZdLoader loader(1);
  EXPECT_EQ(ZdLoader::takeBadStatus(1), 0);
  for (const IppStatus status : {-8, -6, 0, 2}) loader.zdCheckStatus(status);
  EXPECT_EQ(ZdLoader::takeBadStatus(2), 0);
  std::thread([] { EXPECT_EQ(ZdLoader::takeBadStatus(1), 0); }).join();
  EXPECT_EQ(ZdLoader::takeBadStatus(1), -6);
  EXPECT_EQ(ZdLoader::takeBadStatus(1), 0);
}

}  // namespace
