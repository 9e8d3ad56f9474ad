#include "tool/exif.h"

#include <cstddef>

namespace BP::tool {

namespace {

constexpr std::uint64_t orientationTag = 0x112;
constexpr std::size_t entrySize = 12;

/// Whole numbers at places of a block of bytes; 0 beyond its end.
class Numbers {
 public:
  explicit Numbers(std::span<const std::uint8_t> data) : bytes(data), isBig(!data.empty() && data[0] == 'M') {}

  std::uint64_t at(std::uint64_t place, std::size_t size) const {
    if (place + size > bytes.size()) return 0;
    std::uint64_t value = 0;
    for (std::size_t i = 0; i < size; ++i) {
      value = value << 8 | bytes[static_cast<std::size_t>(place) + (isBig ? i : size - 1 - i)];
    }
    return value;
  }

 private:
  std::span<const std::uint8_t> bytes;
  bool isBig;
};

}  // namespace

ExifNotes readExif(std::span<const std::uint8_t> bytes) {
  const Numbers numbers(bytes);
  ExifNotes notes;
  if (numbers.at(2, 2) != 42) return notes;
  const std::uint64_t directory = numbers.at(4, 4);
  const std::uint64_t count = numbers.at(directory, 2);
  for (std::uint64_t i = 0; i < count; ++i) {
    const std::uint64_t entry = directory + 2 + i * entrySize;
    if (numbers.at(entry, 2) != orientationTag) {
      notes.hasMore = true;
      continue;
    }
    const std::uint64_t value = numbers.at(entry + 8, 2);
    if (value >= 1 && value <= 8) notes.orientation = static_cast<int>(value);
  }
  return notes;
}

std::vector<std::uint8_t> exifOf(int orientation) {
  // A big-endian header, one entry of type SHORT and count 1, and no further directory.
  return {'M', 'M', 0, 42, 0, 0, 0, 8, 0, 1, 0x01, 0x12, 0, 3, 0, 0, 0, 1, 0, static_cast<std::uint8_t>(orientation),
          0,   0,   0, 0,  0, 0};
}

}  // namespace BP::tool
