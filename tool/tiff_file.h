#pragma once

#include <fcntl.h>
#include <tiffio.h>

#include <array>
#include <memory>
#include <string>

namespace BP::tool {

/// Closes without writing: whoever has written calls `TIFFFlush` before. What is left of a file that could not be made
/// is not for libtiff to write.
struct CloseTiff {
  void operator()(TIFF* tiff) const {
    TIFFSetMode(tiff, O_RDONLY);
    TIFFClose(tiff);
  }
};

/// libtiff's state for one file, and the first error that it met. Warnings are left aside.
class TiffFile {
 public:
  /// Opens a descriptor, which it takes over. `mode` is that of libtiff; `name` appears in errors.
  TiffFile(int descriptor, const std::string& name, const char* mode);
  TiffFile(const TiffFile&) = delete;
  TiffFile& operator=(const TiffFile&) = delete;

  TIFF* get() const { return tiff.get(); }
  /// The first error since the last call, without the name of the function that found it.
  std::string takeError();

  /// The value of a field, or `otherwise` if the file has none and the format no default.
  template <class T>
  T field(ttag_t tag, T otherwise) const {
    T value{};
    return TIFFGetFieldDefaulted(tiff.get(), tag, &value) == 1 ? value : otherwise;
  }

 private:
  static int keepError(TIFF* tiff, void* self, const char* module, const char* format, va_list arguments);
  static int ignoreWarning(TIFF* tiff, void* self, const char* module, const char* format, va_list arguments);

  std::array<char, 200> error{};  // an exception may not pass through libtiff, so this needs no memory
  std::unique_ptr<TIFF, CloseTiff> tiff;
};

}  // namespace BP::tool
