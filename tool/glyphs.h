#pragma once

namespace BP::tool {

constexpr int glyphWidth = 5;
constexpr int glyphHeight = 7;

/// True if the dot in column x and row y, from the upper left, belongs to the letter `c`.
///
/// The font has the letters A D E G I L N O R S V W, the digits, and the space. Other characters are drawn as the
/// space.
bool glyphDot(char c, int x, int y);

}  // namespace BP::tool
