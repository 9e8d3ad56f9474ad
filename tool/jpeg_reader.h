#pragma once

#include <memory>

#include "tool/input_file.h"
#include "tool/picture.h"

namespace BP::tool {

/// Reads a JPEG file of grey or of colours, which become red, green and blue, as samples of uint8.
///
/// The samples are those of libjpeg's accurate whole-number transform; other decoders may differ by a level. Throws
/// `std::runtime_error`, which names the file, for a file that is damaged or truncated, or has four colours.
std::unique_ptr<RowReader> openJpeg(std::unique_ptr<InputFile> file);

}  // namespace BP::tool
