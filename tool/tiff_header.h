#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "tool/picture.h"
#include "tool/tiff_file.h"

namespace BP::tool {

/// How a page of a TIFF file stores its samples.
struct TiffLayout {
  int bits = 8;                                       ///< of a sample
  int samples = 1;                                    ///< of a pixel, as they are stored
  bool isSeparate = false;                            ///< the samples of a pixel lie in separate planes
  bool isWhiteZero = false;                           ///< grey whose 0 is white
  std::vector<std::array<std::uint16_t, 3>> palette;  ///< the colours of indices, or empty
  ElementType type = ElementType::uint8;
};

/// The number of pages, and of those that have the shape of the first. Reduced pictures and masks do not count.
struct TiffPages {
  std::int64_t all = 0;
  std::int64_t alike = 0;
};

/// The layout of the page at which `file` stands. Throws `std::runtime_error` that names the file for samples or
/// colours that are not supported.
TiffLayout readTiffLayout(TiffFile& file, const std::string& name);

/// The shape and the tags of the page at which `file` stands.
PictureHeader tiffHeader(TiffFile& file, const TiffLayout& layout, const std::string& name);

/// Visits all pages; leaves `file` at the last.
TiffPages countPages(TiffFile& file, const TiffLayout& layout);

/// Has pictures that JPEG packed come as red, green and blue.
void prepareTiff(TiffFile& file);

}  // namespace BP::tool
