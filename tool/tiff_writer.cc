#include "tool/tiff_writer.h"

#include <unistd.h>
#include <zlib.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <deque>
#include <future>
#include <limits>
#include <new>
#include <optional>
#include <stdexcept>
#include <utility>
#include <vector>

#include "tool/file.h"
#include "tool/text.h"
#include "tool/tiff_file.h"

namespace BP::tool {

namespace {

using Bytes = std::vector<std::uint8_t>;

/// Rows that make a strip.
struct Strip {
  Bytes bytes;
  std::size_t rowSamples;
  std::size_t step;  ///< samples of a pixel
  ElementType type;
};

/// Replaces each sample by its difference from that of the pixel before it.
template <class T>
void takeDifferences(Strip& strip) {
  auto* const samples = reinterpret_cast<T*>(strip.bytes.data());
  const std::size_t count = strip.bytes.size() / sizeof(T);
  for (std::size_t row = 0; row < count; row += strip.rowSamples) {
    for (std::size_t i = strip.rowSamples; i-- > strip.step;) {
      samples[row + i] = static_cast<T>(samples[row + i] - samples[row + i - strip.step]);
    }
  }
}

bool hasDifferences(ElementType type) {
  return type != ElementType::float32 && type != ElementType::float64 && sizeOf(type) <= 4;
}

Bytes packStrip(Strip& strip, int level) {
  if (level == 0) return std::move(strip.bytes);
  if (hasDifferences(strip.type)) {
    const std::size_t size = sizeOf(strip.type);
    size == 1   ? takeDifferences<std::uint8_t>(strip)
    : size == 2 ? takeDifferences<std::uint16_t>(strip)
                : takeDifferences<std::uint32_t>(strip);
  }
  uLongf size = compressBound(static_cast<uLong>(strip.bytes.size()));
  Bytes packed(size);
  const int error = compress2(packed.data(), &size, strip.bytes.data(), static_cast<uLong>(strip.bytes.size()), level);
  if (error == Z_MEM_ERROR) throw std::bad_alloc();
  if (error != Z_OK) throw std::logic_error("deflate ran out of room");
  packed.resize(size);
  return packed;
}

int sampleFormat(ElementType type) {
  switch (type) {
    case ElementType::int8:
    case ElementType::int16:
    case ElementType::int32:
    case ElementType::int64: return SAMPLEFORMAT_INT;
    case ElementType::float32:
    case ElementType::float64: return SAMPLEFORMAT_IEEEFP;
    case ElementType::complex64:
    case ElementType::complex128: return SAMPLEFORMAT_COMPLEXIEEEFP;
    default: return SAMPLEFORMAT_UINT;
  }
}

class TiffWriter : public RowWriter {
 public:
  TiffWriter(OutputStream& output, const PictureHeader& header, int compression, Workers& helpers)
      : stream(output),
        shape(header),
        level(compression),
        workers(helpers),
        copy(stream.canSeek() ? nullptr : std::tmpfile()),
        rowsPerStrip(
            std::clamp<std::int64_t>(static_cast<std::int64_t>(stripSize / shape.rowBytes()), 1, shape.height)) {
    if (!stream.canSeek() && !copy) failFile("write", "a temporary file", errno);
    checkHeader();
    constexpr std::uint64_t maxClassic = 4'200'000'000;
    const bool isBig = shape.rowBytes() * static_cast<std::uint64_t>(shape.rows()) > maxClassic;
    const int descriptor = ::dup(copy ? ::fileno(copy.get()) : stream.open());
    tiff.emplace(descriptor, stream.name(), isBig ? "w8" : "w");
    if (tiff->get() == nullptr) fail();
    setFields();
  }

  void write(const std::uint8_t* from, std::int64_t count) override {
    while (count > 0) {
      const std::int64_t taken = std::min(count, std::min(rowsPerStrip, shape.height - row) - rowsHeld);
      held.insert(held.end(), from, from + static_cast<std::size_t>(taken) * shape.rowBytes());
      from += static_cast<std::size_t>(taken) * shape.rowBytes();
      count -= taken;
      rowsHeld += taken;
      if (rowsHeld == std::min(rowsPerStrip, shape.height - row)) give();
    }
  }

  void finish() override {
    while (!strips.empty()) writeStrip();
    errno = 0;
    if (TIFFFlush(tiff->get()) != 1) fail();
    tiff.reset();
    if (copy) writeCopy();
  }

 private:
  static constexpr std::size_t stripSize = std::size_t{1} << 20;

  void checkHeader() const {
    constexpr std::int64_t maxSide = std::numeric_limits<std::int32_t>::max();
    if (shape.width <= maxSide && shape.height <= maxSide && shape.channels <= 65535) return;
    throw std::runtime_error("cannot write " + inQuotes(stream.name()) +
                             ": a TIFF picture has sides of at most 2^31 - 1 pixels, and 65535 channels");
  }

