#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <memory>
#include <optional>

#include "orvane/filters/job.h"
#include "orvane/filters/matching_geometry.h"
#include "orvane/filters/template_matcher.h"

namespace BP::filters::detail {

/// One match with the memory that its fronts use: extents, template, region of interest, results. One front does the
/// search, and another one makes the map.
///
/// Elements is a policy for the element types, and it holds the host. It defines the types of views, of the template's
/// copy, of scores and results, and of the front. It checks and copies arguments, and makes fronts, scores and
/// *aliases*. An alias is the array with which a front is set up, or null if the front gets plain pointers in each run.
template <class Elements>
class MatchJob {
 public:
  using ImageView = typename Elements::ImageView;
  using PatternView = typename Elements::PatternView;
  using Scores = typename Elements::Scores;
  using Result = typename Elements::Result;

  /// `more` are further arguments for the constructor of Elements.
  template <class... More>
  MatchJob(const PatternView& newPattern, const Extents& image, const MatchOptions& options, const More&... more)
      : elements(newPattern, options.metric, more...),
        geometry(image, newPattern.extents(), options, elements.maxElements()),
        pattern(elements.copyOf(newPattern, geometry.patternExtents)) {
    if (options.best) searcher = makeFront(TMModeBestMatchNeighborhood);
    if (options.map) mapper = makeFront(TMModeMetric);
    throwMessages(elements.getHost());
  }

  Result run(const ImageView& image) {
    elements.checkImage(image, geometry.imageExtents);
    Result match;
    match.positions = geometry.positions;
    if (geometry.edge > 0) match.neighbourhood = elements.makeScores({geometry.edge, geometry.edge});
    if (!geometry.hasPositions()) return match;
    if (mapper) match.map = elements.makeScores({match.positions.size[0], match.positions.size[1]});
    if (searcher) findBest(image, match);
    if (mapper) invoke(*mapper, image, &match.map, nullptr);
    match.regionValid = regionIsValid;
    return match;
  }

  void setTemplate(const PatternView& newPattern) { pattern = elements.copyOf(newPattern, geometry.patternExtents); }
  void setRegion(const std::optional<Rectangle>& region) { geometry.setRegion(region); }
  const Rectangle& positions() const { return geometry.positions; }

  const Elements& getElements() const { return elements; }

 private:
  using Front = typename Elements::Front;

  /// The edge of the block of scores that the search returns: the neighbourhood, or 1 for the best score alone.
  int blockEdge() const { return std::max(geometry.edge, 1); }

  std::unique_ptr<Front> makeFront(TMModeEnum tmMode) {
    constexpr bool isVarSize = false, roiEnabled = true, roiValidEnabled = true;
    // Scores never read a pad value, so this pad needs none.
    auto front = elements.makeFront(elements.getHost().getAdaptor(), 2, geometry.patternDims.data(), 2,
                                    geometry.imageDims.data(), PadTypeReplicate, geometry.mode, geometry.metric, tmMode,
                                    isVarSize, roiEnabled, roiValidEnabled, geometry.search);
    elements.getHost().provideWorkVectors(front->getAllocator());
    front->setup(elements.patternAlias(), elements.imageAlias(), geometry.roi.data(), elements.scoresAlias(),
                 location.data(), blockEdge(), elements.scoresAlias(), &blockIsValid, &regionIsValid, nullptr, false);
    return front;
  }

  static void* dataOf(Scores* scores) { return scores == nullptr ? nullptr : scores->data(); }

  void invoke(Front& front, const ImageView& image, Scores* map, Scores* block) {
    // The front only reads the image.
    front.updateInputPointers(const_cast<void*>(static_cast<const void*>(image.data())), pattern.data());
    front.updateOutputPointers(dataOf(map), nullptr, dataOf(block), nullptr, nullptr);
    runFront(front, elements.getHost());
    if constexpr (requires { elements.gather(front); }) elements.gather(front);
  }

  void findBest(const ImageView& image, Result& match) {
    Scores single;
    if (geometry.edge == 0) single = elements.makeScores({1, 1});
    Scores& block = geometry.edge > 0 ? match.neighbourhood : single;
    invoke(*searcher, image, nullptr, &block);
    match.found = true;
    match.location = {location[0], location[1]};
    match.window = geometry.windowAt(match.location);
    const int middle = centreOf(blockEdge());
    match.score = elements.scoreAt(block, middle + blockEdge() * middle);
    match.neighbourhoodValid = geometry.edge > 0 && blockIsValid;
  }

  Elements elements;
  MatchingGeometry geometry;
  typename Elements::Pattern pattern;
  std::array<int, 2> location{};
  bool blockIsValid = false;
  bool regionIsValid = false;
  std::unique_ptr<Front> searcher;  // the fronts are destroyed before the memory that they use
  std::unique_ptr<Front> mapper;
};

}  // namespace BP::filters::detail
