#include "tool/npy_writer.h"

#include <bit>
#include <stdexcept>
#include <string>
#include <vector>

#include "tool/npy_elements.h"
#include "tool/npy_header.h"

namespace BP::tool {

namespace {

class NpyWriter : public RowWriter {
 public:
  NpyWriter(OutputStream& output, const PictureHeader& header)
      : stream(output), type(header.type), rowBytes(header.rowBytes()) {
    const std::vector<std::int64_t> extents = header.extents();
    if (extents.size() > maxNpyRank) {
      throw std::invalid_argument("an array of " + std::to_string(extents.size()) +
                                  " dimensions cannot be written as NPY");
    }
    std::string text = npyHeaderText({type, std::endian::little, false, {extents.rbegin(), extents.rend()}});
    constexpr std::size_t alignment = 64;  // of the elements in the file
    const std::size_t before = npyMagic.size() + 4;
    text.append(alignment - 1 - (before + text.size()) % alignment, ' ').append("\n");
    std::vector<std::uint8_t> start(npyMagic.begin(), npyMagic.end());
    start.insert(start.end(),
                 {1, 0, static_cast<std::uint8_t>(text.size()), static_cast<std::uint8_t>(text.size() >> 8)});
    start.insert(start.end(), text.begin(), text.end());
    stream.write(start);
  }

  void write(const std::uint8_t* from, std::int64_t count) override {
    const std::size_t size = static_cast<std::size_t>(count) * rowBytes;
    if constexpr (std::endian::native == std::endian::little) {
      stream.write({from, size});
    } else {
      std::vector<std::uint8_t> turned(from, from + size);
      toLittleEndian(turned, type);
      stream.write(turned);
    }
  }
  void finish() override {}

 private:
  OutputStream& stream;
  ElementType type;
  std::size_t rowBytes;
};

}  // namespace

std::unique_ptr<RowWriter> createNpy(OutputStream& stream, const PictureHeader& header) {
  return std::make_unique<NpyWriter>(stream, header);
}

}  // namespace BP::tool
