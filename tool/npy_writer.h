#pragma once

#include <memory>

#include "tool/output_stream.h"
#include "tool/picture.h"

namespace BP::tool {

/// Writes an NPY file of the header's extents: version 1, C order, little-endian on every machine. Throws
/// `std::invalid_argument` for more than 64 extents.
std::unique_ptr<RowWriter> createNpy(OutputStream& stream, const PictureHeader& header);

}  // namespace BP::tool
