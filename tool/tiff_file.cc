#include "tool/tiff_file.h"

#include <unistd.h>

#include <array>
#include <cstdio>
#include <new>
#include <utility>

namespace BP::tool {

TiffFile::TiffFile(int descriptor, const std::string& name, const char* mode) {
  const std::unique_ptr<TIFFOpenOptions, void (*)(TIFFOpenOptions*)> options(TIFFOpenOptionsAlloc(),
                                                                             TIFFOpenOptionsFree);
  if (!options) throw std::bad_alloc();
  constexpr tmsize_t maxAllocation = tmsize_t{1} << 31;
  TIFFOpenOptionsSetErrorHandlerExtR(options.get(), keepError, this);
  TIFFOpenOptionsSetWarningHandlerExtR(options.get(), ignoreWarning, this);
  TIFFOpenOptionsSetMaxSingleMemAlloc(options.get(), maxAllocation);
  tiff.reset(TIFFFdOpenExt(descriptor, name.c_str(), mode, options.get()));
  if (!tiff) ::close(descriptor);
}

std::string TiffFile::takeError() { return std::exchange(error, {}).data(); }

int TiffFile::keepError(TIFF* /*tiff*/, void* self, const char* /*module*/, const char* format, va_list arguments) {
  auto& file = *static_cast<TiffFile*>(self);
  if (file.error[0] == '\0') std::vsnprintf(file.error.data(), file.error.size(), format, arguments);
  return 1;  // nobody else needs to be told
}

int TiffFile::ignoreWarning(TIFF* /*tiff*/, void* /*self*/, const char* /*module*/, const char* /*format*/,
                            va_list /*arguments*/) {
  return 1;
}

}  // namespace BP::tool
