#include "tool/png_writer.h"

#include <zlib.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <deque>
#include <future>
#include <new>
#include <stdexcept>
#include <utility>
#include <vector>

#include "tool/exif.h"
#include "tool/messages.h"
#include "tool/png_error.h"
#include "tool/png_rows.h"
#include "tool/text.h"

namespace BP::tool {

namespace {

using Bytes = std::vector<std::uint8_t>;

/// Refuses what PNG cannot hold.
void checkHeader(const PictureHeader& header, const std::string& name) {
  const auto refuse = [&](const std::string& what) {
    throw std::runtime_error("cannot write " + inQuotes(name) + ": a PNG picture " + what + "; .tif and .npy can");
  };
  const bool hasType = header.type == ElementType::uint8 || header.type == ElementType::uint16;
  if (!hasType) refuse("cannot have samples of type " + std::string(nameOf(header.type)));
  const int colours = header.colours();
  if (colours != 1 && colours != 3) refuse("cannot have " + counted(colours, "colour channel"));
  if (header.pages > 1) refuse("cannot have " + counted(header.pages, "page"));
  if (header.width > PNG_UINT_31_MAX || header.height > PNG_UINT_31_MAX) refuse("has sides of at most 2^31 - 1 pixels");
}

class PngWriter : public RowWriter {
 public:
  PngWriter(OutputStream& output, const PictureHeader& header, int compression, Workers& helpers)
      : stream(output),
        shape(header),
        level(compression),
        workers(helpers),
        isBit(header.isBilevel && header.channels == 1),
        rowBytes(isBit ? (header.rowSamples() + 7) / 8 : header.rowBytes()) {
    checkHeader(header, stream.name());
    png = png_create_write_struct(PNG_LIBPNG_VER_STRING, &error, PngError::handle, PngError::ignore);
    info = png == nullptr ? nullptr : png_create_info_struct(png);
    if (info == nullptr) {
      png_destroy_write_struct(&png, nullptr);
      throw std::bad_alloc();
    }
    png_set_write_fn(png, this, append, nullptr);
    try {
      writeHeader();
    } catch (const std::exception&) {
      png_destroy_write_struct(&png, &info);
      throw;
    }
    begin(Bytes(rowBytes));
  }
  ~PngWriter() override { png_destroy_write_struct(&png, &info); }
  PngWriter(const PngWriter&) = delete;
  PngWriter& operator=(const PngWriter&) = delete;

  void write(const std::uint8_t* from, std::int64_t count) override {
    for (std::int64_t y = 0; y < count; ++y, from += shape.rowBytes()) {
      if (rows.bytes.size() > rowsPerPiece() * rowBytes) give(false);
      addRow(from);
    }
  }

  void finish() override {
    give(true);
    while (!pieces.empty()) writePiece();
    const std::array<png_byte, 4> end{static_cast<png_byte>(adler >> 24), static_cast<png_byte>(adler >> 16),
                                      static_cast<png_byte>(adler >> 8), static_cast<png_byte>(adler)};
    chunk("IDAT", end);
    chunk("IEND", {});
  }

 private:
  static void append(png_structp png, png_bytep bytes, std::size_t count) {
    auto& writer = *static_cast<PngWriter*>(png_get_io_ptr(png));
    if (!writer.appendAll(bytes, count)) png_error(png, "not written");
  }

  /// No exception may pass through libpng's frames.
  bool appendAll(const png_byte* bytes, std::size_t count) {
    try {
      stream.write({bytes, count});
      return true;
    } catch (const std::exception&) {
      error.thrown = std::current_exception();
      return false;
    }
  }

  template <class Body>
  void check(const Body& body) {
    if (pngSucceeds(png, body)) return;
    error.rethrow();
    throw std::runtime_error("cannot write " + inQuotes(stream.name()) + ": " + error.text.data());
  }

  void chunk(const char* kind, std::span<const std::uint8_t> bytes) {
    check([&] { png_write_chunk(png, reinterpret_cast<png_const_bytep>(kind), bytes.data(), bytes.size()); });
  }

