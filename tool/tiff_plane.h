#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tool/tiff_file.h"

namespace BP::tool {

/// Rows of a TIFF picture as they are stored: all samples of a pixel, or those of one of its separate planes.
///
/// Strips and tiles are unpacked as their rows come. A strip of more than a few megabytes is unpacked row by row.
class TiffPlane {
 public:
  /// `openFile` stands at the page to be read; `number` counts separate planes, and is 0 if there are none.
  TiffPlane(std::shared_ptr<TiffFile> openFile, std::uint16_t number);

  /// Bytes of a row as it is stored.
  std::size_t rowBytes() const { return size; }
  /// The next row, valid until the next call, or null if it cannot be read: the file has the error.
  const std::uint8_t* next();

 private:
  bool fillStrip();
  bool fillTiles();

  std::shared_ptr<TiffFile> file;
  std::uint16_t plane;
  std::size_t size = 0;
  std::uint32_t height = 0;
  std::uint32_t rowsHeld = 0;  ///< rows of a strip or of a row of tiles; 1 if rows come one by one
  bool isTiled = false;
  bool isByRow = false;
  std::uint32_t row = 0;  ///< the next one
  std::vector<std::uint8_t> rows;
  std::vector<std::uint8_t> tile;
};

}  // namespace BP::tool
