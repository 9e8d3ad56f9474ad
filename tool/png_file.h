#pragma once

#include <string>

#include "tool/image.h"
#include "tool/output_files.h"

namespace BP::tool {

/// Reads a PNG file, plain or interlaced.
///
/// Grey of 1, 2 or 4 bits becomes grey of 8 bits over the full range (grey of 1 bit is marked as such), a palette
/// becomes red, green and blue, a transparent colour becomes an alpha channel; samples of 8 and 16 bits stay exactly as
/// they are. Gamma, colour profile, resolution and texts are dropped: samples are filtered as they are stored. Memory
/// grows with the rows that arrive, whatever the header promises.
///
/// Throws `std::runtime_error`, which names the file, for a file that cannot be read, is not PNG, is damaged or
/// truncated, or has more pixels than a signed 32-bit index reaches.
Image readPng(const std::string& path);

/// Writes a PNG file of the image's channels and bit depth, or of one bit if it is bilevel and has no alpha.
void addPng(OutputFiles& files, const std::string& path, const Image& image);
/// Writes the only file of a run.
void writePng(const std::string& path, const Image& image);

/// Refuses a name to write PNG to that does not end in .png, unless it is a pipe or a device.
void checkPngName(const std::string& path);

}  // namespace BP::tool
