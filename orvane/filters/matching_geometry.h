#pragma once

#include <array>
#include <cstdint>

#include "orvane/core/centre.h"
#include "orvane/core/enums.h"
#include "orvane/filters/checks.h"
#include "orvane/filters/template_matcher.h"
#include "orvane/matching/template_matching.h"

namespace BP::filters::detail {

/// The library's enumerator for a metric; correlation for one whose products are divided by norms, which only some
/// elements take. Throws `std::invalid_argument` for an unknown number.
AlgorithmModeEnum metricOf(Metric metric, bool takesNormalised = false);

/// The intersection of two regions. If it is empty, its width and height are 0.
Rectangle intersection(const Rectangle& a, const Rectangle& b);

/// A match in the terms of the library below, after all checks that do not depend on element types.
///
/// A front keeps pointers to the tables, so the object must not move while its front lives.
struct MatchingGeometry {
  /// Each array may have at most `maxElements` elements. `takesNormalised`: the elements have all metrics. Throws
  /// `std::invalid_argument`.
  MatchingGeometry(const Extents& image, const Extents& pattern, const MatchOptions& options,
                   std::int64_t maxElements = maxIndex, bool takesNormalised = false);

  /// Sets the region of interest. Throws `std::invalid_argument` for a bad one, and then changes nothing.
  void setRegion(const std::optional<Rectangle>& region);

  bool hasPositions() const { return !positions.isEmpty(); }
  /// The region of interest as it was given, or all positions without one.
  Rectangle askedRegion() const { return {roi[0], roi[1], roi[2], roi[3]}; }
  /// Whether a rectangle consists of positions; an empty one does not.
  bool holds(const Rectangle& area) const { return !area.isEmpty() && intersection(area, support) == area; }
  /// Whether the template lies inside the image at a position and at both beside it in dimension d.
  bool hasNeighboursInside(const std::array<std::int64_t, 2>& location, std::size_t d) const;
  Rectangle windowAt(const std::array<std::int64_t, 2>& location) const;

  Extents imageExtents;
  Extents patternExtents;
  Rectangle support;    ///< the positions of the mode
  Rectangle inside;     ///< the positions at which the template lies inside the image; empty if there are none
  Rectangle positions;  ///< the positions in the region of interest; empty if there are none
  int edge;             ///< the edge of the neighbourhood
  std::array<int, 2> imageDims;
  std::array<int, 2> patternDims;
  std::array<int, 4> roi;  ///< the region of interest, or the positions: start, then size
  OutputModeEnum mode;
  AlgorithmModeEnum metric;
  SearchMethodEnum search;
  bool leavesRows;  ///< windows of the search can run over the end of a row

 private:
  void checkNeighbourhood(const MatchOptions& options, std::int64_t maxElements) const;
  std::int64_t centre(std::size_t d) const { return centreOf(patternExtents[d]); }
};

}  // namespace BP::filters::detail
