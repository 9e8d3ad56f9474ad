#pragma once

#include <cmath>
#include <complex>
#include <limits>
#include <random>
#include <vector>

namespace BP::test {

/// Whole number from `low` to `high`. What is random here takes any source of chance that has such a function: the
/// generator of a test, or the bytes of a fuzzer's input.
inline int pick(std::mt19937& random, int low, int high) {
  return std::uniform_int_distribution<int>(low, high)(random);
}

/// Values over many magnitudes, so that a sum in another order or precision shows. `special` mixes in zeros of both
/// signs, infinities, NaN and subnormals.
template <class T>
struct RandomValue {
  static T of(auto& random, bool special) {
    if (special && pick(random, 0, 4) == 0) {
      const T values[] = {T(0),
                          -T(0),
                          std::numeric_limits<T>::infinity(),
                          -std::numeric_limits<T>::infinity(),
                          std::numeric_limits<T>::quiet_NaN(),
                          std::numeric_limits<T>::denorm_min(),
                          T(1)};
      return values[pick(random, 0, 6)];
    }
    return std::ldexp(std::uniform_real_distribution<T>(-1, 1)(random), pick(random, -12, 12));
  }
};
template <class T>
struct RandomValue<std::complex<T>> {
  static std::complex<T> of(auto& random, bool special) {
    const T re = RandomValue<T>::of(random, special);
    return {re, RandomValue<T>::of(random, special)};
  }
};

template <>
struct RandomValue<int> {
  static int of(auto& random, bool /*special*/) { return pick(random, -50, 50); }
};

template <class T>
std::vector<T> randomValues(auto& random, int count, bool special = false) {
  std::vector<T> values;
  for (int i = 0; i < count; ++i) values.push_back(RandomValue<T>::of(random, special));
  return values;
}

/// Whether two values have the same bits, one NaN counting like another.
template <class T>
bool sameBits(T a, T b) {
  return (std::isnan(a) && std::isnan(b)) || (a == b && std::signbit(a) == std::signbit(b));
}
inline bool sameBits(bool a, bool b) { return a == b; }
template <class T>
bool sameBits(std::complex<T> a, std::complex<T> b) {
  return sameBits(a.real(), b.real()) && sameBits(a.imag(), b.imag());
}

}  // namespace BP::test
