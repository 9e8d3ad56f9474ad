#include "tool/npy_reader.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <stdexcept>
#include <string_view>
#include <utility>
#include <vector>

#include "tool/npy_elements.h"
#include "tool/npy_header.h"
#include "tool/text.h"

namespace BP::tool {

namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr std::size_t maxHeaderSize = std::size_t{1} << 20;

/// The next `count` bytes; throws `problem` if the file has fewer.
Bytes readBytes(InputFile& file, std::size_t count, const std::string& problem) {
  Bytes bytes;
  if (file.append(bytes, count) != count) throw std::runtime_error(problem);
  return bytes;
}

class NpyReader : public RowReader {
 public:
  explicit NpyReader(std::unique_ptr<InputFile> openFile) : file(std::move(openFile)) {
    readHeader();
    shape.format = FileFormat::npy;
    shape.type = header.type;
    shape.arrayExtents.assign(header.shape.rbegin(), header.shape.rend());
    const std::size_t rank = header.shape.size();
    shape.width = rank > 0 ? shape.arrayExtents[0] : 1;
    shape.height = rank > 1 ? shape.arrayExtents[1] : 1;
    for (std::size_t d = 2; d < rank; ++d) shape.pages *= shape.arrayExtents[d];
    isRearranged = header.isFortran && rank > 1;
    checkSize();
  }

  void read(std::uint8_t* to, std::int64_t count) override {
    const std::size_t size = static_cast<std::size_t>(count) * shape.rowBytes();
    if (isRearranged) {
      if (whole.empty() && size > 0) whole = inCOrder(readWhole(), header.shape, sizeOf(header.type));
      std::memcpy(to, whole.data() + done, size);
      done += size;
      return;
    }
    const std::size_t found = file->read(to, size);
    done += found;
    if (found < size) truncated(done);
    toNative({to, size}, header.type, header.order);
  }

  void finish() override {
    std::uint8_t more = 0;
    if (file->read(&more, 1) > 0) tooLong();
  }

 private:
  void readHeader() {
    const std::string& what = file->name();
    const std::string cut = what + " is truncated: it ends within the header";
    const Bytes start = readBytes(*file, npyMagic.size() + 2, cut);
    const int major = start[npyMagic.size()], minor = start[npyMagic.size() + 1];
    if (major < 1 || major > 3 || minor != 0) {
      throw std::runtime_error(what + ": NPY version " + std::to_string(major) + "." + std::to_string(minor) +
                               " is not supported; allowed are 1.0, 2.0 and 3.0");
    }
    const Bytes digits = readBytes(*file, major == 1 ? 2 : 4, cut);
    std::size_t length = 0;
    for (std::size_t i = digits.size(); i-- > 0;) length = length << 8 | digits[i];
    if (length > maxHeaderSize) {
      throw std::runtime_error(what + ": damaged header: its length is " + std::to_string(length) + "; at most " +
                               std::to_string(maxHeaderSize) + " are allowed");
    }
    const Bytes dictionary = readBytes(*file, length, cut);
    header = parseNpyHeader({reinterpret_cast<const char*>(dictionary.data()), dictionary.size()}, what);
    headerSize = start.size() + digits.size() + length;
  }

  /// Compares what the header promises with the length of the file, as far as that is known.
  void checkSize() {
    try {
      needed = bytesOf(header.type, header.shape);
    } catch (const std::length_error& error) {
      throw std::runtime_error(file->name() + ": " + described() + ": " + error.what());
    }
    if (file->size() < 0) return;
    const std::size_t found = static_cast<std::size_t>(file->size()) - headerSize;
    if (found < needed) truncated(found);
    if (found > needed) tooLong();
  }

  std::string described() const {
    return "shape " + shapeText(header.shape) + " of " + std::string(nameOf(header.type));
  }
  [[noreturn]] void truncated(std::size_t found) const {
    throw std::runtime_error(file->name() + " is truncated: " + described() + " needs " + std::to_string(needed) +
                             " bytes, but " + std::to_string(found) + " follow the header");
  }
  [[noreturn]] void tooLong() const {
    throw std::runtime_error(file->name() + " is longer than the " + std::to_string(needed) + " bytes that " +
                             described() + " needs");
  }

  Bytes readWhole() {
    Bytes bytes;
    const std::size_t found = file->append(bytes, needed);
    if (found < needed) truncated(found);
    toNative(bytes, header.type, header.order);
    return bytes;
  }

  std::unique_ptr<InputFile> file;
  NpyHeader header;
  std::size_t headerSize = 0;
  std::size_t needed = 0;  ///< bytes of all elements
  std::size_t done = 0;    ///< bytes of those read
  bool isRearranged = false;
  Bytes whole;
};

}  // namespace

std::unique_ptr<RowReader> openNpy(std::unique_ptr<InputFile> file) {
  return std::make_unique<NpyReader>(std::move(file));
}

}  // namespace BP::tool
