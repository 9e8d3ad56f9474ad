#include "orvane/core/version.h"

#include <gtest/gtest.h>

#include <regex>

namespace {

TEST(VersionTest, StringsHaveTheirForm) {
  EXPECT_TRUE(std::regex_match(orvaneblockprocbrekk_version, std::regex(R"(\d+\.\d+\.\d+)")));
  EXPECT_TRUE(std::regex_match(orvaneblockprocbrekk_build_date, std::regex(R"([A-Z][a-z]{2} [ \d]\d \d{4})")));
}

}  // namespace
