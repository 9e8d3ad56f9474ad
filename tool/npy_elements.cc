#include "tool/npy_elements.h"

#include <algorithm>
#include <cstring>

namespace BP::tool {

namespace {

/// Reverses the bytes of each real or imaginary part.
void reverseByteOrder(std::span<std::uint8_t> bytes, ElementType type) {
  const bool isComplex = type == ElementType::complex64 || type == ElementType::complex128;
  const std::size_t size = sizeOf(type) / (isComplex ? 2 : 1);
  for (std::size_t at = 0; at < bytes.size(); at += size) std::ranges::reverse(bytes.subspan(at, size));
}

}  // namespace

void toNative(std::span<std::uint8_t> bytes, ElementType type, std::endian order) {
  if (order != std::endian::native) reverseByteOrder(bytes, type);
  if (type != ElementType::boolean) return;
  for (std::uint8_t& value : bytes) value = value != 0 ? 1 : 0;
}

void toLittleEndian(std::span<std::uint8_t> bytes, ElementType type) {
  if constexpr (std::endian::native != std::endian::little) reverseByteOrder(bytes, type);
}

std::vector<std::uint8_t> inCOrder(const std::vector<std::uint8_t>& bytes, const std::vector<std::int64_t>& shape,
                                   std::size_t size) {
  const std::size_t rank = shape.size();
  std::vector<std::size_t> steps(rank), index(rank, 0);  // steps in bytes from one element of an axis to the next
  for (std::size_t axis = 0, step = size; axis < rank; ++axis) {
    steps[axis] = step;
    step *= static_cast<std::size_t>(shape[axis]);
  }
  std::vector<std::uint8_t> result(bytes.size());
  std::size_t from = 0;
  for (std::size_t to = 0; to < result.size(); to += size) {
    std::memcpy(result.data() + to, bytes.data() + from, size);
    for (std::size_t axis = rank; axis-- > 0;) {
      from += steps[axis];
      if (++index[axis] < static_cast<std::size_t>(shape[axis])) break;
      from -= steps[axis] * index[axis];
      index[axis] = 0;
    }
  }
  return result;
}

}  // namespace BP::tool
