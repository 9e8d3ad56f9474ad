#include "tool/jpeg_reader.h"

#include <algorithm>
#include <array>
#include <csetjmp>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <utility>
#include <vector>

#include <jpeglib.h>
// The list of messages follows the declarations that it needs.
#include <jerror.h>

#include "tool/exif.h"

namespace BP::tool {

namespace {

constexpr std::string_view exifStart("Exif\0\0", 6);

/// What libjpeg's callbacks know.
struct JpegState {
  jpeg_error_mgr errors{};  ///< the first member: libjpeg gives its address
  std::jmp_buf escape{};
  std::array<char, JMSG_LENGTH_MAX> text{};
  std::exception_ptr thrown;
  jpeg_source_mgr source{};
  InputFile* file = nullptr;
  std::vector<JOCTET> buffer = std::vector<JOCTET>(std::size_t{1} << 16);
};

JpegState& stateOf(j_common_ptr jpeg) { return *reinterpret_cast<JpegState*>(jpeg->err); }

[[noreturn]] void leave(j_common_ptr jpeg) {
  JpegState& state = stateOf(jpeg);
  jpeg->err->format_message(jpeg, state.text.data());
  std::longjmp(state.escape, 1);
}

/// libjpeg goes on after damage, with grey in place of what is missing; here that is an error.
void judge(j_common_ptr jpeg, int level) {
  if (level >= 0) return;
  constexpr int damages[] = {JWRN_JPEG_EOF, JWRN_HIT_MARKER, JWRN_HUFF_BAD_CODE, JWRN_ARITH_BAD_CODE, JWRN_MUST_RESYNC};
  if (std::ranges::find(damages, jpeg->err->msg_code) != std::end(damages)) leave(jpeg);
}

void ignoreMessage(j_common_ptr /*jpeg*/) {}
void ignoreSource(j_decompress_ptr /*jpeg*/) {}

/// Reads the next block; false if there is none. No exception may pass through libjpeg's frames.
bool readBlock(JpegState& state) {
  try {
    state.source.bytes_in_buffer = state.file->read(state.buffer.data(), state.buffer.size());
  } catch (const std::exception&) {
    state.thrown = std::current_exception();
    return false;
  }
  state.source.next_input_byte = state.buffer.data();
  return state.source.bytes_in_buffer > 0;
}

boolean fillBuffer(j_decompress_ptr jpeg) {
  auto* const common = reinterpret_cast<j_common_ptr>(jpeg);
  if (readBlock(stateOf(common))) return TRUE;
  jpeg->err->msg_code = JERR_INPUT_EOF;
  leave(common);
}

void skipBytes(j_decompress_ptr jpeg, long count) {
  jpeg_source_mgr& source = *jpeg->src;
  while (count > static_cast<long>(source.bytes_in_buffer)) {
    count -= static_cast<long>(source.bytes_in_buffer);
    fillBuffer(jpeg);
  }
  source.next_input_byte += count;
  source.bytes_in_buffer -= static_cast<std::size_t>(std::max(0L, count));
}

class JpegReader : public RowReader {
 public:
  explicit JpegReader(std::unique_ptr<InputFile> openFile) : file(std::move(openFile)) {
    state.file = file.get();
    jpeg.err = jpeg_std_error(&state.errors);
    state.errors.error_exit = leave;
    state.errors.emit_message = judge;
    state.errors.output_message = ignoreMessage;
    state.source.init_source = ignoreSource;
    state.source.fill_input_buffer = fillBuffer;
    state.source.skip_input_data = skipBytes;
    state.source.resync_to_restart = jpeg_resync_to_restart;
    state.source.term_source = ignoreSource;
    try {
      readHeader();
    } catch (const std::exception&) {
      jpeg_destroy_decompress(&jpeg);
      throw;
    }
  }
  ~JpegReader() override { jpeg_destroy_decompress(&jpeg); }
  JpegReader(const JpegReader&) = delete;
  JpegReader& operator=(const JpegReader&) = delete;

