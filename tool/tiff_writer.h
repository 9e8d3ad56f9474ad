#pragma once

#include <memory>

#include "tool/output_stream.h"
#include "tool/picture.h"
#include "tool/workers.h"

namespace BP::tool {

/// Writes a TIFF file in the machine's byte order, or BigTIFF from about 4 GB on: strips of about a megabyte, with
/// `level` 0 as they are, with 1 to 9 packed by deflate, whole numbers of up to 32 bits as differences. The workers
/// pack the strips; the bytes of the file do not depend on their number.
///
/// A stream that cannot seek gets the file as a whole at the end. Throws `std::runtime_error` that names the file for a
/// header that TIFF cannot have, and for failures.
std::unique_ptr<RowWriter> createTiff(OutputStream& stream, const PictureHeader& header, int level, Workers& workers);

}  // namespace BP::tool
