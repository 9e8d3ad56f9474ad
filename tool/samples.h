#pragma once

#include "tool/array.h"
#include "tool/image.h"

namespace BP::tool {

/// The samples of a picture, alpha too, as float64 elements: of grey without alpha one for each pixel, extents
/// {width, height}; else extents {channels, width, height}, as NPY users know colours.
Array samplesOf(const Image& image);

}  // namespace BP::tool
