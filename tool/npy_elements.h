#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "tool/array.h"

namespace BP::tool {

/// Turns elements of the byte order `order` into the machine's own, and bools into 0 or 1.
void toNative(std::span<std::uint8_t> bytes, ElementType type, std::endian order);

/// Turns elements of the machine's byte order into little-endian ones.
void toLittleEndian(std::span<std::uint8_t> bytes, ElementType type);

/// Elements in C order, of `bytes` that has them in Fortran order; `size` is that of an element.
std::vector<std::uint8_t> inCOrder(const std::vector<std::uint8_t>& bytes, const std::vector<std::int64_t>& shape,
                                   std::size_t size);

}  // namespace BP::tool
