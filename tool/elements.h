#pragma once

#include <complex>
#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <type_traits>

#include "orvane/filters/array.h"
#include "tool/array.h"

/// Elements of an array as another type.
namespace BP::tool {

template <class T>
struct IsComplex : std::false_type {};
template <class T>
struct IsComplex<std::complex<T>> : std::true_type {};

inline bool isComplex(ElementType type) { return type == ElementType::complex64 || type == ElementType::complex128; }

/// Conversion of one element into To. `rounded` is counted up if To cannot represent the value.
template <class To>
struct Into {
  template <class From>
  static To convert(From value, std::uint64_t& rounded) {
    const To result = static_cast<To>(value);
    if constexpr (!std::is_same_v<To, From>) {  // `long double` represents every whole number of 64 bits
      const auto before = static_cast<long double>(value);
      if (before == before && before != static_cast<long double>(result)) ++rounded;
    }
    return result;
  }
  template <class Real>
  static To convert(const std::complex<Real>& /*value*/, std::uint64_t& /*rounded*/) {
    throw std::logic_error("complex elements do not become real ones");
  }
};
template <class Real>
struct Into<std::complex<Real>> {
  template <class From>
  static std::complex<Real> convert(const From& value, std::uint64_t& rounded) {
    std::uint64_t parts = 0;
    const std::complex<Real> result(Into<Real>::convert(std::real(value), parts),
                                    Into<Real>::convert(std::imag(value), parts));
    rounded += parts > 0 ? 1 : 0;
    return result;
  }
};

/// The elements as To, which must be complex if the elements are. `rounded` counts elements that To cannot represent.
template <class To>
filters::Array<To> elementsAs(const Array& array, const filters::Extents& extents, std::uint64_t& rounded) {
  filters::Array<To> result(extents);
  visitElements(array, [&](const auto* elements) {
    for (std::size_t i = 0; i < result.size(); ++i) result[i] = Into<To>::convert(elements[i], rounded);
  });
  return result;
}

}  // namespace BP::tool
