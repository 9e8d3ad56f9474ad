#include "tool/png_reader.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <new>
#include <stdexcept>
#include <utility>
#include <vector>

#include "tool/exif.h"
#include "tool/png_error.h"

namespace BP::tool {

namespace {

using Row = std::vector<png_byte>;

class PngReader : public RowReader {
 public:
  explicit PngReader(std::unique_ptr<InputFile> openFile)
      : file(std::move(openFile)),
        png(png_create_read_struct(PNG_LIBPNG_VER_STRING, &error, PngError::handle, PngError::ignore)),
        info(png == nullptr ? nullptr : png_create_info_struct(png)) {
    if (info == nullptr) {
      png_destroy_read_struct(&png, nullptr, nullptr);
      throw std::bad_alloc();
    }
    png_set_read_fn(png, this, readBytes);
    try {
      readHeader();
    } catch (const std::exception&) {
      png_destroy_read_struct(&png, &info, nullptr);
      throw;
    }
  }
  ~PngReader() override { png_destroy_read_struct(&png, &info, nullptr); }
  PngReader(const PngReader&) = delete;
  PngReader& operator=(const PngReader&) = delete;

  void read(std::uint8_t* to, std::int64_t count) override {
    const std::size_t size = shape.rowBytes();
    if (passes == 1) {
      check([&] {
        for (std::int64_t y = 0; y < count; ++y) png_read_row(png, to + static_cast<std::size_t>(y) * size, nullptr);
      });
      return;
    }
    if (rows.empty()) readInterlaced();
    for (std::int64_t y = 0; y < count; ++y, ++next) {
      std::ranges::copy(rows[next], to + static_cast<std::size_t>(y) * size);
    }
  }

  void finish() override {
    check([&] { png_read_end(png, nullptr); });
  }

 private:
  /// Gives libpng the bytes of the file. No exception may pass through libpng's frames.
  static void readBytes(png_structp png, png_bytep bytes, std::size_t count) {
    auto& reader = *static_cast<PngReader*>(png_get_io_ptr(png));
    if (!reader.readAll(bytes, count)) png_error(png, "the file ends too early");
  }

  bool readAll(png_bytep bytes, std::size_t count) {
    try {
      return file->read(bytes, count) == count;
    } catch (const std::exception&) {
      error.thrown = std::current_exception();
      return false;
    }
  }

  template <class Body>
  void check(const Body& body) {
    if (pngSucceeds(png, body)) return;
    error.rethrow();
    file->damaged(error.text.data());
  }

  void readHeader() {
    check([&] {
      png_set_user_limits(png, PNG_UINT_31_MAX, PNG_UINT_31_MAX);
      png_set_compression_buffer_size(png, std::size_t{1} << 17);
      png_read_info(png, info);
    });
    checkExtents();
    readTags();
    shape.isBilevel = png_get_color_type(png, info) == PNG_COLOR_TYPE_GRAY && png_get_bit_depth(png, info) == 1;
    check([&] {
      png_set_expand(png);
      if constexpr (std::endian::native == std::endian::little) png_set_swap(png);
      passes = png_set_interlace_handling(png);
      png_read_update_info(png, info);
    });
    shape.format = FileFormat::png;
    shape.isPacked = true;
    shape.width = png_get_image_width(png, info);
    shape.height = png_get_image_height(png, info);
    shape.channels = png_get_channels(png, info);
    shape.hasAlpha = shape.channels % 2 == 0;
    shape.type = png_get_bit_depth(png, info) == 16 ? ElementType::uint16 : ElementType::uint8;
  }

  /// Refuses a file that is too short for the extents in its header. The length of a pipe is not known; it must bring
  /// enough for one row, since libpng allocates whole rows.
  void checkExtents() {
    const std::uint64_t height = png_get_image_height(png, info), rowSize = png_get_rowbytes(png, info);
    constexpr std::uint64_t maxCompression = 1032;  // a bound of the deflate format
    const std::int64_t size = file->size();
    const std::uint64_t needed = (size >= 0 ? rowSize * height : rowSize) / maxCompression;
    const std::uint64_t found =
        size >= 0 ? static_cast<std::uint64_t>(size) : file->lookAhead(static_cast<std::size_t>(needed));
    if (needed <= found) return;
    file->damaged("it is too short for " + std::to_string(png_get_image_width(png, info)) + "x" +
                  std::to_string(height) + " pixels");
  }

  void readTags() {
    PictureTags& tags = shape.tags;
    png_uint_32 x = 0, y = 0, size = 0;
    int unit = 0;
    if (png_get_pHYs(png, info, &x, &y, &unit) != 0) {
      tags.xResolution = x;
      tags.yResolution = y;
      tags.isAspect = unit != PNG_RESOLUTION_METER;
    }
    png_charp profileName = nullptr;
    png_bytep bytes = nullptr;
    int compression = 0;
    if (png_get_iCCP(png, info, &profileName, &compression, &bytes, &size) != 0) {
      tags.profile.assign(bytes, bytes + size);
    }
    if (png_get_sRGB(png, info, &tags.renderingIntent) == 0) tags.renderingIntent = -1;
    if (png_get_gAMA(png, info, &tags.gamma) == 0) tags.gamma = 0;
    if (png_get_eXIf_1(png, info, &size, &bytes) != 0) {
      const ExifNotes notes = readExif({bytes, size});
      tags.orientation = notes.orientation;
      if (notes.hasMore) tags.others.emplace_back("EXIF");
    }
    png_textp texts = nullptr;
    int count = 0;
    if (png_get_text(png, info, &texts, &count) > 0) tags.others.emplace_back("texts");
    const bool hasOwnColours = tags.renderingIntent < 0 && png_get_valid(png, info, PNG_INFO_cHRM) != 0;
    if (hasOwnColours) tags.others.emplace_back("chromaticities");
    if (png_get_valid(png, info, PNG_INFO_bKGD) != 0) tags.others.emplace_back("background colour");
  }

  /// Reads all rows of an interlaced file, which has some rows in each pass, and those of early passes several times,
  /// each time with more of their pixels.
  void readInterlaced() {
    const auto height = static_cast<std::size_t>(shape.height);
    check([&] {
      for (int pass = 0; pass < PNG_INTERLACE_ADAM7_PASSES; ++pass) {
        for (std::size_t y = 0; y < height; ++y) {
          png_read_row(png, PNG_ROW_IN_INTERLACE_PASS(y, pass) ? rowAt(y) : nullptr, nullptr);
        }
      }
    });
  }

  png_bytep rowAt(std::size_t y) {
    if (rows.size() <= y) rows.resize(y + 1);
    rows[y].resize(shape.rowBytes());
    return rows[y].data();
  }

  std::unique_ptr<InputFile> file;
  PngError error;
  png_structp png;
  png_infop info;
  int passes = 1;
  std::vector<Row> rows;  ///< of an interlaced file
  std::size_t next = 0;
};

}  // namespace

std::unique_ptr<RowReader> openPng(std::unique_ptr<InputFile> file) {
  return std::make_unique<PngReader>(std::move(file));
}

}  // namespace BP::tool
