#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "tool/array.h"

/// Pictures and arrays as streams of rows, whatever the kind of the file.
namespace BP::tool {

enum class FileFormat { png, tiff, jpeg, npy };

/// What a picture says about itself beside its samples.
struct PictureTags {
  double xResolution = 0;  ///< pixels per metre, 0 if unknown
  double yResolution = 0;
  bool isAspect = false;              ///< the two resolutions have no unit: only their ratio counts
  int orientation = 1;                ///< where row 0 and column 0 are, 1 to 8 as in EXIF; 1 is upper left
  std::vector<std::uint8_t> profile;  ///< ICC colour profile
  int renderingIntent = -1;           ///< 0 to 3 if the colours are sRGB
  double gamma = 0;                   ///< exponent of the samples as PNG states it, 0 if unknown
  std::vector<std::string> others;    ///< what else the file has, in words; no file that is written has it
};

/// The shape of a picture or an array, and what its rows consist of.
///
/// A row has `width` pixels of `channels` samples each; a picture has `height` rows, and a stack has `pages` pictures
/// of one shape, one below the other. An array of one dimension is one row; dimensions from the third on are pages.
struct PictureHeader {
  FileFormat format = FileFormat::png;
  std::int64_t width = 0;
  std::int64_t height = 0;
  std::int64_t pages = 1;
  int channels = 1;
  bool hasAlpha = false;      ///< the last channel is opacity
  bool isAssociated = false;  ///< colours are multiplied by alpha
  bool isBilevel = false;     ///< the file has grey of one bit; the samples are 0 or 255 of type uint8
  bool isPacked = false;      ///< the file is compressed
  ElementType type = ElementType::uint8;
  std::vector<std::int64_t> arrayExtents;  ///< of an NPY file; empty for pictures
  std::size_t xAxis = 0;                   ///< of an NPY file the dimension that goes across; the next one goes down
  PictureTags tags;

  bool isArray() const { return format == FileFormat::npy; }
  std::int64_t rows() const { return height * pages; }
  std::size_t rowSamples() const { return static_cast<std::size_t>(width) * static_cast<std::size_t>(channels); }
  std::size_t rowBytes() const { return rowSamples() * sizeOf(type); }
  /// The number of channels without alpha.
  int colours() const { return hasAlpha ? channels - 1 : channels; }
  /// The extents of the elements as an array, dimension 0 first: those of an NPY file; of pictures the channels if
  /// there is more than one, width, height, and the pages if there is more than one.
  std::vector<std::int64_t> extents() const;
};

/// The header of the same rows in a file of another format.
PictureHeader inFormat(PictureHeader header, FileFormat format);

/// Takes the axes of an array as the letters of `axes` name them, the first axis of its shape first: Y and X side by
/// side are those of a plane, C behind them is that of the channels, all others count planes. Throws
/// `std::runtime_error` for other letters or another number of them.
void nameAxes(PictureHeader& header, const std::string& axes);

/// Reads rows from the first to the last, page by page.
///
/// A row is a stretch of samples of the header's type in the machine's byte order, the channels of a pixel side by
/// side. Errors are `std::runtime_error` that name the file.
class RowReader {
 public:
  virtual ~RowReader() = default;
  const PictureHeader& header() const { return shape; }
  /// Has the elements of an array taken by other axes (see `nameAxes`), before any row is read.
  void setAxes(const std::string& axes) { nameAxes(shape, axes); }
  /// Reads the next `count` rows, of which as many must be left.
  virtual void read(std::uint8_t* to, std::int64_t count) = 0;
  /// Checks what follows the last row.
  virtual void finish() {}

 protected:
  PictureHeader shape;
};

/// Writes rows from the first to the last.
class RowWriter {
 public:
  virtual ~RowWriter() = default;
  virtual void write(const std::uint8_t* from, std::int64_t count) = 0;
  /// Writes what follows the last row.
  virtual void finish() = 0;
};

}  // namespace BP::tool