  void read(std::uint8_t* to, std::int64_t count) override {
    check([&] {
      for (std::int64_t y = 0; y < count; ++y) {
        JSAMPROW row = to + static_cast<std::size_t>(y) * shape.rowBytes();
        jpeg_read_scanlines(&jpeg, &row, 1);
      }
    });
  }

  void finish() override {
    check([&] { jpeg_finish_decompress(&jpeg); });
  }

 private:
  /// Runs `body`, which calls libjpeg. Errors leave it by longjmp, so nothing in it may have a destructor.
  template <class Body>
  void check(const Body& body) {
    if (setjmp(state.escape) == 0) {
      body();
      return;
    }
    if (state.thrown) std::rethrow_exception(state.thrown);
    file->damaged(state.text.data());
  }

  void readHeader() {
    constexpr unsigned whole = 0xffff;
    check([&] {
      jpeg_create_decompress(&jpeg);
      jpeg.src = &state.source;
      jpeg_save_markers(&jpeg, JPEG_APP0 + 1, whole);
      jpeg_save_markers(&jpeg, JPEG_APP0 + 2, whole);
      jpeg_save_markers(&jpeg, JPEG_COM, whole);
      jpeg_read_header(&jpeg, TRUE);
    });
    if (jpeg.num_components != 1 && jpeg.num_components != 3) {
      throw std::runtime_error(file->name() + ": JPEG pictures of " + std::to_string(jpeg.num_components) +
                               " colours are not supported; allowed are 1 and 3");
    }
    check([&] {
      jpeg.out_color_space = jpeg.num_components == 1 ? JCS_GRAYSCALE : JCS_RGB;
      jpeg.dct_method = JDCT_ISLOW;
      jpeg_start_decompress(&jpeg);
    });
    shape.format = FileFormat::jpeg;
    shape.isPacked = true;
    shape.width = jpeg.output_width;
    shape.height = jpeg.output_height;
    shape.channels = jpeg.num_components;
    readTags();
  }

  void readTags() {
    PictureTags& tags = shape.tags;
    if (jpeg.saw_JFIF_marker) {
      const double unit = jpeg.density_unit == 1 ? 1 / 0.0254 : jpeg.density_unit == 2 ? 100 : 1;
      tags.xResolution = jpeg.X_density * unit;
      tags.yResolution = jpeg.Y_density * unit;
      tags.isAspect = jpeg.density_unit == 0;
      if (tags.isAspect && jpeg.X_density == jpeg.Y_density) tags.xResolution = tags.yResolution = 0;
    }
    for (const jpeg_marker_struct* marker = jpeg.marker_list; marker != nullptr; marker = marker->next) {
      const std::string_view data(reinterpret_cast<const char*>(marker->data), marker->data_length);
      if (marker->marker == JPEG_COM) tags.others.emplace_back("texts");
      if (marker->marker != JPEG_APP0 + 1) continue;
      if (!data.starts_with(exifStart)) {
        tags.others.emplace_back("XMP");
        continue;
      }
      const ExifNotes notes = readExif({marker->data + exifStart.size(), data.size() - exifStart.size()});
      tags.orientation = notes.orientation;
      if (notes.hasMore) tags.others.emplace_back("EXIF");
    }
    readProfile();
  }

  void readProfile() {
    JOCTET* bytes = nullptr;
    unsigned size = 0;
    check([&] { jpeg_read_icc_profile(&jpeg, &bytes, &size); });
    const std::unique_ptr<JOCTET, void (*)(void*)> held(bytes, std::free);
    if (bytes != nullptr) shape.tags.profile.assign(bytes, bytes + size);
  }

  std::unique_ptr<InputFile> file;
  JpegState state;
  jpeg_decompress_struct jpeg{};
};

}  // namespace

std::unique_ptr<RowReader> openJpeg(std::unique_ptr<InputFile> file) {
  return std::make_unique<JpegReader>(std::move(file));
}

}  // namespace BP::tool
