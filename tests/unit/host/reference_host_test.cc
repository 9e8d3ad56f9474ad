#include "orvane/host/reference_host.h"

#include <gtest/gtest.h>

#include <set>
#include <stdexcept>

namespace BP {
namespace {

TEST(ReferenceHostTest, NumbersTheVectorsOfAllItsFrontsApart) {
  ReferenceHost host;
  AllocatorTolk one(host.getAdaptor()), other(host.getAdaptor());
  CleverPtr<int> tables[3];
  one.registerWorkVector(tables[0], 3, "mWidth", "ignore", 1);
  one.registerWorkVector(tables[1], 0, "sCnt", "ignore", 1);
  other.registerWorkVector(tables[2], 3, "mWidth", "ignore", 1);
  host.provideWorkVectors(one);
  host.provideWorkVectors(other);

  std::set<void*> addresses;
  for (AllocatorTolk* allocator : {&one, &other}) {
    allocator->refreshWorkVectors();
    for (const auto& [name, record] : allocator->getWorkVectors()) addresses.insert(record->data);
  }
  EXPECT_EQ(addresses.size(), 3u);
  EXPECT_FALSE(addresses.contains(nullptr));

  one.attachWorkVector(tables[0]);
  EXPECT_EQ(tables[0].ptr[2], 0) << "vectors start cleared";
}

TEST(ReferenceHostTest, RefusesAVectorThatItCannotMake) {
  ReferenceHost host;
  AllocatorTolk allocator(host.getAdaptor());
  CleverPtr<int> table;
  allocator.registerWorkVector(table, -1, "mWidth", "ignore", 1);
  EXPECT_THROW(host.provideWorkVectors(allocator), std::invalid_argument);
  allocator.getWorkVectors().at("mWidth")->width = 1;
  allocator.getWorkVectors().at("mWidth")->dataTypeId = 7;
  EXPECT_THROW(host.provideWorkVectors(allocator), std::invalid_argument);
  EXPECT_EQ(tolkGetWork(host.getAdaptor(), 0), nullptr);
}

}  // namespace
}  // namespace BP
