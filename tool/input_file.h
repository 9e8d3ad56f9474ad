#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "tool/file.h"

namespace BP::tool {

/// A file, a pipe or a device that is read from its first byte on, and whose first bytes can be looked at before.
/// Failures throw `std::runtime_error` with the name and the system's reason.
class InputFile {
 public:
  /// Opens `path`; "-" is the standard input.
  explicit InputFile(const std::string& path);

  /// The first 16 bytes, or all of a shorter file.
  std::string_view start() const { return {reinterpret_cast<const char*>(ahead.data()), startSize}; }
  /// Reads up to `count` bytes; fewer only at the end of the file.
  std::size_t read(void* to, std::size_t count);
  /// Appends up to `count` bytes, block by block, so that memory grows with what is there, not with what a header
  /// promises. Returns the number of bytes read.
  std::size_t append(std::vector<std::uint8_t>& bytes, std::size_t count);
  /// Reads on until `count` bytes lie ahead, or to the end; returns how many do.
  std::size_t lookAhead(std::size_t count);
  /// Size in bytes of a regular file, -1 of anything else.
  std::int64_t size() const { return sizeOf(file); }
  /// A new descriptor of a file that can be read at any place: the file itself, or a nameless copy of what a pipe
  /// brings.
  int seekable();

  /// The name in quotes.
  const std::string& name() const { return shown; }
  /// Throws the error of a file that cannot be what it claims to be.
  [[noreturn]] void damaged(const std::string& reason) const;

 private:
  std::string path;
  std::string shown;
  File file;
  std::vector<std::uint8_t> ahead;
  std::size_t startSize = 0;
  std::size_t used = 0;  ///< of the bytes ahead
};

}  // namespace BP::tool
