#pragma once

#include <memory>

#include "tool/input_file.h"
#include "tool/picture.h"

namespace BP::tool {

/// Reads an NPY file of version 1, 2 or 3, of any element type of `ElementType` and either byte order.
///
/// The last axis becomes dimension 0, so extents are the shape backwards. An array in Fortran order is read as a whole
/// and rearranged: the same array gives the same elements at the same positions, whichever order its file has. A bool
/// that is neither 0 nor 1 becomes 1.
///
/// Throws `std::runtime_error`, which names the file, for a file that is truncated or longer than its header says, or
/// has another element type, a damaged header, more than 64 axes, or extents whose product does not fit 64 bits.
std::unique_ptr<RowReader> openNpy(std::unique_ptr<InputFile> file);

}  // namespace BP::tool
