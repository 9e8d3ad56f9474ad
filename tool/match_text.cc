#include "tool/match_text.h"

#include <cstddef>

#include "tool/json.h"
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
  return cornerText({region.x, region.y}) + " " + sizeText({region.width, region.height});
}

std::string scoreText(const std::complex<double>& score, bool isComplex) {
  if (!isComplex) return numberText(score.real());
  const std::string imaginary = numberText(score.imag());
  return numberText(score.real()) + (imaginary[0] == '-' ? "" : "+") + imaginary + "i";
}

std::string jsonRegion(const filters::Rectangle& region) {
  return jsonOf(std::array{region.x, region.y, region.width, region.height});
}

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
  const std::string rows = blockText(match, edge, ", ", [&](const auto& s) { return jsonOf(s, match.isComplex); });
  std::string block;
  for (const auto row : split(std::string_view(rows).substr(0, rows.size() - 1), '\n')) {
    block.append(block.empty() ? "" : ", ").append("[").append(row).append("]");
  }
  return "[" + block + "]";
}

}  // namespace

namespace {

std::string refinedText(const std::array<double, 2>& place) {
  return numberText(place[0]) + "," + numberText(place[1]);
}

std::string peaksText(const MatchResult& match, const filters::MatchOptions& options) {
  std::string text;
  for (std::size_t i = 0; i < match.peaks.size(); ++i) {
    const MatchPeak& peak = match.peaks[i];
    text += "match " + std::to_string(i + 1) + "   " + cornerText(peak.location) + "  window " +
            regionText(peak.window) + "  score " + numberText(peak.score) +
            (options.refine ? "  refined " + refinedText(peak.refined) : "") + "\n";
  }
  return text;
}

std::vector<JsonObject> jsonPeaks(const MatchResult& match, const filters::MatchOptions& options) {
  std::vector<JsonObject> list;
  for (const MatchPeak& peak : match.peaks) {
    JsonObject json;
    json.add("location", peak.location).addText("window", jsonRegion(peak.window)).add("score", peak.score);
    if (options.refine) json.add("refined", peak.refined);
    list.push_back(json);
  }
  return list;
}

}  // namespace

std::string matchText(const MatchResult& match, const filters::MatchOptions& options) {
  std::string text = "location  " + cornerText(match.location) + "\nwindow    " + regionText(match.window) +
                     "\nscore     " + scoreText(match.score, match.isComplex) + "\n";
  if (options.refine) text += "refined   " + refinedText(match.refined) + "\n";
  text += peaksText(match, options);
  if (options.region) {
    text += "roi       " + regionText(*options.region) +
            (match.regionValid ? "" : ", of which " + regionText(match.positions) + " are positions") + "\n";
  }
  if (options.neighbourhood == 0) return text;
  return text + "scores around it" + (match.neighbourhoodValid ? "" : ", some of them beyond the positions searched") +
         ":\n" +
         blockText(match, options.neighbourhood, "  ", [&](const auto& s) { return scoreText(s, match.isComplex); });
}

std::string matchJson(const MatchResult& match, const MatchNames& names, const filters::MatchOptions& options,
                      const std::string& mapHash) {
  std::string json = "{\"metric\": \"" + names.metric + "\", \"mode\": \"" + names.mode + "\", \"search\": \"" +
                     names.search + "\",\n \"location\": [" + std::to_string(match.location[0]) + ", " +
                     std::to_string(match.location[1]) + "], \"window\": " + jsonRegion(match.window) +
                     ", \"score\": " + jsonOf(match.score, match.isComplex) +
                     ",\n \"positions\": " + jsonRegion(match.positions);
  if (options.refine) json += ", \"refined\": " + jsonOf(match.refined);
  if (!match.peaks.empty()) json += ",\n \"matches\": " + jsonOf(jsonPeaks(match, options));
  if (options.region) {
    json += ", \"roi\": " + jsonRegion(*options.region) + ", \"roiValid\": " + jsonOf(match.regionValid);
  }
  if (options.neighbourhood > 0) {
    json += ",\n \"neighbourhood\": " + jsonBlock(match, options.neighbourhood) +
            ", \"neighbourhoodValid\": " + jsonOf(match.neighbourhoodValid);
  }
  if (!mapHash.empty()) json += ",\n \"mapSha256\": " + jsonOf(mapHash);
  return json + "}\n";
}

}  // namespace BP::tool
