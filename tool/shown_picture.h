#pragma once

#include <string>

#include "tool/image.h"

namespace BP::tool {

/// A picture for people to look at, and what was done to its samples, in words.
struct ShownPicture {
  Image image;
  std::string note;
};

/// Reads the first page of a picture, or an array of two dimensions. Samples of 8 and 16 bits stay as they are. Other
/// real ones are spread over 16 bits: the least finite one becomes 0, the greatest one 65535; infinities and NaN are as
/// the least or the greatest one. Throws `std::runtime_error` for complex samples.
ShownPicture readShown(const std::string& path);

}  // namespace BP::tool
