#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace BP::tool {

/// What is read of a picture's EXIF data.
struct ExifNotes {
  int orientation = 1;   ///< 1 to 8
  bool hasMore = false;  ///< whether there are other entries
};

/// Reads EXIF data, which begin with a TIFF header. Data that are damaged give what was read before.
ExifNotes readExif(std::span<const std::uint8_t> bytes);

/// EXIF data with the orientation alone.
std::vector<std::uint8_t> exifOf(int orientation);

}  // namespace BP::tool
