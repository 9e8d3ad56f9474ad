#include "tool/png_file.h"

#include <png.h>

#include <algorithm>
#include <array>
#include <csetjmp>
#include <cstdio>
#include <limits>
#include <new>
#include <stdexcept>
#include <vector>

#include "tool/file.h"
#include "tool/file_kind.h"
#include "tool/text.h"

namespace BP::tool {

namespace {

using Message = std::array<char, 160>;

[[noreturn]] void onError(png_structp png, png_const_charp text) {
  auto* message = static_cast<Message*>(png_get_error_ptr(png));
  std::snprintf(message->data(), message->size(), "%s", text);
  png_longjmp(png, 1);
}

void onWarning(png_structp /*png*/, png_const_charp /*text*/) {}

/// Runs `body`, which calls libpng; false if libpng gave up in it.
///
/// libpng leaves by longjmp, so nothing in `body` may have a destructor; the caller owns what it works on. This
/// function is the only frame that setjmp returns to, and nothing in it changes.
template <class Body>
bool succeeds(png_structp png, const Body& body) {
  if (setjmp(png_jmpbuf(png)) != 0) return false;
  body();
  return true;
}

/// libpng's state for reading one file.
struct Reader {
  explicit Reader(std::FILE* openFile)
      : file(openFile),
        png(png_create_read_struct(PNG_LIBPNG_VER_STRING, &message, onError, onWarning)),
        info(png == nullptr ? nullptr : png_create_info_struct(png)) {
    if (info == nullptr) {
      png_destroy_read_struct(&png, nullptr, nullptr);
      throw std::bad_alloc();
    }
    png_set_read_fn(png, this, readBytes);
  }
  ~Reader() { png_destroy_read_struct(&png, &info, nullptr); }
  Reader(const Reader&) = delete;
  Reader& operator=(const Reader&) = delete;

  /// Gives libpng what was read ahead, then what is in the file.
  static void readBytes(png_structp png, png_bytep bytes, std::size_t count) {
    auto& reader = *static_cast<Reader*>(png_get_io_ptr(png));
    const std::size_t known = std::min(count, reader.ahead.size() - reader.used);
    std::copy_n(reader.ahead.begin() + static_cast<std::ptrdiff_t>(reader.used), known, bytes);
    reader.used += known;
    if (std::fread(bytes + known, 1, count - known, reader.file) != count - known) {
      png_error(png, "the file ends too early");
    }
  }

  std::FILE* file;
  std::vector<std::uint8_t> ahead;
  std::size_t used = 0;  ///< of the bytes read ahead
  Message message{};
  png_structp png;
  png_infop info;
};

/// libpng's state for writing into memory.
struct Writer {
  Writer()
      : png(png_create_write_struct(PNG_LIBPNG_VER_STRING, &message, onError, onWarning)),
        info(png == nullptr ? nullptr : png_create_info_struct(png)) {
    if (info == nullptr) {
      png_destroy_write_struct(&png, nullptr);
      throw std::bad_alloc();
    }
    png_set_write_fn(png, &bytes, appendBytes, nullptr);
  }
  ~Writer() { png_destroy_write_struct(&png, &info); }
  Writer(const Writer&) = delete;
  Writer& operator=(const Writer&) = delete;

  static void appendBytes(png_structp png, png_bytep from, std::size_t count) {
    if (!append(*static_cast<std::vector<png_byte>*>(png_get_io_ptr(png)), from, count)) {
      png_error(png, "not enough memory");
    }
  }

  /// False if memory ran out: no exception may pass through libpng's frames.
  static bool append(std::vector<png_byte>& bytes, const png_byte* from, std::size_t count) {
    try {
      bytes.insert(bytes.end(), from, from + count);
    } catch (const std::bad_alloc&) {
      return false;
    }
    return true;
  }

