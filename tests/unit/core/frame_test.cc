#include <gtest/gtest.h>

#include <regex>

#include "orvane/core/any_bp.h"
#include "orvane/core/block_proc_tolk_cache.h"
#include "orvane/core/version.h"

namespace BP {
namespace {

class SinglePass : public AnyCorrelation {
 public:
  void setup(setupModeT) override {}
  void invoke() override {}
  void assignPadValue(const void*, bool) override {}
};

TEST(AnyCorrelationTest, SinglePassIsItsOwnFirstAndSecondPass) {
  const SinglePass processor;
  EXPECT_EQ(processor.getBP(), &processor);
  EXPECT_EQ(processor.getConvCorr1(), &processor);
  EXPECT_EQ(processor.getConvCorr2(), &processor);
}

class BareFront : public BlockProcTolkCache {
 public:
  using BlockProcTolkCache::allocator;
  explicit BareFront(brekk::BrekkAdaptorTolk* adaptor) : BlockProcTolkCache(adaptor) {}
  void computeOutputs() override {}
};

TEST(BlockProcTolkCacheTest, UpdatesDoNothingByDefaultAndTheLogMapReachesTheAllocator) {
  brekk::BrekkAdaptorTolk adaptor;
  BareFront front(&adaptor);
  int data = 7;
  front.tune(&data, &data, &data);
  front.updateInputPointers(&data, &data);
  front.updateOutputPointers(&data, &data, &data, &data, &data);
  EXPECT_EQ(data, 7);
  FixptLogMap log;
  for (FixptLogMap* map : {&log, static_cast<FixptLogMap*>(nullptr)}) {
    front.setFixptLogMap(map);
    EXPECT_EQ(front.allocator->getFixptLogMap(), map);
  }
  EXPECT_EQ(front.allocator->getAdaptor(), &adaptor);
}

TEST(VersionTest, StringsHaveTheirForm) {
  EXPECT_TRUE(std::regex_match(orvaneblockprocbrekk_version, std::regex(R"(\d+\.\d+\.\d+)")));
  EXPECT_TRUE(std::regex_match(orvaneblockprocbrekk_build_date, std::regex(R"([A-Z][a-z]{2} [ \d]\d \d{4})")));
}

}  // namespace
}  // namespace BP
