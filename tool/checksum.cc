#include "tool/checksum.h"

#include <nettle/sha2.h>

#include <array>
#include <bit>
#include <vector>

#include "tool/file.h"
#include "tool/messages.h"
#include "tool/npy_elements.h"
#include "tool/text.h"

namespace BP::tool {

struct Checksum::State {
  sha256_ctx sha{};
  ElementType type = ElementType::uint8;
  std::size_t rowBytes = 0;

  void add(const void* bytes, std::size_t count) {
    sha256_update(&sha, count, static_cast<const std::uint8_t*>(bytes));
  }
};

Checksum::Checksum(const PictureHeader& header) : state(std::make_unique<State>()) {
  sha256_init(&state->sha);
  state->type = header.type;
  state->rowBytes = header.rowBytes();
  const std::string start = std::string(nameOf(header.type)) + " " + joined(header.extents(), "x") + "\n";
  state->add(start.data(), start.size());
}
Checksum::~Checksum() = default;
Checksum::Checksum(Checksum&&) noexcept = default;
Checksum& Checksum::operator=(Checksum&&) noexcept = default;

void Checksum::addRows(const std::uint8_t* rows, std::int64_t count) {
  const std::size_t size = static_cast<std::size_t>(count) * state->rowBytes;
  if constexpr (std::endian::native == std::endian::little) {
    state->add(rows, size);
  } else {
    std::vector<std::uint8_t> turned(rows, rows + size);
    toLittleEndian(turned, state->type);
    state->add(turned.data(), turned.size());
  }
}

std::string Checksum::text() {
  std::array<std::uint8_t, SHA256_DIGEST_SIZE> digest{};
  sha256_digest(&state->sha, digest.size(), digest.data());
  constexpr std::string_view digits = "0123456789abcdef";
  std::string text;
  for (const std::uint8_t byte : digest) {
    text += digits[byte >> 4];
    text += digits[byte & 15];
  }
  return text;
}

Option checksumOption() {
  return {.name = "--checksum",
          .meaning = "Prints SHA-256 of what is written: type, extents, elements (see `orvane help checksum`)"};
}

void printChecksum(const std::string& path, const std::string& hash) {
  const std::string line = hash + "  " + legible(path);
  if (isStandardOutput(path)) {
    tell(line);
  } else {
    printOut(line + "\n");
  }
}

}  // namespace BP::tool
