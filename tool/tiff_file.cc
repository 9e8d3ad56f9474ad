#include "tool/tiff_file.h"

#include <unistd.h>

#include <array>
#include <cstdio>
#include <utility>

namespace BP::tool {

TiffFile::TiffFile(int descriptor, const std::string& name, const char* mode) {
  const std::unique_ptr<TIFFOpenOptions, void (*)(TIFFOpenOptions*)> options(TIFFOpenOptionsAlloc(),
                                                                             TIFFOpenOptionsFree);
  constexpr tmsize_t maxAllocation = tmsize_t{1} << 31;
  TIFFOpenOptionsSetErrorHandlerExtR(options.get(), keepError, this);
  TIFFOpenOptionsSetWarningHandlerExtR(options.get(), ignoreWarning, this);
  TIFFOpenOptionsSetMaxSingleMemAlloc(options.get(), maxAllocation);
  tiff.reset(TIFFFdOpenExt(descriptor, name.c_str(), mode, options.get()));
  if (!tiff) ::close(descriptor);
}

std::string TiffFile::takeError() { return std::exchange(error, {}); }

int TiffFile::keepError(TIFF* /*tiff*/, void* self, const char* /*module*/, const char* format, va_list arguments) {
  auto& file = *static_cast<TiffFile*>(self);
  std::array<char, 200> text{};
  std::vsnprintf(text.data(), text.size(), format, arguments);
  if (file.error.empty()) file.error = text.data();
  return 1;  // nobody else needs to be told
}

int TiffFile::ignoreWarning(TIFF* /*tiff*/, void* /*self*/, const char* /*module*/, const char* /*format*/,
                            va_list /*arguments*/) {
  return 1;
}

}  // namespace BP::tool
