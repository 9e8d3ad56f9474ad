#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tool/image.h"
#include "tool/operation.h"
#include "tool/output_files.h"
#include "tool/picture.h"
#include "tool/workers.h"

/// Files of pictures and arrays of every kind. What a file is follows from its first bytes, what is written from its
/// name or from `--format`.
namespace BP::tool {

/// Opens a PNG, TIFF, JPEG or NPY file, a pipe or a device; "-" is the standard input. Throws `std::runtime_error`,
/// which names the file, if it cannot be read, is damaged, or is of another kind.
std::unique_ptr<RowReader> openPicture(const std::string& path);

/// All elements of a file, of the extents of its header. Memory grows with what is read.
Array readArray(RowReader& reader);
Array readArray(const std::string& path);

/// True for what an `Image` can hold: a single page of uint8 or uint16, grey or colour, with or without alpha, and an
/// array of two dimensions of these types.
bool isImage(const PictureHeader& header);

/// A picture with its tags.
struct TaggedImage {
  Image image;
  PictureTags tags = {};
  bool isPacked = false;
};

/// Reads a picture for which `isImage` is true; throws `std::runtime_error` for another, and for more than 2^31 - 1
/// pixels.
TaggedImage readImage(RowReader& reader, const std::string& path);
TaggedImage readImage(const std::string& path);

/// How files are written.
struct WriteSettings {
  std::optional<FileFormat> format = {};  ///< that of `--format`
  std::optional<int> level = {};          ///< effort of compression, 0 to 9
  bool hasChecksum = false;               ///< whether the hash of what is written is printed
};

/// `--format`, `--compression` and `--checksum`.
std::vector<Option> writeOptions();
WriteSettings writeSettings(const Values& values);

/// The part of a usage text about the kinds of files.
std::string formatDetails();

/// The format in which `path` is to be written: that of the settings, else that of the name's ending; of a pipe, a
/// device or the standard output that of `input`, which is PNG instead of JPEG. Throws `std::runtime_error` for a name
/// with another ending.
FileFormat formatFor(const std::string& path, const WriteSettings& settings, FileFormat input = FileFormat::png);

/// Opens a writer of `header.format`.
std::unique_ptr<RowWriter> createPicture(OutputStream& stream, const PictureHeader& header,
                                         const WriteSettings& settings, Workers& workers);

/// What of the tags a file of `format` cannot keep, in words.
std::vector<std::string> lostTags(const PictureTags& tags, FileFormat format);

/// Says what of the tags was dropped from the file `path`, unless nothing was.
void tellLost(const std::string& path, const PictureTags& tags, FileFormat format);

/// Adds a picture or an array to the files. Returns the hash of its elements (see `Checksum`), if the settings ask for
/// it, else an empty text.
std::string addImage(OutputFiles& files, const std::string& path, const TaggedImage& image,
                     const WriteSettings& settings);
std::string addArray(OutputFiles& files, const std::string& path, const Array& array, const WriteSettings& settings);

/// A picture as the bytes of a PNG file.
std::vector<std::uint8_t> pngBytes(const Image& image);

/// Writes the only file of a run, and prints its hash if the settings ask for it.
void writeImage(const std::string& path, const TaggedImage& image, const WriteSettings& settings);

}  // namespace BP::tool
