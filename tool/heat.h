#pragma once

#include "tool/image.h"

namespace BP::tool {

/// A colour of 8 bits a channel.
struct Colour {
  int red, green, blue;
};

/// The colour of a part from 0 to 1: dark violet over teal to light yellow. Brightness rises all the way, so that a
/// heat map can be read without colours.
Colour heatColour(double part);

/// Sets a pixel of a picture of red, green and blue.
void putColour(Image& image, std::int64_t x, std::int64_t y, const Colour& colour);

}  // namespace BP::tool
