#pragma once

#include <complex>
#include <random>
#include <string>
#include <type_traits>

#include "orvane/filters/array.h"

namespace bench {

template <class T>
constexpr bool isComplex = !std::is_floating_point_v<T>;

template <class T>
std::string elementName() {
  using Real = decltype(std::real(T()));
  const std::string real = std::is_same_v<Real, float> ? "float" : "double";
  return isComplex<T> ? "complex<" + real + '>' : real;
}

/// Name of the elements of input and filter: one if they are the same.
template <class UT, class HT>
std::string typeName() {
  return std::is_same_v<UT, HT> ? elementName<UT>() : elementName<UT>() + " x " + elementName<HT>();
}

/// Multiplications of real numbers, each with an addition, that the product of input and filter adds to a sum.
template <class UT, class HT>
constexpr double pairsPerTap = (isComplex<UT> ? 2 : 1) * (isComplex<HT> ? 2 : 1);

/// An array of random elements, with parts between -1 and 1.
template <class T>
BP::filters::Array<T> randomArray(const BP::filters::Extents& extents) {
  std::mt19937 engine(1);
  std::uniform_real_distribution<decltype(std::real(T()))> any(-1, 1);
  BP::filters::Array<T> array(extents);
  for (T& value : array) {
    if constexpr (isComplex<T>) {
      value = T(any(engine), any(engine));
    } else {
      value = any(engine);
    }
  }
  return array;
}

}  // namespace bench
