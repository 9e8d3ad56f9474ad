#include "tool/sheet.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <string_view>

#include "tool/picture_file.h"
#include "tool/svg.h"

namespace BP::tool {

namespace {

constexpr std::string_view style =
    "body{font:16px/1.45 system-ui,sans-serif;margin:2rem auto;max-width:72rem;padding:0 1rem;color:#14161a;"
    "background:#f5f5f2}h1{margin:0}main{display:grid;grid-template-columns:repeat(auto-fit,minmax(20rem,1fr));"
    "gap:1.5rem;margin-top:1.5rem}figure{margin:0;background:#fff;padding:1rem;border:1px solid #d8d8d2}"
    "img,svg{width:100%;height:auto;display:block}img.large{image-rendering:pixelated}h2{font-size:1rem;"
    "margin:.7rem 0 0}p{margin:.2rem 0 0;color:#50545c}code{font-size:.95em}";
constexpr std::string_view barStyle =
    "text{font:12px system-ui,sans-serif;fill:#50545c}.page{fill:#fff}.bar{fill:#1e7391}.zero{fill:#ff4030}";

std::string escaped(std::string_view text) {
  std::string result;
  for (const char c : text) {
    result += c == '&' ? "&amp;" : c == '<' ? "&lt;" : c == '>' ? "&gt;" : c == '"' ? "&quot;" : std::string(1, c);
  }
  return result;
}

std::string base64(const std::vector<std::uint8_t>& bytes) {
  constexpr std::string_view digits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string text;
  for (std::size_t i = 0; i < bytes.size(); i += 3) {
    const auto at = [&](std::size_t k) { return i + k < bytes.size() ? unsigned{bytes[i + k]} : 0u; };
    const unsigned block = at(0) << 16 | at(1) << 8 | at(2);
    for (std::size_t digit = 0; digit < 4; ++digit) {
      text += i + digit > bytes.size() ? '=' : digits[block >> (18 - 6 * digit) & 63];
    }
  }
  return text;
}

std::string figure(const std::string& content, const std::string& title, const std::string& text) {
  return "<figure>" + content + "<figcaption><h2>" + escaped(title) + "</h2><p>" + escaped(text) +
         "</p></figcaption></figure>\n";
}

std::string figure(const SheetPicture& picture) {
  return figure("<img" + std::string(picture.isEnlarged ? " class=\"large\"" : "") + " alt=\"" +
                    escaped(picture.title) + "\" src=\"data:image/png;base64," + base64(pngBytes(picture.image)) +
                    "\">",
                picture.title, picture.text);
}

std::string barsOf(const Histogram& histogram) {
  constexpr int barWidth = 8, height = 200, margin = 24;
  const std::uint64_t most = std::max<std::uint64_t>(1, *std::ranges::max_element(histogram.counts));
  Svg svg;
  int x = 0;
  for (std::size_t i = 0; i < histogram.counts.size(); ++i, x += barWidth) {
    const std::int64_t first = histogram.least + static_cast<std::int64_t>(i) * histogram.width;
    const bool holdsZero = first <= 0 && first + histogram.width > 0;
    const int tall = static_cast<int>((histogram.counts[i] * height + most - 1) / most);
    svg.box(holdsZero ? "zero" : "bar", {x, height - tall, barWidth - 1, tall});
  }
  const auto last = histogram.least + histogram.width * static_cast<std::int64_t>(histogram.counts.size()) - 1;
  svg.text("label", Svg::start, 0, height + margin - 8, std::to_string(histogram.least));
  svg.text("label", Svg::end, x, height + margin - 8, std::to_string(last));
  return svg.document(x, height + margin, barStyle, "Histogram");
}

}  // namespace

std::string sheetPage(const std::string& title, const std::string& subtitle, const std::vector<SheetPicture>& pictures,
                      const Histogram& histogram, const std::string& histogramText) {
  std::string page = "<!DOCTYPE html>\n<html lang=\"en\"><meta charset=\"utf-8\"><title>" + escaped(title) +
                     "</title>\n<style>" + std::string(style) + "</style>\n<h1>" + escaped(title) + "</h1>\n<p><code>" +
                     escaped(subtitle) + "</code></p>\n<main>\n";
  for (const SheetPicture& picture : pictures) page += figure(picture);
  page += figure(barsOf(histogram), "Histogram of the difference", histogramText);
  return page + "</main></html>\n";
}

}  // namespace BP::tool
