#pragma once

#include <cstdint>
#include <span>
#include <string>

namespace BP::tool {

/// An open descriptor to write to. Failures throw `std::runtime_error` that names the file.
///
/// A regular file that the command did not open itself, as behind a redirected standard output, is cut back to its
/// earlier length if the writing does not finish.
class OutputStream {
 public:
  /// Takes over an open descriptor; a negative one throws the error in `errno`. `shownName` appears in errors.
  OutputStream(int openDescriptor, const std::string& shownName);
  ~OutputStream();
  OutputStream(const OutputStream&) = delete;
  OutputStream& operator=(const OutputStream&) = delete;

  void write(std::span<const std::uint8_t> bytes);
  /// The descriptor, for those who write to it themselves; only of a stream that `canSeek`.
  int open() const { return descriptor; }
  /// True for a regular file that was empty when it was opened, for reading as well.
  bool canSeek() const { return isFresh; }

  /// Waits for the disk, which may report only then that it is full, and closes.
  void finish();

  const std::string& name() const { return shown; }

 private:
  int descriptor;
  std::string shown;
  std::int64_t start = -1;  ///< of a regular file the place where the writing began
  bool isFresh = false;
};

}  // namespace BP::tool