  [[noreturn]] void fail() {
    const int reason = errno;
    const std::string text = tiff->takeError();
    if (reason != 0) failFile("write", stream.name(), reason);
    throw std::runtime_error("cannot write " + inQuotes(stream.name()) + ": " + text);
  }

  template <class... Value>
  void set(ttag_t tag, Value... values) {
    if (TIFFSetField(tiff->get(), tag, values...) != 1) fail();
  }

  void setFields() {
    const int colours = shape.colours();
    set(TIFFTAG_IMAGEWIDTH, static_cast<std::uint32_t>(shape.width));
    set(TIFFTAG_IMAGELENGTH, static_cast<std::uint32_t>(shape.height));
    set(TIFFTAG_BITSPERSAMPLE, static_cast<int>(8 * sizeOf(shape.type)));
    set(TIFFTAG_SAMPLEFORMAT, sampleFormat(shape.type));
    set(TIFFTAG_SAMPLESPERPIXEL, shape.channels);
    set(TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
    set(TIFFTAG_PHOTOMETRIC, colours == 3 ? PHOTOMETRIC_RGB : PHOTOMETRIC_MINISBLACK);
    const int plain = colours == 3 ? 3 : 1;
    if (shape.channels > plain) {
      std::vector<std::uint16_t> kinds(static_cast<std::size_t>(shape.channels - plain), EXTRASAMPLE_UNSPECIFIED);
      if (shape.hasAlpha) kinds.back() = shape.isAssociated ? EXTRASAMPLE_ASSOCALPHA : EXTRASAMPLE_UNASSALPHA;
      set(TIFFTAG_EXTRASAMPLES, static_cast<int>(kinds.size()), kinds.data());
    }
    set(TIFFTAG_ROWSPERSTRIP, static_cast<std::uint32_t>(rowsPerStrip));
    set(TIFFTAG_COMPRESSION, level == 0 ? COMPRESSION_NONE : COMPRESSION_ADOBE_DEFLATE);
    if (level > 0 && hasDifferences(shape.type)) set(TIFFTAG_PREDICTOR, PREDICTOR_HORIZONTAL);
    setTags();
  }

  void setTags() {
    const PictureTags& tags = shape.tags;
    if (tags.orientation != 1) set(TIFFTAG_ORIENTATION, tags.orientation);
    if (!tags.profile.empty()) {
      set(TIFFTAG_ICCPROFILE, static_cast<std::uint32_t>(tags.profile.size()), tags.profile.data());
    }
    if (tags.xResolution <= 0 || tags.yResolution <= 0) return;
    const double unit = tags.isAspect ? 1 : 0.0254;
    set(TIFFTAG_XRESOLUTION, tags.xResolution * unit);
    set(TIFFTAG_YRESOLUTION, tags.yResolution * unit);
    set(TIFFTAG_RESOLUTIONUNIT, tags.isAspect ? RESUNIT_NONE : RESUNIT_INCH);
  }

  /// Gives the rows held to the workers, and writes what they have done.
  void give() {
    const auto strip = std::make_shared<Strip>(
        Strip{std::move(held), shape.rowSamples(), static_cast<std::size_t>(shape.channels), shape.type});
    held = {};
    strips.push_back(workers.give([strip, effort = level] { return packStrip(*strip, effort); }));
    row += rowsHeld;
    rowsHeld = 0;
    if (row == shape.height) row = 0;
    while (strips.size() > 2 * workers.count()) writeStrip();
  }

  void writeStrip() {
    Bytes bytes = strips.front().get();
    strips.pop_front();
    const auto size = static_cast<tmsize_t>(bytes.size());
    errno = 0;
    if (TIFFWriteRawStrip(tiff->get(), number, bytes.data(), size) != size) fail();
    ++number;
    const std::int64_t all = (shape.height + rowsPerStrip - 1) / rowsPerStrip;
    if (number < all || ++page == shape.pages) return;
    if (TIFFWriteDirectory(tiff->get()) != 1) fail();
    number = 0;
    setFields();
  }

  void writeCopy() {
    Bytes block(stripSize);
    std::rewind(copy.get());
    for (std::size_t count = block.size(); count == block.size();) {
      count = std::fread(block.data(), 1, block.size(), copy.get());
      stream.write({block.data(), count});
    }
    if (std::ferror(copy.get()) != 0) failFile("read", "a temporary file", errno);
  }

  OutputStream& stream;
  PictureHeader shape;
  int level;
  Workers& workers;
  File copy;
  std::int64_t rowsPerStrip;
  std::optional<TiffFile> tiff;
  Bytes held;
  std::int64_t rowsHeld = 0;
  std::int64_t row = 0;  ///< of the page, the first of those held
  std::deque<std::future<Bytes>> strips;
  std::uint32_t number = 0;  ///< of the next strip in its page
  std::int64_t page = 0;
};

}  // namespace

std::unique_ptr<RowWriter> createTiff(OutputStream& stream, const PictureHeader& header, int level, Workers& workers) {
  return std::make_unique<TiffWriter>(stream, header, level, workers);
}

}  // namespace BP::tool
