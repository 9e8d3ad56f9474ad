#pragma once

#include <memory>

#include "tool/input_file.h"
#include "tool/picture.h"

namespace BP::tool {

/// Reads a PNG file, plain or interlaced, as samples of uint8 or uint16.
///
/// Grey of 1, 2 or 4 bits becomes grey of 8 bits over the full range (grey of 1 bit is marked as such), a palette
/// becomes red, green and blue, a transparent colour becomes an alpha channel; samples of 8 and 16 bits stay exactly as
/// they are. An interlaced file is read as a whole. Memory grows with the rows that arrive, whatever the header
/// promises.
///
/// Throws `std::runtime_error`, which names the file, for a file that is damaged or truncated, or has a row of more
/// pixels than a signed 32-bit index reaches.
std::unique_ptr<RowReader> openPng(std::unique_ptr<InputFile> file);

}  // namespace BP::tool
