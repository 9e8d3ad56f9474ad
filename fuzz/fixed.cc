// Operations on fixed-point values of 1 to 128 bits against rational arithmetic, and fixed-point filters in lanes
// against the plain walk: values and statistics.
#include <gtest/gtest.h>

#include "fuzz/compare_ways.h"
#include "tests/support/fixpt_cases.h"

namespace {

using BP::fuzz::ByteSource;
using Dice = model::Dice<ByteSource>;

void (*const operations[])(Dice&) = {model::realOperations, model::divisionAndRoot, model::complexOperations,
                                     model::doubles, model::productsOfWindows};

BP::test::RandomJob filterJob(ByteSource& source) {
  using namespace BP::test::random_jobs;
  switch (pick(source, 0, 3)) {
    case 0: return fixedSeparable(source);
    case 1: return fixedMedian(source);
    case 2: return fixedMatching(source);
    default: return fixedConvolution(source);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  testing::GTEST_FLAG(break_on_failure) = true;
  ByteSource source(data, size);
  const int choice = pick(source, 0, 7);
  if (choice < static_cast<int>(std::size(operations))) {
    Dice dice(source);
    operations[choice](dice);
  } else {
    BP::fuzz::compareWays(filterJob(source), source);
  }
  return 0;
}
