#pragma once

#include "tool/array.h"
#include "tool/image.h"

namespace BP::tool {

/// The samples of a picture, alpha included, as float64 elements. Grey without alpha has the extents {width, height},
/// other pictures have {channels, width, height}, which is NPY's usual layout of colours.
Array samplesOf(const Image& image);

}  // namespace BP::tool
