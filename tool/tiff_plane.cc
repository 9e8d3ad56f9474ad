#include "tool/tiff_plane.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace BP::tool {

TiffPlane::TiffPlane(std::shared_ptr<TiffFile> openFile, std::uint16_t number)
    : file(std::move(openFile)), plane(number) {
  TIFF* const tiff = file->get();
  constexpr std::size_t maxStrip = std::size_t{1} << 23;
  size = static_cast<std::size_t>(TIFFScanlineSize64(tiff));
  height = file->field<std::uint32_t>(TIFFTAG_IMAGELENGTH, 0);
  isTiled = TIFFIsTiled(tiff) != 0;
  if (isTiled) {
    rowsHeld = file->field<std::uint32_t>(TIFFTAG_TILELENGTH, 1);
    tile.resize(static_cast<std::size_t>(TIFFTileSize64(tiff)));
  } else {
    rowsHeld = std::max(1u, std::min(height, file->field<std::uint32_t>(TIFFTAG_ROWSPERSTRIP, height)));
    isByRow = size * rowsHeld > maxStrip;
    if (isByRow) rowsHeld = 1;
  }
  rows.resize(size * rowsHeld);
}

const std::uint8_t* TiffPlane::next() {
  const std::uint32_t within = row % rowsHeld;
  bool isRead = true;
  if (isByRow) {
    isRead = TIFFReadScanline(file->get(), rows.data(), row, plane) == 1;
  } else if (within == 0) {
    isRead = isTiled ? fillTiles() : fillStrip();
  }
  ++row;
  return isRead ? &rows[within * size] : nullptr;
}

bool TiffPlane::fillStrip() {
  const std::uint32_t strip = TIFFComputeStrip(file->get(), row, plane);
  const auto wanted = static_cast<tmsize_t>(size * std::min(rowsHeld, height - row));
  return TIFFReadEncodedStrip(file->get(), strip, rows.data(), wanted) == wanted;
}

bool TiffPlane::fillTiles() {
  TIFF* const tiff = file->get();
  const auto width = file->field<std::uint32_t>(TIFFTAG_IMAGEWIDTH, 0);
  const auto tileWidth = file->field<std::uint32_t>(TIFFTAG_TILEWIDTH, 1);
  const auto tileRow = static_cast<std::size_t>(TIFFTileRowSize64(tiff));
  const std::uint32_t count = std::min(rowsHeld, height - row);
  for (std::uint32_t x = 0, number = 0; x < width; x += tileWidth, ++number) {
    const std::uint32_t index = TIFFComputeTile(tiff, x, row, 0, plane);
    const auto wanted = static_cast<tmsize_t>(tile.size());
    if (TIFFReadEncodedTile(tiff, index, tile.data(), wanted) != wanted) return false;
    const std::size_t at = number * tileRow;
    const std::size_t part = std::min(tileRow, size - at);
    for (std::uint32_t y = 0; y < count; ++y) std::memcpy(&rows[y * size + at], &tile[y * tileRow], part);
  }
  return true;
}

}  // namespace BP::tool
