#pragma once

#include <cstddef>
#include <cstdint>

#include "tool/tiff_header.h"

namespace BP::tool {

/// Puts a stored row of plane `plane` into a row of whole bytes, where the samples of a pixel lie side by side; samples
/// of less than 8 bits get a byte each.
void spreadSamples(const std::uint8_t* from, std::size_t width, const TiffLayout& layout, std::size_t plane,
                   std::uint8_t* to);

/// Turns such a row into samples of the header's type: indices into colours, small depths into the full range of 8
/// bits, white as 0 into black as 0.
void finishSamples(const std::uint8_t* from, std::size_t width, const TiffLayout& layout, std::uint8_t* to);

}  // namespace BP::tool
