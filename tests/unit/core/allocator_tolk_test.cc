#include "orvane/core/allocator_tolk.h"

#include <gmock/gmock.h>

#include <complex>
#include <new>
#include <vector>

#include "orvane/host/reference_host.h"
#include "orvane/platform/karn_fixpt_3_make.h"

namespace BP {
namespace {

using KarnDSPFixpt::DSPDataAttributesHandle;
using KarnDSPFixpt::Fixpt;
using testing::ElementsAre;
using testing::IsEmpty;

DSPDataAttributesHandle typeOf(unsigned word, const char* label) {
  return KarnDSPFixpt::makeAttributes({.value = {word, 0}, .overflow = fxpOverflowSaturate, .valueLabel = label});
}

class AllocatorTolkTest : public testing::Test {
 protected:
  ReferenceHost host;
  AllocatorTolk allocator{host.getAdaptor()};
};

TEST_F(AllocatorTolkTest, FirstTypeOfARoleStaysAndTheSecondIsReported) {
  allocator.registerTypeName("input", typeOf(8, "first"));
  allocator.registerTypeName("input", typeOf(16, "second"));
  EXPECT_THAT(host.getMessages(), ElementsAre("AllocatorTolk: attempted to register duplicate type name"));

  CleverPtr<Fixpt> array;
  allocator.createFixptArray(array, 3, "input");
  ASSERT_NE(array.ptr, nullptr);
  EXPECT_TRUE(array.owned);
  EXPECT_EQ(array.ptr->attributes().getLabel(), "first");
}

TEST_F(AllocatorTolkTest, UnknownRoleIsReportedAndLeavesTheHandle) {
  CleverPtr<Fixpt> array;
  allocator.createFixptArray(array, 1, "filter");
  allocator.allocateArray(array, 1, "output");
  EXPECT_EQ(array.ptr, nullptr);
  EXPECT_FALSE(array.owned);
  const char* const message = "AllocatorTolk: specified type name was not registered";
  EXPECT_THAT(host.getMessages(), ElementsAre(message, message));
}

TEST_F(AllocatorTolkTest, PlainArraysNeedNoRole) {
  CleverPtr<double> accumulator;
  allocator.allocateArray(accumulator, 1, "accumulator");
  EXPECT_TRUE(accumulator.owned);
  EXPECT_EQ(accumulator.getName(), "unnamed");

  CleverPtr<std::complex<float>> complexArray;
  allocator.allocateArray(complexArray, 2, "accumulator");
  EXPECT_EQ(complexArray.ptr[1], std::complex<float>(0, 0));
  EXPECT_THAT(host.getMessages(), IsEmpty());

  CleverPtr<double> tooLarge;
  EXPECT_THROW(allocator.allocateArray(tooLarge, -1, "accumulator"), std::bad_alloc);
  EXPECT_EQ(tooLarge.ptr, nullptr);
}

TEST_F(AllocatorTolkTest, WorkVectorsAreRegisteredNumberedRefreshedAndBound) {
  CleverPtr<int> first, second, third;
  CleverPtr<bool> flags;
  allocator.registerWorkVector(first, 4, "inSStart", "ignore", 1);
  allocator.registerWorkVector(flags, 3, "isHgtUpd", "ignore", 1);
  allocator.registerWorkVector(second, 5, "inSStart", "ignore", 1);
  allocator.registerWorkVector(third, 6, "inSStart", "ignore", 1);
  EXPECT_EQ(first.getName(), "inSStart");
  EXPECT_EQ(second.getName(), "inSStart_2");
  EXPECT_EQ(third.getName(), "inSStart_3");
  EXPECT_EQ(first.ptr, nullptr);
  EXPECT_FALSE(first.owned);

  const WorkVectorRecord& record = *allocator.getWorkVectors().at("inSStart_2");
  EXPECT_EQ(record.width, 5);
  EXPECT_EQ(record.dataTypeId, 6);
  EXPECT_EQ(record.count, 1);
  EXPECT_EQ(record.label, "");
  EXPECT_FALSE(record.flagA || record.flagB);
  EXPECT_EQ(allocator.getWorkVectors().at("isHgtUpd")->dataTypeId, 8);

  host.provideWorkVectors(allocator);
  allocator.refreshWorkVectors();
  allocator.attachWorkVector(second);
  EXPECT_NE(second.ptr, nullptr);
  EXPECT_EQ(second.ptr, tolkGetWork(host.getAdaptor(), record.workIndex));
}

TEST_F(AllocatorTolkTest, StatisticsAreFoldedPerLabelOnlyIntoAMap) {
  allocator.registerTypeName("input", typeOf(4, "in"));
  allocator.registerTypeName("accumulator", typeOf(8, "sum"));
  CleverPtr<Fixpt> wide, narrow, alike;
  allocator.createFixptArray(wide, 1, "accumulator");
  allocator.createFixptArray(narrow, 1, "input");
  allocator.createFixptArray(alike, 1, "input");
  FixptLogMap log;
  allocator.mergeFixptLog(narrow.ptr, true);
  EXPECT_THAT(log, IsEmpty());

  allocator.setFixptLogMap(&log);
  allocator.mergeFixptLog(nullptr, true);
  (*wide.ptr)[0] = 100;
  (*narrow.ptr)[0] = *wide.ptr;  // 100 does not fit 4 bits: one overflow
  (*wide.ptr)[0] = -100;
  (*alike.ptr)[0] = *wide.ptr;
  allocator.mergeFixptLog(narrow.ptr, false);
  EXPECT_THAT(log, IsEmpty());
  allocator.mergeFixptLog(narrow.ptr, true);
  ASSERT_EQ(log.count("in"), 1u);
  EXPECT_EQ(log["in"]->getLogStruct()->overflows, 1u);
  allocator.mergeFixptLog(alike.ptr, true);
  allocator.mergeFixptLog(alike.ptr, true);
  EXPECT_EQ(log["in"]->getLogStruct()->overflows, 2u) << "what was merged once is not counted again";
  EXPECT_EQ(log["in"]->getLogStruct()->minimum, -8);
  EXPECT_EQ(log["in"]->getLogStruct()->maximum, 7);
}

}  // namespace
}  // namespace BP
