#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "tool/array.h"

namespace BP::tool {

/// The contents of an NPY file's header apart from the version: the dictionary
///
///     {'descr': '<f8', 'fortran_order': False, 'shape': (480, 640), }
struct NpyHeader {
  ElementType type = ElementType::float64;
  std::endian order = std::endian::little;  ///< of the bytes; that of this machine for elements of one byte
  bool isFortran = false;                   ///< the first axis is contiguous rather than the last
  std::vector<std::int64_t> shape;          ///< extents of the axes, the first one first
};

/// The first bytes of an NPY file.
inline constexpr std::string_view npyMagic = "\x93NUMPY";

/// The largest number of axes.
inline constexpr std::size_t maxNpyRank = 64;

/// Reads the dictionary. It must have the three keys, in any order, and no other. Errors are `std::runtime_error` that
/// begin with `what` and say what is wrong and what is allowed.
NpyHeader parseNpyHeader(std::string_view text, const std::string& what);

/// The dictionary of a header.
std::string npyHeaderText(const NpyHeader& header);

/// A shape as Python writes it: (), (3,), (3, 4).
std::string shapeText(const std::vector<std::int64_t>& shape);

}  // namespace BP::tool
