#pragma once

#include <string>

#include "orvane/filters/template_matcher.h"
#include "tool/array.h"
#include "tool/image.h"
#include "tool/match.h"

namespace BP::tool {

/// A map of scores in grey, and the text that says how it was scaled.
struct ScorePicture {
  Image image;        ///< grey of 8 bits: black for the least level (see `levelsOf`), white for the greatest
  std::string scale;  ///< as in "scores of 0 to 4711 are shown as 0 to 255"
};

ScorePicture scorePicture(const Array& map);

/// The picture, and on its right a heat map of the scores.
///
/// A frame surrounds each window found, and another the region of interest, if any. The heat map is dark for the
/// worst score and bright for the best, which has a ring round it. It is shrunk to the best score of each block,
/// or enlarged, by a whole number, to about a third of the picture's width.
///
/// `match` must have a map. A frame lies outside the area that it surrounds and is cut off at the picture's edge.
Image matchOverlay(const Image& picture, const MatchResult& match, const std::optional<filters::Rectangle>& region);

}  // namespace BP::tool
