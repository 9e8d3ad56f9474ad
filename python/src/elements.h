#pragma once

#include <array>
#include <complex>
#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <type_traits>

#include "orvane/orvane.h"

/// Element types and arrays whose types are known only at run time, as those of NumPy are.
namespace BP::python {

using namespace BP::filters;

/// An element type that filters take.
enum class Element {
  boolean,
  int8,
  uint8,
  int16,
  uint16,
  int32,
  uint32,
  float32,
  float64,
  complex64,
  complex128,
};
inline constexpr int elementTypes = 11;

/// NumPy's names of the element types, in their order.
inline constexpr std::array<const char*, elementTypes> elementNames = {
    "bool", "int8", "uint8", "int16", "uint16", "int32", "uint32", "float32", "float64", "complex64", "complex128"};
inline std::string nameOf(Element element) { return elementNames[static_cast<std::size_t>(element)]; }

/// An error in the type of an argument, which becomes Python's `TypeError`.
class WrongType : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// Calls `visit` with a `std::type_identity` of the C++ type of an element.
template <class Visit>
decltype(auto) visitElement(Element element, Visit&& visit) {
  switch (element) {
    case Element::boolean: return visit(std::type_identity<bool>());
    case Element::int8: return visit(std::type_identity<std::int8_t>());
    case Element::uint8: return visit(std::type_identity<std::uint8_t>());
    case Element::int16: return visit(std::type_identity<std::int16_t>());
    case Element::uint16: return visit(std::type_identity<std::uint16_t>());
    case Element::int32: return visit(std::type_identity<std::int32_t>());
    case Element::uint32: return visit(std::type_identity<std::uint32_t>());
    case Element::float32: return visit(std::type_identity<float>());
    case Element::float64: return visit(std::type_identity<double>());
    case Element::complex64: return visit(std::type_identity<std::complex<float>>());
    default: return visit(std::type_identity<std::complex<double>>());
  }
}

/// The element type of a C++ type.
template <class T>
constexpr Element elementOf() {
  if constexpr (std::is_same_v<T, bool>) return Element::boolean;
  if constexpr (std::is_same_v<T, std::int8_t>) return Element::int8;
  if constexpr (std::is_same_v<T, std::uint8_t>) return Element::uint8;
  if constexpr (std::is_same_v<T, std::int16_t>) return Element::int16;
  if constexpr (std::is_same_v<T, std::uint16_t>) return Element::uint16;
  if constexpr (std::is_same_v<T, std::int32_t>) return Element::int32;
  if constexpr (std::is_same_v<T, std::uint32_t>) return Element::uint32;
  if constexpr (std::is_same_v<T, float>) return Element::float32;
  if constexpr (std::is_same_v<T, double>) return Element::float64;
  if constexpr (std::is_same_v<T, std::complex<float>>) return Element::complex64;
  return Element::complex128;
}

/// The memory of an array of any element type.
struct Memory {
  void* data;
  Layout layout;
  Element element;

  /// A view of elements T, which are those of the array.
  template <class T>
  ArrayView<T> view() const {
    return {static_cast<T*>(data), layout};
  }
};

/// Whether a filter of HT goes with inputs of UT.
template <class UT, class HT>
constexpr bool isFilterPair() {
  if constexpr (!detail::isFilterElement<HT> || std::is_same_v<UT, bool>) {
    return false;
  } else if constexpr (std::is_integral_v<UT>) {
    return sizeof(UT) <= 2 || std::is_same_v<RealOf<HT>, double>;
  } else {
    return std::is_same_v<RealOf<UT>, RealOf<HT>>;
  }
}

/// Throws the `WrongType` of an input and a filter whose elements do not go together.
[[noreturn]] void refusePair(const char* inputName, Element input, const char* filterName, Element filter);

}  // namespace BP::python
