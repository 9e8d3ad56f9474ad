#include "orvane/core/version.h"

#include <gtest/gtest.h>

#include <regex>

#include "orvane/orvane.h"

namespace {

TEST(VersionTest, StringsHaveTheirForm) {
  EXPECT_TRUE(std::regex_match(orvaneblockprocbrekk_version, std::regex(R"(\d+\.\d+\.\d+)")));
  EXPECT_EQ(orvane::version(), orvaneblockprocbrekk_version);
  EXPECT_TRUE(std::regex_match(orvaneblockprocbrekk_build_date, std::regex(R"([A-Z][a-z]{2} [ \d]\d \d{4})")));
}

}  // namespace
