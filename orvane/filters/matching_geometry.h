#pragma once

#include <array>
#include <cstdint>

#include "orvane/core/centre.h"
#include "orvane/core/enums.h"
#include "orvane/filters/checks.h"
#include "orvane/filters/template_matcher.h"
#include "orvane/matching/template_matching.h"

namespace BP::filters::detail {

/// The library's enumerator for a metric. Throws `std::invalid_argument` for an unknown number.
AlgorithmModeEnum metricOf(Metric metric);

/// A match in the terms of the library below, after all checks that do not depend on element types.
///
/// A front keeps pointers to the tables, so the object must not move while its front lives.
struct MatchingGeometry {
  /// Each array may have at most `maxElements` elements. Throws `std::invalid_argument`.
  MatchingGeometry(const Extents& image, const Extents& pattern, const MatchOptions& options,
                   std::int64_t maxElements = maxIndex);

  /// Sets the region of interest. Throws `std::invalid_argument` for a bad one, and then changes nothing.
  void setRegion(const std::optional<Rectangle>& region);

  bool hasPositions() const { return positions.size[0] > 0; }
  Rectangle windowAt(const std::array<std::int64_t, 2>& location) const;

  Extents imageExtents;
  Extents patternExtents;
  Rectangle support;    ///< the positions of the mode
  Rectangle positions;  ///< the positions in the region of interest; of size 0 if there are none
  int edge;             ///< the edge of the neighbourhood
  std::array<int, 2> imageDims;
  std::array<int, 2> patternDims;
  std::array<int, 4> roi;  ///< the region of interest, or the positions: start, then size
  OutputModeEnum mode;
  AlgorithmModeEnum metric;
  SearchMethodEnum search;

 private:
  void checkNeighbourhood(std::int64_t size, std::int64_t maxElements) const;
  std::int64_t centre(std::size_t d) const { return centreOf(patternExtents[d]); }
};

}  // namespace BP::filters::detail
