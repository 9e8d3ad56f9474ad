#pragma once

#include <memory>

#include "tool/output_stream.h"
#include "tool/picture.h"
#include "tool/workers.h"

namespace BP::tool {

/// Writes a PNG file of grey or colour, with or without alpha, of 8 or 16 bits, or of one bit if it is bilevel.
/// `level` is the effort of the compression, 0 to 9. Pieces of about a megabyte are packed side by side by the workers;
/// the bytes of the file do not depend on their number.
///
/// Throws `std::runtime_error` that names the file for a header that PNG cannot have.
std::unique_ptr<RowWriter> createPng(OutputStream& stream, const PictureHeader& header, int level, Workers& workers);

}  // namespace BP::tool
