#pragma once

#include <memory>
#include <string>

#include "tool/operation.h"
#include "tool/picture.h"

namespace BP::tool {

/// SHA-256 of an array, equal on two machines exactly if type, extents and all elements are, bit for bit.
///
/// What is hashed is a line of ASCII text, the name of the type, a space, the extents and a line break, such as
/// "uint8 3x640x480\n", and then the elements in their order (see `Array`) in little-endian bytes. The extents of
/// pictures begin with the channels if there is more than one, and end with the pages if there is more than one. The
/// name and the format of the file do not matter, nor what it has beside the elements.
class Checksum {
 public:
  explicit Checksum(const PictureHeader& header);
  ~Checksum();
  Checksum(Checksum&&) noexcept;
  Checksum& operator=(Checksum&&) noexcept;

  void addRows(const std::uint8_t* rows, std::int64_t count);
  /// The hash of what was added, 64 hexadecimal digits. Nothing can be added after that.
  std::string text();

 private:
  struct State;
  std::unique_ptr<State> state;
};

/// `--checksum`, and the line that it prints on the standard output: the hash, two spaces, and the name of the file. It
/// goes to stderr where the file is the standard output.
Option checksumOption();
void printChecksum(const std::string& path, const std::string& hash);

}  // namespace BP::tool
