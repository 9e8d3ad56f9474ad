// Every operation, over random types of 1 to 128 bits, modes and values, against rational arithmetic.

#include <gtest/gtest.h>

#include <random>

#include "tests/support/fixpt_cases.h"

namespace {

using Dice = model::Dice<std::mt19937>;

/// Calls `check` with many random cases.
void repeat(unsigned seed, void (*check)(Dice&)) {
  constexpr int rounds = 10000;
  std::mt19937 random(seed);
  Dice dice(random);
  for (int round = 0; round < rounds && !testing::Test::HasFailure(); ++round) check(dice);
}

TEST(FixptModel, RealOperationsOfAnyTypes) { repeat(1, model::realOperations); }
TEST(FixptModel, DivisionAndRoot) { repeat(2, model::divisionAndRoot); }
TEST(FixptModel, ComplexOperations) { repeat(3, model::complexOperations); }
TEST(FixptModel, DoublesAreCastExactlyAndReadAsTheNearest) { repeat(4, model::doubles); }
TEST(FixptModel, ProductsOfWindowsAddAsOneByOne) { repeat(5, model::productsOfWindows); }

}  // namespace
