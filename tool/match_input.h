#pragma once

#include <string>

#include "tool/array.h"
#include "tool/image.h"

namespace BP::tool {

/// The elements of an image or a template, and a picture of them.
struct MatchInput {
  Array elements;  ///< of two extents
  Image picture;   ///< red, green and blue of 8 bits
  int bitDepth;    ///< of the samples of a PNG picture, 0 of an NPY array
};

/// Reads a PNG picture, or if the name ends in .npy an array.
///
/// A picture gives its samples as float64; of colours it gives their luma, 0.2126 red + 0.7152 green + 0.0722 blue,
/// and alpha is dropped. An array is pictured by its levels (see `levelsOf`), from black for the least to white for the
/// greatest. Its elements are bool, float32, float64, complex64 or complex128; other types need `allowsWhole`. Throws
/// `std::runtime_error` for what cannot be read, for an array of another type, and unless it has two extents of 1 or
/// more.
MatchInput readMatchInput(const std::string& path, bool allowsWhole);

}  // namespace BP::tool
