// With the environment variable ORVANE_TARGET, each test of a program begins with that vector target in use.
#include <gtest/gtest.h>

#include <cstdlib>

#include "orvane/lanes/target.h"

namespace {

class ForcedTarget : public testing::EmptyTestEventListener {
  void OnTestStart(const testing::TestInfo& /*test*/) override {
    const char* const wanted = std::getenv("ORVANE_TARGET");
    if (wanted == nullptr || *wanted == '\0') return;
    ASSERT_TRUE(BP::lanes::forceTarget(wanted)) << "ORVANE_TARGET '" << wanted << "' cannot run here";
  }
};

/// Added before `main`, which the test framework has.
[[maybe_unused]] const bool isAdded = [] {
  testing::UnitTest::GetInstance()->listeners().Append(new ForcedTarget);  // the framework deletes it
  return true;
}();

}  // namespace
