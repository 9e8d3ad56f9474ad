#include "tool/tiff_reader.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <stdexcept>
#include <utility>

#include "tool/text.h"
#include "tool/tiff_header.h"
#include "tool/tiff_plane.h"
#include "tool/tiff_samples.h"

namespace BP::tool {

namespace {

class TiffReader : public RowReader {
 public:
  explicit TiffReader(std::unique_ptr<InputFile> openFile) : file(std::move(openFile)), descriptor(file->seekable()) {
    const std::shared_ptr<TiffFile> first = openTiff();
    layout = readTiffLayout(*first, file->name());
    shape = tiffHeader(*first, layout, file->name());
    const TiffPages pages = countPages(*first, layout);
    shape.pages = pages.alike == pages.all ? pages.all : 1;
    if (pages.alike != pages.all) {
      shape.tags.others.push_back(counted(pages.all - 1, "page") + " that are not like the first");
    }
    checkSize();
    openPage(0);
  }
  ~TiffReader() override { ::close(descriptor); }
  TiffReader(const TiffReader&) = delete;
  TiffReader& operator=(const TiffReader&) = delete;

  void read(std::uint8_t* to, std::int64_t count) override {
    for (; count > 0; --count, to += shape.rowBytes()) {
      if (row == shape.height) openPage(page + 1);
      readRow(to);
      ++row;
    }
  }

 private:
  std::shared_ptr<TiffFile> openTiff() {
    ::lseek(descriptor, 0, SEEK_SET);  // where libtiff begins to read
    auto tiff = std::make_shared<TiffFile>(::dup(descriptor), file->name(),
                                           "rm");  // without a map of the file, which counts as memory
    if (tiff->get() == nullptr) file->damaged(tiff->takeError());
    return tiff;
  }

  /// Refuses a file that is too short for what its header promises, as far as that can be told.
  void checkSize() {
    constexpr std::uint64_t maxCompression = 40000;  // beyond what the known compressions reach in whole files
    const std::uint64_t size = static_cast<std::uint64_t>(std::max<off_t>(0, ::lseek(descriptor, 0, SEEK_END)));
    const std::uint64_t needed = shape.rowBytes() * static_cast<std::uint64_t>(shape.height) / maxCompression;
    if (needed > size) {
      file->damaged("it is too short for " + std::to_string(shape.width) + "x" + std::to_string(shape.height) +
                    " pixels");
    }
  }

  /// Separate planes are read side by side, each with a state of its own.
  void openPage(std::int64_t number) {
    page = number;
    row = 0;
    const int count = layout.isSeparate ? layout.samples : 1;
    files.clear();
    planes.clear();
    for (int i = 0; i < count; ++i) {
      files.push_back(openTiff());
      if (TIFFSetDirectory(files.back()->get(), static_cast<tdir_t>(page)) != 1) fail(*files.back());
      prepareTiff(*files.back());
      planes.emplace_back(files.back(), static_cast<std::uint16_t>(i));
    }
    stored.resize(static_cast<std::size_t>(shape.width) * static_cast<std::size_t>(layout.samples) *
                  std::max<std::size_t>(1, static_cast<std::size_t>(layout.bits) / 8));
  }

  void readRow(std::uint8_t* to) {
    for (std::size_t i = 0; i < planes.size(); ++i) {
      const std::uint8_t* const from = planes[i].next();
      if (from == nullptr) fail(*files[i]);
      spreadSamples(from, static_cast<std::size_t>(shape.width), layout, i, stored.data());
    }
    finishSamples(stored.data(), static_cast<std::size_t>(shape.width), layout, to);
  }

  [[noreturn]] void fail(TiffFile& tiff) { file->damaged(tiff.takeError()); }

  std::unique_ptr<InputFile> file;
  int descriptor;
  TiffLayout layout;
  std::vector<std::shared_ptr<TiffFile>> files;
  std::vector<TiffPlane> planes;
  std::vector<std::uint8_t> stored;  ///< a row of whole bytes, the samples of a pixel side by side
  std::int64_t page = 0;
  std::int64_t row = 0;
};

}  // namespace

std::unique_ptr<RowReader> openTiff(std::unique_ptr<InputFile> file) {
  return std::make_unique<TiffReader>(std::move(file));
}

}  // namespace BP::tool
