#pragma once

#include <string>

#include "tool/array.h"
#include "tool/output_files.h"

namespace BP::tool {

/// Reads an NPY file of version 1, 2 or 3, of any element type of `ElementType` and either byte order.
///
/// The last axis becomes dimension 0, so extents are the shape backwards. An array in Fortran order is rearranged: the
/// same array gives the same elements at the same positions, whichever order its file has. A bool that is neither 0 nor
/// 1 becomes 1.
///
/// Throws `std::runtime_error`, which names the file, for a file that cannot be read, is not NPY, is truncated or
/// longer than its header says, or has another element type, a damaged header, more than 64 axes, or extents whose
/// product does not fit 64 bits.
Array readNpy(const std::string& path);

/// Writes an NPY file: version 1, C order, little-endian on every machine. Throws `std::invalid_argument` for more than
/// 64 extents and if `array.bytes` does not have the size that type and extents give.
void addNpy(OutputFiles& files, const std::string& path, const Array& array);
/// Writes the only file of a run.
void writeNpy(const std::string& path, const Array& array);

/// Refuses a name to write NPY to that does not end in .npy, unless it is a pipe or a device.
void checkNpyName(const std::string& path);

}  // namespace BP::tool
