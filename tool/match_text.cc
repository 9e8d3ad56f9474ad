#include "tool/match_text.h"

#include <cmath>
#include <cstddef>

#include "tool/text.h"

namespace BP::tool {

namespace {

std::string cornerText(const std::array<std::int64_t, 2>& corner) {
  return std::to_string(corner[0]) + "," + std::to_string(corner[1]);
}

std::string sizeText(const std::array<std::int64_t, 2>& size) {
  return std::to_string(size[0]) + "x" + std::to_string(size[1]);
}

std::string regionText(const filters::Rectangle& region) {
  return cornerText(region.start) + " " + sizeText(region.size);
}

std::string scoreText(const std::complex<double>& score, bool isComplex) {
  if (!isComplex) return numberText(score.real());
  const std::string imaginary = numberText(score.imag());
  return numberText(score.real()) + (imaginary[0] == '-' ? "" : "+") + imaginary + "i";
}

std::string jsonNumber(double value) {
  return std::isfinite(value) ? numberText(value)
                              : "\"" + numberText(std::isnan(value) ? std::fabs(value) : value) + "\"";
}

std::string jsonScore(const std::complex<double>& score, bool isComplex) {
  if (!isComplex) return jsonNumber(score.real());
  return "[" + jsonNumber(score.real()) + ", " + jsonNumber(score.imag()) + "]";
}

std::string jsonRegion(const filters::Rectangle& region) {
  return "[" + std::to_string(region.start[0]) + ", " + std::to_string(region.start[1]) + ", " +
         std::to_string(region.size[0]) + ", " + std::to_string(region.size[1]) + "]";
}

std::string jsonBool(bool value) { return value ? "true" : "false"; }

/// The scores of the neighbourhood, each as `text(score)`, a line for each row.
template <class Text>
std::string blockText(const MatchResult& match, std::int64_t edge, const std::string& separator, const Text& text) {
  std::string all;
  for (std::size_t i = 0; i < match.neighbourhood.size(); ++i) {
    const std::size_t column = i % static_cast<std::size_t>(edge);
    all += (column > 0 ? separator : "") + text(match.neighbourhood[i]);
    if (column + 1 == static_cast<std::size_t>(edge)) all += "\n";
  }
  return all;
}

std::string jsonBlock(const MatchResult& match, std::int64_t edge) {
  const std::string rows = blockText(match, edge, ", ", [&](const auto& s) { return jsonScore(s, match.isComplex); });
  std::string block;
  for (const auto row : split(std::string_view(rows).substr(0, rows.size() - 1), '\n')) {
    block.append(block.empty() ? "" : ", ").append("[").append(row).append("]");
  }
  return "[" + block + "]";
}

}  // namespace

std::string matchText(const MatchResult& match, const filters::MatchOptions& options) {
  std::string text = "location  " + cornerText(match.location) + "\nwindow    " + regionText(match.window) +
                     "\nscore     " + scoreText(match.score, match.isComplex) + "\n";
  if (options.region) {
    text += "roi       " + regionText(*options.region) +
            (match.regionValid ? "" : ", of which " + regionText(match.positions) + " are positions") + "\n";
  }
  if (options.neighbourhood == 0) return text;
  return text + "scores around it" + (match.neighbourhoodValid ? "" : ", some of them beyond the positions searched") +
         ":\n" +
         blockText(match, options.neighbourhood, "  ", [&](const auto& s) { return scoreText(s, match.isComplex); });
}

std::string matchJson(const MatchResult& match, const MatchNames& names, const filters::MatchOptions& options) {
  std::string json = "{\"metric\": \"" + names.metric + "\", \"mode\": \"" + names.mode + "\", \"search\": \"" +
                     names.search + "\",\n \"location\": [" + std::to_string(match.location[0]) + ", " +
                     std::to_string(match.location[1]) + "], \"window\": " + jsonRegion(match.window) +
                     ", \"score\": " + jsonScore(match.score, match.isComplex) +
                     ",\n \"positions\": " + jsonRegion(match.positions);
  if (options.region) {
    json += ", \"roi\": " + jsonRegion(*options.region) + ", \"roiValid\": " + jsonBool(match.regionValid);
  }
  if (options.neighbourhood > 0) {
    json += ",\n \"neighbourhood\": " + jsonBlock(match, options.neighbourhood) +
            ", \"neighbourhoodValid\": " + jsonBool(match.neighbourhoodValid);
  }
  return json + "}\n";
}

}  // namespace BP::tool
