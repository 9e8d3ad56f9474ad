#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "orvane/filters/extents.h"
#include "orvane/filters/options.h"
#include "orvane/lanes/target.h"
#include "tests/support/random_values.h"

namespace BP::test {

/// Runs `compute` by the plain loops and then on each target; all outputs must have the same bits.
template <class T, class ComputeT>
void expectSameOnEveryTarget(const std::string& problem, ComputeT&& compute) {
  ASSERT_TRUE(lanes::forceTarget(lanes::plain));
  const std::vector<T> expected = compute();
  for (const std::string_view target : lanes::getTargets()) {
    ASSERT_TRUE(lanes::forceTarget(target));
    ASSERT_EQ(lanes::getTarget(), target);
    const std::vector<T> found = compute();
    const auto [e, f] = std::ranges::mismatch(expected, found, [](const T& a, const T& b) { return sameBits(a, b); });
    ASSERT_TRUE(e == expected.end() && f == found.end())
        << target << ": " << problem << ", output " << e - expected.begin() << " of " << expected.size();
  }
  lanes::forceTarget("");
}

inline std::string textOf(const filters::Extents& input, const filters::Extents& filter, filters::OutputMode mode,
                          filters::PadRule pad) {
  return "input " + toText(input) + ", filter " + toText(filter) + ", mode " + std::to_string(static_cast<int>(mode)) +
         ", pad " + std::to_string(static_cast<int>(pad));
}

}  // namespace BP::test