  void writeHeader() {
    const int colour = (shape.colours() == 3 ? PNG_COLOR_MASK_COLOR : 0) | (shape.hasAlpha ? PNG_COLOR_MASK_ALPHA : 0);
    const int depth = isBit ? 1 : static_cast<int>(8 * sizeOf(shape.type));
    const PictureTags& tags = shape.tags;
    Bytes exif = exifOf(tags.orientation);
    check([&] {
      png_set_user_limits(png, PNG_UINT_31_MAX, PNG_UINT_31_MAX);
      png_set_IHDR(png, info, static_cast<png_uint_32>(shape.width), static_cast<png_uint_32>(shape.height), depth,
                   colour, PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
      if (tags.xResolution > 0 && tags.yResolution > 0) {
        png_set_pHYs(png, info, static_cast<png_uint_32>(tags.xResolution + 0.5),
                     static_cast<png_uint_32>(tags.yResolution + 0.5),
                     tags.isAspect ? PNG_RESOLUTION_UNKNOWN : PNG_RESOLUTION_METER);
      }
      if (tags.gamma > 0) png_set_gAMA(png, info, tags.gamma);
      if (tags.renderingIntent >= 0) png_set_sRGB(png, info, tags.renderingIntent);
      if (tags.orientation != 1) png_set_eXIf_1(png, info, static_cast<png_uint_32>(exif.size()), exif.data());
    });
    addProfile();
    check([&] { png_write_info(png, info); });
  }

  /// Adds the colour profile, unless it is one that libpng refuses.
  void addProfile() {
    const Bytes& profile = shape.tags.profile;
    if (profile.empty()) return;
    const bool isAdded = pngSucceeds(png, [&] {
      png_set_iCCP(png, info, "profile", PNG_COMPRESSION_TYPE_BASE, profile.data(),
                   static_cast<png_uint_32>(profile.size()));
    });
    if (!isAdded) tell(stream.name() + ": dropped: colour profile, which is damaged");
  }

  std::size_t rowsPerPiece() const {
    constexpr std::size_t pieceSize = std::size_t{1} << 20;
    return std::max<std::size_t>(1, pieceSize / rowBytes);
  }

  void begin(Bytes rowBefore) {
    const std::size_t channels = static_cast<std::size_t>(shape.channels);
    rows = {.bytes = std::move(rowBefore),
            .rowBytes = rowBytes,
            .pixelBytes = isBit ? 1 : channels * sizeOf(shape.type),
            .isFiltered = !isBit,
            .isFirst = pieces.empty() && !hasPieces};
    rows.bytes.reserve((rowsPerPiece() + 1) * rowBytes);
  }

  void addRow(const std::uint8_t* from) {
    const std::size_t at = rows.bytes.size();
    rows.bytes.resize(at + rowBytes);
    std::uint8_t* const to = &rows.bytes[at];
    if (isBit) {
      for (std::size_t x = 0; x < shape.rowSamples(); ++x) {
        to[x / 8] = static_cast<std::uint8_t>(to[x / 8] | (from[x] != 0 ? 0x80 >> x % 8 : 0));
      }
      return;
    }
    std::memcpy(to, from, rowBytes);
    if (std::endian::native == std::endian::big || shape.type == ElementType::uint8) return;
    for (std::size_t i = 0; i < rowBytes; i += 2) std::swap(to[i], to[i + 1]);
  }

  /// Gives the rows so far to the workers, and writes what they have done.
  void give(bool isLast) {
    rows.isLast = isLast;
    Bytes lastRow(rows.bytes.end() - static_cast<std::ptrdiff_t>(rowBytes), rows.bytes.end());
    pieces.push_back(workers.give(
        [held = std::make_shared<PngRows>(std::move(rows)), effort = level] { return packRows(*held, effort); }));
    hasPieces = true;
    begin(std::move(lastRow));
    while (pieces.size() > 2 * workers.count()) writePiece();
  }

  void writePiece() {
    const PackedRows packed = pieces.front().get();
    pieces.pop_front();
    adler = static_cast<std::uint32_t>(adler32_combine(adler, packed.adler, static_cast<z_off_t>(packed.size)));
    chunk("IDAT", packed.bytes);
  }

  OutputStream& stream;
  PictureHeader shape;
  int level;
  Workers& workers;
  bool isBit;  ///< eight pixels share a byte
  std::size_t rowBytes;
  PngError error;
  png_structp png = nullptr;
  png_infop info = nullptr;
  PngRows rows;
  std::deque<std::future<PackedRows>> pieces;
  bool hasPieces = false;
  std::uint32_t adler = 1;
};

}  // namespace

std::unique_ptr<RowWriter> createPng(OutputStream& stream, const PictureHeader& header, int level, Workers& workers) {
  return std::make_unique<PngWriter>(stream, header, level, workers);
}

}  // namespace BP::tool
