#pragma once

#include <string>

#include "tool/array.h"
#include "tool/image.h"

namespace BP::tool {

/// The elements of an image or a template, and a picture of them.
struct MatchInput {
  Array elements;  ///< of two extents
  Image picture;   ///< red, green and blue of 8 bits, if it is wanted
  int bitDepth;    ///< of samples of a picture, 8 or 16; 0 of other elements

  /// True for grey samples, which are whole numbers in their own type.
  bool isWhole() const { return elements.type == ElementType::uint8 || elements.type == ElementType::uint16; }
};

/// Reads a picture or an array.
///
/// Grey samples of type uint8 and uint16 stay as they are; colours become their luma, 0.2126 red + 0.7152 green +
/// 0.0722 blue, in float64, and alpha is dropped. Other elements are pictured by their levels (see `levelsOf`), from
/// black for the least to white for the greatest. They are bool, float32, float64, complex64 or complex128; other types
/// need `allowsWhole`. Throws `std::runtime_error` for what cannot be read, for an array of another type, and unless it
/// has two extents of 1 or more.
MatchInput readMatchInput(const std::string& path, bool allowsWhole, bool wantsPicture);

}  // namespace BP::tool
