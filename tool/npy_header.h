#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "tool/array.h"

namespace BP::tool {

/// What the header of an NPY file says, apart from its version: the dictionary
///
///     {'descr': '<f8', 'fortran_order': False, 'shape': (480, 640), }
struct NpyHeader {
  ElementType type = ElementType::float64;
  std::endian order = std::endian::little;  ///< of the bytes; that of this machine where a byte is all there is
  bool isFortran = false;                   ///< the first axis is contiguous rather than the last
  std::vector<std::int64_t> shape;          ///< extents of the axes, the first one first
};

/// The most axes that are read.
inline constexpr std::size_t highestNpyRank = 64;

/// Reads the dictionary; the three keys must all be there, in any order, and nothing else. Errors are
/// `std::runtime_error` that begin with `what` and say what is wrong and what is allowed.
NpyHeader parseNpyHeader(std::string_view text, const std::string& what);

/// The dictionary of a header.
std::string npyHeaderText(const NpyHeader& header);

/// A shape as Python writes it: (), (3,), (3, 4).
std::string shapeText(const std::vector<std::int64_t>& shape);

}  // namespace BP::tool
