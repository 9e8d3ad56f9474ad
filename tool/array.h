#pragma once

#include <cstddef>
#include <cstdint>
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

/// An array of any number of dimensions; with none it holds one element.
///
/// Element (i0, i1, ...) stands at i0 + i1 * extents[0] + i2 * extents[0] * extents[1] + ..., as everywhere in Orvane:
/// dimension 0 is contiguous. Elements lie in `bytes` one behind the other in the machine's own byte order.
struct Array {
  ElementType type = ElementType::float64;
  std::vector<std::int64_t> extents;
  std::vector<std::uint8_t> bytes;

  std::size_t elements() const { return bytes.size() / sizeOf(type); }

  /// The elements as type T, whose size must be that of `type`. Storage of a vector is aligned for all of them.
  template <class T>
  const T* as() const {
    return reinterpret_cast<const T*>(bytes.data());
  }
  template <class T>
  T* as() {
    return reinterpret_cast<T*>(bytes.data());
  }
};

/// Product of the extents times the size of an element; throws `std::length_error` if an extent is negative or the
/// product exceeds what a signed 64-bit number holds.
std::size_t bytesOf(ElementType type, const std::vector<std::int64_t>& extents);

}  // namespace BP::tool
