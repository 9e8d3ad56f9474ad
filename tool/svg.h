#pragma once

#include <string>
#include <string_view>

namespace BP::tool {

/// A rectangle in pixels.
struct Box {
  int x, y, width, height;
};

/// An SVG document under construction. The style sheet gives the looks of each class of shapes. Texts must not contain
/// characters that XML reserves.
class Svg {
 public:
  /// The point of a text that its coordinates give.
  enum Anchor { start, middle, end };

  void box(std::string_view kind, const Box& box);
  void circle(std::string_view kind, int x, int y, int radius);
  /// `commands` as in the attribute `d` of a path.
  void path(std::string_view kind, const std::string& commands);
  void text(std::string_view kind, Anchor anchor, int x, int y, std::string_view words);

  /// The whole document on a page of class "page"; `style` is its style sheet.
  std::string document(int width, int height, std::string_view style, std::string_view title) const;

 private:
  std::string shapes;
};

}  // namespace BP::tool
