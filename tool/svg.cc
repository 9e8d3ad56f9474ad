#include "tool/svg.h"

namespace BP::tool {

namespace {

std::string attribute(std::string_view name, std::string_view value) {
  return " " + std::string(name) + "=\"" + std::string(value) + "\"";
}

std::string attribute(std::string_view name, int value) { return attribute(name, std::to_string(value)); }

/// The beginning of an element of a class.
std::string element(std::string_view name, std::string_view kind) {
  return "<" + std::string(name) + (kind.empty() ? "" : attribute("class", kind));
}

std::string places(const Box& box) {
  return attribute("x", box.x) + attribute("y", box.y) + attribute("width", box.width) +
         attribute("height", box.height);
}

}  // namespace

void Svg::box(std::string_view kind, const Box& box) { shapes += element("rect", kind) + places(box) + "/>\n"; }

void Svg::circle(std::string_view kind, int x, int y, int radius) {
  shapes += element("circle", kind) + attribute("cx", x) + attribute("cy", y) + attribute("r", radius) + "/>\n";
}

void Svg::path(std::string_view kind, const std::string& commands) {
  shapes += element("path", kind) + attribute("d", commands) + "/>\n";
}

void Svg::text(std::string_view kind, Anchor anchor, int x, int y, std::string_view words) {
  constexpr std::string_view anchors[] = {"start", "middle", "end"};
  shapes += element("text", kind) + attribute("x", x) + attribute("y", y) +
            (anchor == start ? "" : attribute("text-anchor", anchors[anchor])) + ">" + std::string(words) + "</text>\n";
}

std::string Svg::document(int width, int height, std::string_view style, std::string_view title) const {
  const std::string size = attribute("width", width) + attribute("height", height);
  return "<svg xmlns=\"http://www.w3.org/2000/svg\" role=\"img\"" + size +
         attribute("viewBox", "0 0 " + std::to_string(width) + " " + std::to_string(height)) + ">\n<title>" +
         std::string(title) + "</title>\n<style>" + std::string(style) + "</style>\n<rect class=\"page\"" + size +
         "/>\n" + shapes + "</svg>\n";
}

}  // namespace BP::tool
