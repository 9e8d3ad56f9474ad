#pragma once

#include <memory>

#include "tool/input_file.h"
#include "tool/picture.h"

namespace BP::tool {

/// Reads a TIFF or BigTIFF file of either byte order: strips or tiles, pixels together or in separate planes, of any
/// compression that libtiff knows.
///
/// Samples are whole numbers of 8 to 64 bits, `float`, `double` or complex of these, in any number of channels, one of
/// which may be alpha. Grey of 1, 2 or 4 bits becomes grey of 8 bits over the full range, a palette becomes red, green
/// and blue, and grey that is stored with white as 0 is turned round. Pages of one shape are a stack; of others only
/// the first page is read, and the tags say so. A pipe is copied into a nameless file first.
///
/// Throws `std::runtime_error`, which names the file, for a file that is damaged or truncated, or has other samples.
std::unique_ptr<RowReader> openTiff(std::unique_ptr<InputFile> file);

}  // namespace BP::tool
