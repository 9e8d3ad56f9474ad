// Files of PNG, TIFF, JPEG and NPY: each is refused with an error, or read, with the same bytes in steps of any size.
#include <zlib.h>
#include <algorithm>
#include <array>
#include <cstring>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "fuzz/memory_file.h"
#include "fuzz/target.h"
#include "tool/picture_file.h"

namespace {

using namespace BP::tool;
using BP::fuzz::require;

/// A header can promise much in few bytes, and compressed files can keep that. What is larger is opened only.
constexpr std::size_t mostBytes = std::size_t{1} << 20;

bool isSmall(const PictureHeader& header) {
  return header.rows() == 0 || header.rowBytes() <= mostBytes / static_cast<std::size_t>(header.rows());
}

/// All elements, in steps of `step` rows.
std::vector<std::uint8_t> readInSteps(const std::string& path, std::int64_t step) {
  const auto reader = openPicture(path);
  const std::size_t size = reader->header().rowBytes();
  const std::int64_t rows = reader->header().rows();
  std::vector<std::uint8_t> bytes(static_cast<std::size_t>(rows) * size);
  for (std::int64_t y = 0; y < rows && size > 0; y += step) {
    reader->read(bytes.data() + static_cast<std::size_t>(y) * size, std::min(step, rows - y));
  }
  reader->finish();
  return bytes;
}

void readFile(const std::string& path, std::int64_t step) {
  const auto reader = openPicture(path);
  const PictureHeader& header = reader->header();
  require(header.width >= 0 && header.height >= 0 && header.pages >= 0 && header.channels >= 1, "a negative extent");
  if (!isSmall(header)) return;
  const Array whole = readArray(*reader);
  require(readInSteps(path, step) == whole.bytes, "rows differ from those of the whole");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const BP::fuzz::MemoryFile file({data, size});
  BP::fuzz::allowRefusal([&] { readFile(file.path(), static_cast<std::int64_t>(1 + size % 5)); });
  return 0;
}

#ifdef ORVANE_WITH_LIBFUZZER
namespace {

/// Gives the chunks of a PNG file the sums that they must have, so that changes of their contents are not in vain.
void mendSums(std::span<std::uint8_t> bytes) {
  constexpr std::size_t frame = 12;  // length, name and sum
  for (std::size_t at = 8; at + frame <= bytes.size();) {
    std::size_t length = 0;
    for (std::size_t i = 0; i < 4; ++i) length = length << 8 | bytes[at + i];
    if (length > bytes.size() - at - frame) return;
    const auto sum = static_cast<std::uint32_t>(crc32(0, bytes.data() + at + 4, static_cast<uInt>(length + 4)));
    for (std::size_t i = 0; i < 4; ++i) bytes[at + 8 + length + i] = static_cast<std::uint8_t>(sum >> (24 - 8 * i));
    at += frame + length;
  }
}

}  // namespace

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t most);

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t most,
                                               unsigned int seed) {
  const std::size_t changed = LLVMFuzzerMutate(data, size, most);
  constexpr std::string_view png = "\x89PNG\r\n\x1a\n";
  const bool isPng = changed > png.size() && std::memcmp(data, png.data(), png.size()) == 0;
  if (isPng && seed % 8 != 0) mendSums({data, changed});
  return changed;
}
#endif