  Message message{};
  std::vector<png_byte> bytes;
  png_structp png;
  png_infop info;
};

[[noreturn]] void damaged(const std::string& path, const std::string& reason) {
  throw std::runtime_error(inQuotes(path) + " is damaged or truncated: " + reason);
}

void checkSignature(const File& file, const std::string& path) {
  std::array<png_byte, 8> signature{};
  const std::size_t count = std::fread(signature.data(), 1, signature.size(), file.get());
  if (count == signature.size() && png_sig_cmp(signature.data(), 0, signature.size()) == 0) return;
  throw std::runtime_error(inQuotes(path) + " is not a PNG file" +
                           otherKind({reinterpret_cast<const char*>(signature.data()), count}));
}

/// Refuses extents that the core cannot index, and a file that is too short for the extents in its header. The length
/// of a pipe is not known; it must bring enough for one row, since libpng allocates whole rows.
void checkExtents(Reader& reader, const File& file, const std::string& path) {
  const std::uint64_t width = png_get_image_width(reader.png, reader.info);
  const std::uint64_t height = png_get_image_height(reader.png, reader.info);
  constexpr std::uint64_t maxPixels = std::numeric_limits<int>::max();
  if (width * height > maxPixels) {
    throw std::runtime_error(inQuotes(path) + " has " + std::to_string(width) + "x" + std::to_string(height) +
                             " pixels; at most " + std::to_string(maxPixels) + " are allowed");
  }
  constexpr std::uint64_t maxCompression = 1032;  // a bound of the deflate format
  const std::int64_t size = sizeOf(file);
  const std::uint64_t rowSize = png_get_rowbytes(reader.png, reader.info);
  const std::uint64_t needed = (size >= 0 ? rowSize * height : rowSize) / maxCompression;
  const std::uint64_t found = size >= 0 ? static_cast<std::uint64_t>(size)
                                        : appendBytes(reader.ahead, reader.file, static_cast<std::size_t>(needed));
  if (needed > found) {
    damaged(path, "it is too short for " + std::to_string(width) + "x" + std::to_string(height) + " pixels");
  }
}

/// The bit depth of the file for an image.
int bitsOf(const Image& image) { return image.isBilevel && image.channels == 1 ? 1 : image.bitDepth; }

/// Appends one row to the samples, from bytes as PNG stores them, high byte first.
void appendRow(Image& image, const png_byte* bytes) {
  const std::size_t count = image.rowSamples();
  image.samples.resize(image.samples.size() + count);
  std::uint16_t* sample = image.samples.data() + image.samples.size() - count;
  for (std::size_t i = 0; i < count; ++i) {
    sample[i] = image.bitDepth == 8 ? bytes[i] : static_cast<std::uint16_t>(bytes[2 * i] << 8 | bytes[2 * i + 1]);
  }
}

/// The bytes of one row as PNG stores them.
void packRow(const Image& image, int y, png_byte* bytes) {
  const std::uint16_t* sample = &image.samples[image.at(0, y)];
  const std::size_t count = image.rowSamples();
  for (std::size_t i = 0; i < count; ++i) {
    if (bitsOf(image) == 1) {
      *bytes++ = sample[i] == 0 ? 0 : 1;  // a byte for each; libpng packs them
      continue;
    }
    if (image.bitDepth == 16) *bytes++ = static_cast<png_byte>(sample[i] >> 8);
    *bytes++ = static_cast<png_byte>(sample[i] & 0xff);
  }
}

/// Bytes of a row as PNG stores it.
std::size_t rowBytes(const Image& image) { return image.rowSamples() * static_cast<std::size_t>(image.bitDepth / 8); }

int colourType(const Image& image) {
  return (image.colours() == 3 ? PNG_COLOR_MASK_COLOR : 0) | (image.hasAlpha() ? PNG_COLOR_MASK_ALPHA : 0);
}

/// Reads the rows one by one; `row` has room for one of them.
void readPlainRows(png_structp png, Image& image, png_byte* row) {
  for (int y = 0; y < image.height; ++y) {
    png_read_row(png, row, nullptr);
    appendRow(image, row);
  }
}

/// Reads the rows of an interlaced file, which has some rows in each pass, and those of early passes several times,
/// each time with more of their pixels.
void readInterlacedRows(png_structp png, const Image& image, std::vector<std::vector<png_byte>>& rows) {
  const auto height = static_cast<std::size_t>(image.height);
  for (int pass = 0; pass < PNG_INTERLACE_ADAM7_PASSES; ++pass) {
    for (std::size_t y = 0; y < height; ++y) {
      if (!PNG_ROW_IN_INTERLACE_PASS(y, pass)) {
        png_read_row(png, nullptr, nullptr);
        continue;
      }
      rows.resize(std::max(rows.size(), y + 1));
      rows[y].resize(rowBytes(image));
      png_read_row(png, rows[y].data(), nullptr);
    }
  }
}

}  // namespace

Image readPng(const std::string& path) {
  const File file = openForReading(path);
  checkSignature(file, path);
  Reader reader(file.get());
  const bool begun = succeeds(reader.png, [&] {
    png_set_user_limits(reader.png, PNG_UINT_31_MAX, PNG_UINT_31_MAX);
    png_set_sig_bytes(reader.png, 8);
    png_read_info(reader.png, reader.info);
  });
  if (!begun) damaged(path, reader.message.data());
  checkExtents(reader, file, path);

  int passes = 0;
  const bool isBilevel = png_get_color_type(reader.png, reader.info) == PNG_COLOR_TYPE_GRAY &&
                         png_get_bit_depth(reader.png, reader.info) == 1;
  const bool prepared = succeeds(reader.png, [&] {
    png_set_expand(reader.png);
    passes = png_set_interlace_handling(reader.png);
    png_read_update_info(reader.png, reader.info);
  });
  if (!prepared) damaged(path, reader.message.data());
  Image image{static_cast<int>(png_get_image_width(reader.png, reader.info)),
              static_cast<int>(png_get_image_height(reader.png, reader.info)),
              png_get_channels(reader.png, reader.info),
              png_get_bit_depth(reader.png, reader.info),
              {},
              isBilevel};
  // The header of a file agrees with the file's size. That of a pipe may promise anything.
  constexpr std::size_t maxUnchecked = std::size_t{1} << 24;
  const std::size_t promised = image.rowSamples() * static_cast<std::size_t>(image.height);
  image.samples.reserve(sizeOf(file) >= 0 ? promised : std::min(promised, maxUnchecked));
  std::vector<std::vector<png_byte>> rows(1, std::vector<png_byte>(rowBytes(image)));
  const bool finished = succeeds(reader.png, [&] {
    if (passes == 1) {
      readPlainRows(reader.png, image, rows.front().data());
    } else {
      readInterlacedRows(reader.png, image, rows);
    }
    png_read_end(reader.png, nullptr);
  });
  if (!finished) damaged(path, reader.message.data());
  if (passes == 1) return image;
  for (const std::vector<png_byte>& row : rows) appendRow(image, row.data());
  return image;
}

void addPng(OutputFiles& files, const std::string& path, const Image& image) {
  Writer writer;
  std::vector<png_byte> row(rowBytes(image));
  const bool written = succeeds(writer.png, [&] {
    png_set_user_limits(writer.png, PNG_UINT_31_MAX, PNG_UINT_31_MAX);
    png_set_IHDR(writer.png, writer.info, static_cast<png_uint_32>(image.width), static_cast<png_uint_32>(image.height),
                 bitsOf(image), colourType(image), PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT,
                 PNG_FILTER_TYPE_DEFAULT);
    png_write_info(writer.png, writer.info);
    png_set_packing(writer.png);
    for (int y = 0; y < image.height; ++y) {
      packRow(image, y, row.data());
      png_write_row(writer.png, row.data());
    }
    png_write_end(writer.png, nullptr);
  });
  if (!written) throw std::runtime_error("cannot write " + inQuotes(path) + ": " + writer.message.data());
  files.add(path, writer.bytes);
}

void writePng(const std::string& path, const Image& image) {
  OutputFiles files;
  addPng(files, path, image);
  files.commit();
}

void checkPngName(const std::string& path) { checkFileName(path, ".png"); }

}  // namespace BP::tool
