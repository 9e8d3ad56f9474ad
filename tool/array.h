#pragma once

#include <complex>
#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string_view>
#include <vector>

namespace BP::tool {

enum class ElementType {
  boolean,
  int8,
  int16,
  int32,
  int64,
  uint8,
  uint16,
  uint32,
  uint64,
  float32,
  float64,
  complex64,
  complex128,
};

/// Bytes of one element.
std::size_t sizeOf(ElementType type);

/// The name of a type as NPY users know it: "bool", "int8", "float32", "complex64".
std::string_view nameOf(ElementType type);

/// An array of any number of dimensions; an array without dimensions has one element.
///
/// Element (i0, i1, ...) stands at i0 + i1 * extents[0] + i2 * extents[0] * extents[1] + ..., so dimension 0 is
/// contiguous, as everywhere in Orvane. `bytes` holds the elements in this order and in the machine's byte order.
struct Array {
  ElementType type = ElementType::float64;
  std::vector<std::int64_t> extents;
  std::vector<std::uint8_t> bytes;

  std::size_t elements() const { return bytes.size() / sizeOf(type); }

  /// The elements as type T, which must have the size of `type`. A vector's storage is aligned for all these types.
  template <class T>
  const T* as() const {
    return reinterpret_cast<const T*>(bytes.data());
  }
  template <class T>
  T* as() {
    return reinterpret_cast<T*>(bytes.data());
  }
};

/// Calls `visit` with a zero of the type; bools are `std::uint8_t`.
template <class Visit>
auto visitType(ElementType type, Visit&& visit) {
  switch (type) {
    case ElementType::boolean: return visit(std::uint8_t());
    case ElementType::int8: return visit(std::int8_t());
    case ElementType::int16: return visit(std::int16_t());
    case ElementType::int32: return visit(std::int32_t());
    case ElementType::int64: return visit(std::int64_t());
    case ElementType::uint8: return visit(std::uint8_t());
    case ElementType::uint16: return visit(std::uint16_t());
    case ElementType::uint32: return visit(std::uint32_t());
    case ElementType::uint64: return visit(std::uint64_t());
    case ElementType::float32: return visit(float());
    case ElementType::float64: return visit(double());
    case ElementType::complex64: return visit(std::complex<float>());
    case ElementType::complex128: return visit(std::complex<double>());
  }
  throw std::logic_error("unknown element type");
}

/// Calls `visit` with the address of the first element, in its own type; bools are `std::uint8_t`.
template <class Visit>
auto visitElements(const Array& array, Visit&& visit) {
  return visitType(array.type, [&](auto zero) { return visit(array.as<decltype(zero)>()); });
}

/// Product of the extents times the size of an element. Throws `std::length_error` for a negative extent and for a
/// product beyond the range of a signed 64-bit number.
std::size_t bytesOf(ElementType type, const std::vector<std::int64_t>& extents);

}  // namespace BP::tool
