#pragma once

#include <algorithm>

#include "orvane/filters/fixed_convolution.h"
#include "tests/support/fixed_model.h"

namespace BP::test {

/// Types around the bounds between the paths: an accumulator that is a bit too short for the sums, or not.
inline filters::FixedTypes typesNear(auto& random, const FixedType& filter, int taps) {
  filters::FixedTypes types;
  types.input = randomType(random, 2, pick(random, 0, 4) == 0 ? 34 : 16);
  types.modes = randomModes(random);
  types.modes.gathering = static_cast<filters::Gathering>(pick(random, 0, 2));
  const bool isSigned = types.input.isSigned || filter.isSigned;
  const int word = types.input.word + filter.word, fraction = types.input.fraction + filter.fraction;
  if (pick(random, 0, 1) == 0) {
    const int dropped = pick(random, -1, std::min(6, word - 1));
    types.product = {std::max(word - dropped + pick(random, -2, 1), 1), fraction - dropped, isSigned};
  }
  const int productWord = types.product ? types.product->word : word;
  const int productFraction = types.product ? types.product->fraction : fraction;
  int carries = 1;
  while ((1 << carries) < taps) ++carries;
  const int shift = pick(random, 0, 2) == 0 ? pick(random, -2, 2) : 0;
  types.accumulator = {std::max(productWord + shift + carries + pick(random, -carries - 2, 2), 1),
                       productFraction + shift, isSigned};
  if (pick(random, 0, 9) == 0) {  // the word of a lane
    types.accumulator = {32, productFraction, isSigned};
    types.modes.overflow = filters::Overflow::saturate;
  }
  types.output = randomType(random, 2, 20);
  types.output.fraction = types.accumulator.fraction - pick(random, -3, 10);
  return types;
}

}  // namespace BP::test
