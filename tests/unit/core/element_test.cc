#include "orvane/core/element.h"

#include <gtest/gtest.h>

#include "tests/support/random_values.h"

namespace BP {
namespace {

/// Quotients with a real divisor over all magnitudes: divided part by part within bounds, as the library does it.
template <class T>
void checkDivision() {
  using test::pick, test::randomValues;
  constexpr int exponents = std::numeric_limits<T>::max_exponent;
  std::mt19937 random(5);
  for (int i = 0; i < 100000; ++i) {
    const auto part = [&] {
      const T value = randomValues<T>(random, 1, pick(random, 0, 3) == 0)[0];
      return std::ldexp(value, pick(random, -exponents, exponents));
    };
    const T d = std::abs(part()), re = part(), im = part();
    if (d == 0) continue;
    std::complex<T> quotient(re, im);
    const std::complex<T> wanted = quotient / std::complex<T>(d, 0);
    divideBy(quotient, std::complex<T>(d, 0));
    ASSERT_TRUE(test::sameBits(quotient, wanted))
        << re << " + " << im << "i by " << d << ": " << quotient << " for " << wanted;
  }
}

TEST(Element, ComplexQuotientsByRealDivisorsAreThoseOfTheLibrary) {
  checkDivision<float>();
  checkDivision<double>();
}

}  // namespace
}  // namespace BP
