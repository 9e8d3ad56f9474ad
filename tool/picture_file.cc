#include "tool/picture_file.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <limits>
#include <stdexcept>
#include <utility>

#include "tool/checksum.h"
#include "tool/file_kind.h"
#include "tool/input_file.h"
#include "tool/jpeg_reader.h"
#include "tool/messages.h"
#include "tool/names.h"
#include "tool/npy_header.h"
#include "tool/npy_reader.h"
#include "tool/npy_writer.h"
#include "tool/png_reader.h"
#include "tool/png_writer.h"
#include "tool/text.h"
#include "tool/tiff_reader.h"
#include "tool/tiff_writer.h"

namespace BP::tool {

namespace {

using namespace std::string_view_literals;

/// The first bytes of a file, and what opens it.
struct Opening {
  std::string_view start;
  std::unique_ptr<RowReader> (*open)(std::unique_ptr<InputFile>);
};
constexpr Opening openings[] = {{"\x89PNG\r\n\x1a\n"sv, openPng},
                                {"\xff\xd8\xff"sv, openJpeg},
                                {npyMagic, openNpy},
                                {"II*\0"sv, openTiff},
                                {"MM\0*"sv, openTiff},
                                {"II+\0"sv, openTiff},
                                {"MM\0+"sv, openTiff}};

constexpr Named<FileFormat> formats[] = {
    {"png", FileFormat::png}, {"tiff", FileFormat::tiff}, {"npy", FileFormat::npy}};

constexpr Named<FileFormat> endings[] = {
    {".png", FileFormat::png}, {".tif", FileFormat::tiff}, {".tiff", FileFormat::tiff}, {".npy", FileFormat::npy}};

/// The compression of a picture unless another is asked for: quick.
constexpr int defaultLevel = 2;

constexpr std::size_t blockSize = std::size_t{1} << 20;

PictureHeader headerOf(const TaggedImage& tagged) {
  const Image& image = tagged.image;
  PictureHeader header;
  header.width = image.width;
  header.height = image.height;
  header.channels = image.channels;
  header.hasAlpha = image.hasAlpha();
  header.isBilevel = image.isBilevel;
  header.isPacked = tagged.isPacked;
  header.type = image.bitDepth == 8 ? ElementType::uint8 : ElementType::uint16;
  header.tags = tagged.tags;
  return header;
}

/// Opens a stream for a whole picture, and writes all of its rows.
std::string addRows(OutputFiles& files, const std::string& path, const PictureHeader& header,
                    const WriteSettings& settings, const std::uint8_t* rows) {
  Workers workers(0);
  const std::unique_ptr<RowWriter> writer = createPicture(files.open(path), header, settings, workers);
  writer->write(rows, header.rows());
  writer->finish();
  if (!settings.hasChecksum) return {};
  Checksum checksum(header);
  checksum.addRows(rows, header.rows());
  return checksum.text();
}

}  // namespace

std::unique_ptr<RowReader> openPicture(const std::string& path) {
  auto file = std::make_unique<InputFile>(path);
  const auto opening =
      std::ranges::find_if(openings, [&](const Opening& known) { return file->start().starts_with(known.start); });
  if (opening != std::end(openings)) return opening->open(std::move(file));
  throw std::runtime_error(file->name() + " is not a PNG, TIFF, JPEG or NPY file" + otherKind(file->start()));
}

Array readArray(RowReader& reader) {
  const PictureHeader& header = reader.header();
  Array array{header.type, header.extents(), {}};
  const std::size_t size = header.rowBytes();
  const auto step = static_cast<std::int64_t>(std::max<std::size_t>(1, blockSize / std::max<std::size_t>(1, size)));
  for (std::int64_t y = 0; y < header.rows() && size > 0; y += step) {
    const std::int64_t count = std::min(step, header.rows() - y);
    const std::size_t before = array.bytes.size();
    array.bytes.resize(before + static_cast<std::size_t>(count) * size);
    reader.read(array.bytes.data() + before, count);
  }
  reader.finish();
  return array;
}

Array readArray(const std::string& path) { return readArray(*openPicture(path)); }

bool isImage(const PictureHeader& header) {
  const bool hasType = header.type == ElementType::uint8 || header.type == ElementType::uint16;
  const bool hasShape = header.isArray() ? header.arrayExtents.size() == 2 && header.width > 0 && header.height > 0
                                         : header.colours() == 1 || header.colours() == 3;
  return hasType && hasShape && header.pages == 1;
}

TaggedImage readImage(RowReader& reader, const std::string& path) {
  const PictureHeader& header = reader.header();
  if (!isImage(header)) {
    throw std::runtime_error(inQuotes(path) + " has " + counted(header.pages, "page") + " of " +
                             counted(header.channels, "channel") + " of type " + std::string(nameOf(header.type)) +
                             "; allowed is one page of grey or colour of type uint8 or uint16");
  }
  constexpr std::int64_t maxPixels = std::numeric_limits<int>::max();
  if (header.width > maxPixels / header.height) {
    throw std::runtime_error(inQuotes(path) + " has " + std::to_string(header.width) + "x" +
                             std::to_string(header.height) + " pixels; at most " + std::to_string(maxPixels) +
                             " are allowed");
  }
  const Array array = readArray(reader);
  TaggedImage result{{.width = static_cast<int>(header.width),
                      .height = static_cast<int>(header.height),
                      .channels = header.channels,
                      .bitDepth = static_cast<int>(8 * sizeOf(header.type)),
                      .samples = std::vector<std::uint16_t>(array.elements()),
                      .isBilevel = header.isBilevel},
                     header.tags,
                     header.isPacked};
  if (header.type == ElementType::uint8) {
    std::ranges::copy(array.bytes, result.image.samples.begin());
  } else {
    std::copy_n(array.as<std::uint16_t>(), array.elements(), result.image.samples.begin());
  }
  return result;
}

TaggedImage readImage(const std::string& path) { return readImage(*openPicture(path), path); }

std::vector<Option> writeOptions() {
  return {
      {.name = "--format", .meaning = "Kind of OUT, whatever its name", .allowed = namesOf(formats), .shortName = 'f'},
      {.name = "--compression",
       .meaning = "Effort for PNG and TIFF, 0 (none) to 9; default: 2, 0 if IN is a TIFF without",
       .form = "N",
       .shortName = 'z'},
      checksumOption()};
}

WriteSettings writeSettings(const Values& values) {
  WriteSettings settings;
  if (values.has("--format")) settings.format = rowNamed(formats, values["--format"], "--format").value;
  if (values.has("--compression")) settings.level = parseWhole(values["--compression"], 0, 9, "--compression");
  settings.hasChecksum = values.has("--checksum");
  return settings;
}

std::string formatDetails() {
  return "Files: PNG, TIFF and NPY are read and written, JPEG is read. Contents say what a file is; the name of OUT,\n"
         ".png, .tif, .tiff or .npy, or --format says what is written. A name - is the standard input or output.\n"
         "Resolution, orientation and colour profile are kept where the format can; what is dropped is said.\n";
}

FileFormat formatFor(const std::string& path, const WriteSettings& settings, FileFormat input) {
  if (settings.format) return *settings.format;
  const std::string name = lowered(path);
  for (const Named<FileFormat>& ending : endings) {
    if (name.ends_with(ending.name)) return ending.value;
  }
  if (isStream(path)) return input == FileFormat::jpeg ? FileFormat::png : input;
  throw std::runtime_error("cannot write " + inQuotes(path) +
                           ": the name must end in .png, .tif, .tiff or .npy, unless --format says the kind");
}

std::unique_ptr<RowWriter> createPicture(OutputStream& stream, const PictureHeader& header,
                                         const WriteSettings& settings, Workers& workers) {
  const int level = settings.level.value_or(defaultLevel);
  switch (header.format) {
    case FileFormat::png: return createPng(stream, header, level, workers);
    case FileFormat::tiff:
      return createTiff(stream, header, settings.level.value_or(header.isPacked ? defaultLevel : 0), workers);
    case FileFormat::npy: return createNpy(stream, header);
    case FileFormat::jpeg: break;
  }
  throw std::logic_error("no JPEG files are written");
}

std::vector<std::string> lostTags(const PictureTags& tags, FileFormat format) {
  std::vector<std::string> lost = tags.others;
  const bool isNpy = format == FileFormat::npy;
  if (isNpy && tags.xResolution > 0) lost.emplace_back("resolution");
  if (isNpy && tags.orientation != 1) lost.emplace_back("orientation");
  if (isNpy && !tags.profile.empty()) lost.emplace_back("colour profile");
  if (format != FileFormat::png && tags.renderingIntent >= 0) lost.emplace_back("sRGB mark");
  if (format != FileFormat::png && tags.gamma > 0 && tags.renderingIntent < 0) lost.emplace_back("gamma");
  return lost;
}

void tellLost(const std::string& path, const PictureTags& tags, FileFormat format) {
  std::string names;
  for (const std::string& name : lostTags(tags, format)) names += (names.empty() ? "" : ", ") + name;
  if (!names.empty()) tell(path + ": dropped: " + names);
}

std::string addImage(OutputFiles& files, const std::string& path, const TaggedImage& image,
                     const WriteSettings& settings) {
  const PictureHeader header = inFormat(headerOf(image), formatFor(path, settings));
  const std::vector<std::uint16_t>& samples = image.image.samples;
  if (header.type == ElementType::uint16) {
    return addRows(files, path, header, settings, reinterpret_cast<const std::uint8_t*>(samples.data()));
  }
  const std::vector<std::uint8_t> bytes(samples.begin(), samples.end());
  return addRows(files, path, header, settings, bytes.data());
}

std::string addArray(OutputFiles& files, const std::string& path, const Array& array, const WriteSettings& settings) {
  PictureHeader header;
  header.format = FileFormat::npy;
  header.type = array.type;
  header.arrayExtents = array.extents;
  header.width = 1;
  header.height = static_cast<std::int64_t>(array.elements());
  return addRows(files, path, header, settings, array.bytes.data());
}

std::vector<std::uint8_t> pngBytes(const Image& image) {
  const File copy(std::tmpfile());
  if (!copy) failFile("write", "a temporary file", errno);
  const std::vector<std::uint8_t> bytes(image.samples.begin(), image.samples.end());
  const PictureHeader header = headerOf({image});
  Workers workers(1);
  OutputStream stream(::dup(::fileno(copy.get())), "a temporary file");
  constexpr int level = 9;
  const std::unique_ptr<RowWriter> writer = createPng(stream, header, level, workers);
  const bool isWide = header.type == ElementType::uint16;
  writer->write(isWide ? reinterpret_cast<const std::uint8_t*>(image.samples.data()) : bytes.data(), header.rows());
  writer->finish();
  std::vector<std::uint8_t> result;
  std::rewind(copy.get());
  appendBytes(result, copy.get(), static_cast<std::size_t>(sizeOf(copy)));
  return result;
}

void writeImage(const std::string& path, const TaggedImage& image, const WriteSettings& settings) {
  OutputFiles files;
  const std::string hash = addImage(files, path, image, settings);
  files.commit();
  if (!hash.empty()) printChecksum(path, hash);
}

}  // namespace BP::tool
