#pragma once

#include <string>

#include "tool/array.h"

namespace BP::tool {

/// Reads an NPY file of version 1, 2 or 3, of any element type of `ElementType` and either byte order.
///
/// The last axis becomes dimension 0, so extents are the shape backwards. An array in Fortran order is rearranged: the
/// same array gives the same elements at the same places whichever order its file has. A bool that is neither 0 nor 1
/// becomes 1.
///
/// Throws `std::runtime_error`, which names the file, for a file that cannot be read, is not NPY, is truncated or
/// longer than it says, or has another element type, a damaged header, more than 64 axes, or extents whose product
/// does not fit 64 bits.
Array readNpy(const std::string& path);

/// Writes an NPY file, whole or not at all (see `replaceFile`): version 1, C order, little-endian on every machine.
/// `array.bytes` must have the size that type and extents ask for, and there are at most 64 of these; otherwise throws
/// `std::invalid_argument`.
void writeNpy(const std::string& path, const Array& array);

/// Throws `std::runtime_error` if `path` is not a name to write NPY to: it must end in .npy, or be a pipe or device.
void checkNpyName(const std::string& path);

}  // namespace BP::tool
