#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace BP::tool {

/// Some rows of a picture as PNG stores them, and the row before them.
struct PngRows {
  std::vector<std::uint8_t> bytes;  ///< the row before the first one, zeros if there is none, and then the rows
  std::size_t rowBytes = 0;
  std::size_t pixelBytes = 1;  ///< distance of a sample from that of the pixel before it, at least 1
  bool isFiltered = true;      ///< whether differences of neighbours are packed, which suits all but small depths
  bool isFirst = false;
  bool isLast = false;
};

/// Rows that are packed, a piece of one deflate stream, and the checksum of what was packed.
struct PackedRows {
  std::vector<std::uint8_t> bytes;
  std::uint32_t adler = 1;
  std::size_t size = 0;  ///< of what was packed, in bytes
};

/// Packs rows so that pieces can be joined. `level` is that of deflate, 0 to 9; up to 2 the filter of a row is chosen
/// among two, from 3 on among all five of PNG: the one with the least sum of magnitudes. Throws `std::bad_alloc` and
/// `std::runtime_error`.
PackedRows packRows(const PngRows& rows, int level);

}  // namespace BP::tool
