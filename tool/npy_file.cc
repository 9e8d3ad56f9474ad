#include "tool/npy_file.h"

#include <algorithm>
#include <bit>
#include <cstdio>
#include <cstring>
#include <stdexcept>
#include <string_view>
#include <vector>

#include "tool/file.h"
#include "tool/file_kind.h"
#include "tool/npy_header.h"
#include "tool/text.h"

namespace BP::tool {

namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr std::string_view magic = "\x93NUMPY";
constexpr std::size_t maxHeaderSize = std::size_t{1} << 20;

/// The next `count` bytes; throws `problem` if the file has fewer.
Bytes readBytes(const File& file, std::size_t count, const std::string& problem) {
  Bytes bytes;
  if (appendBytes(bytes, file.get(), count) != count) throw std::runtime_error(problem);
  return bytes;
}

/// Reads everything before the elements; `what` is the name of the file.
NpyHeader readHeader(const File& file, const std::string& what) {
  Bytes start;
  appendBytes(start, file.get(), magic.size() + 2);
  const std::string_view text(reinterpret_cast<const char*>(start.data()), start.size());
  if (!text.starts_with(magic) || start.size() < magic.size() + 2) {
    throw std::runtime_error(what + " is not an NPY file" + otherKind(text));
  }
  const int major = start[magic.size()], minor = start[magic.size() + 1];
  if (major < 1 || major > 3 || minor != 0) {
    throw std::runtime_error(what + ": NPY version " + std::to_string(major) + "." + std::to_string(minor) +
                             " is not supported; allowed are 1.0, 2.0 and 3.0");
  }
  const std::string truncated = what + " is truncated: it ends within the header";
  const Bytes digits = readBytes(file, major == 1 ? 2 : 4, truncated);
  std::size_t length = 0;
  for (std::size_t i = digits.size(); i-- > 0;) length = length << 8 | digits[i];
  if (length > maxHeaderSize) {
    throw std::runtime_error(what + ": damaged header: its length is " + std::to_string(length) + "; at most " +
                             std::to_string(maxHeaderSize) + " are allowed");
  }
  const Bytes dictionary = readBytes(file, length, truncated);
  return parseNpyHeader({reinterpret_cast<const char*>(dictionary.data()), dictionary.size()}, what);
}

Bytes readElements(const File& file, const NpyHeader& header, const std::string& what) {
  const std::string shape = "shape " + shapeText(header.shape) + " of " + std::string(nameOf(header.type));
  std::size_t count = 0;
  try {
    count = bytesOf(header.type, header.shape);
  } catch (const std::length_error& error) {
    throw std::runtime_error(what + ": " + shape + ": " + error.what());
  }
  Bytes bytes;
  const std::int64_t fileSize = sizeOf(file);
  if (fileSize >= 0 && count <= static_cast<std::size_t>(fileSize)) bytes.reserve(count);
  const std::size_t found = appendBytes(bytes, file.get(), count);
  if (found < count) {
    throw std::runtime_error(what + " is truncated: " + shape + " needs " + std::to_string(count) + " bytes, but " +
                             std::to_string(found) + " follow the header");
  }
  if (std::fgetc(file.get()) != EOF) {
    throw std::runtime_error(what + " is longer than the " + std::to_string(count) + " bytes that " + shape + " needs");
  }
  return bytes;
}

/// Reverses the bytes of each real or imaginary part.
void reverseByteOrder(Bytes& bytes, ElementType type) {
  const bool isComplex = type == ElementType::complex64 || type == ElementType::complex128;
  const std::size_t size = sizeOf(type) / (isComplex ? 2 : 1);
  for (auto part = bytes.begin(); part != bytes.end(); part += static_cast<std::ptrdiff_t>(size)) {
    std::reverse(part, part + static_cast<std::ptrdiff_t>(size));
  }
}

/// The elements in C order; `bytes` has them in Fortran order.
Bytes inCOrder(const Bytes& bytes, const std::vector<std::int64_t>& shape, std::size_t size) {
  const std::size_t rank = shape.size();
  std::vector<std::size_t> steps(rank), index(rank, 0);  // steps in bytes from one element of an axis to the next
  for (std::size_t axis = 0, step = size; axis < rank; ++axis) {
    steps[axis] = step;
    step *= static_cast<std::size_t>(shape[axis]);
  }
  Bytes result(bytes.size());
  std::size_t from = 0;
  for (std::size_t to = 0; to < result.size(); to += size) {
    std::memcpy(result.data() + to, bytes.data() + from, size);
    for (std::size_t axis = rank; axis-- > 0;) {
      from += steps[axis];
      if (++index[axis] < static_cast<std::size_t>(shape[axis])) break;
      from -= steps[axis] * index[axis];
      index[axis] = 0;
    }
  }
  return result;
}

}  // namespace

Array readNpy(const std::string& path) {
  const File file = openForReading(path);
  const std::string what = inQuotes(path);
  const NpyHeader header = readHeader(file, what);
  Array array{header.type, {header.shape.rbegin(), header.shape.rend()}, readElements(file, header, what)};
  if (header.order != std::endian::native) reverseByteOrder(array.bytes, array.type);
  if (header.isFortran && header.shape.size() > 1)
    array.bytes = inCOrder(array.bytes, header.shape, sizeOf(array.type));
  if (array.type == ElementType::boolean) {
    for (std::uint8_t& value : array.bytes) value = value != 0 ? 1 : 0;
  }
  return array;
}

void addNpy(OutputFiles& files, const std::string& path, const Array& array) {
  if (array.extents.size() > maxNpyRank || array.bytes.size() != bytesOf(array.type, array.extents)) {
    throw std::invalid_argument("an array of " + std::to_string(array.extents.size()) + " dimensions and " +
                                std::to_string(array.bytes.size()) + " bytes cannot be written as NPY");
  }
  const NpyHeader header{array.type, std::endian::little, false, {array.extents.rbegin(), array.extents.rend()}};
  std::string text = npyHeaderText(header);
  constexpr std::size_t alignment = 64;  // of the elements in the file
  const std::size_t before = magic.size() + 4;
  text.append(alignment - 1 - (before + text.size()) % alignment, ' ').append("\n");

  Bytes start(magic.begin(), magic.end());
  start.insert(start.end(),
               {1, 0, static_cast<std::uint8_t>(text.size()), static_cast<std::uint8_t>(text.size() >> 8)});
  start.insert(start.end(), text.begin(), text.end());
  if constexpr (std::endian::native == std::endian::little) {
    files.add(path, start, array.bytes);
  } else {
    Bytes turned = array.bytes;
    reverseByteOrder(turned, array.type);
    files.add(path, start, turned);
  }
}

void writeNpy(const std::string& path, const Array& array) {
  OutputFiles files;
  addNpy(files, path, array);
  files.commit();
}

void checkNpyName(const std::string& path) { checkFileName(path, ".npy"); }

}  // namespace BP::tool
