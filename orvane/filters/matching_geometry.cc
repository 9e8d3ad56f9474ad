#include "orvane/filters/matching_geometry.h"

#include <algorithm>
#include <cmath>
#include <span>
#include <string>

#include "orvane/filters/convolution_geometry.h"

namespace BP::filters::detail {

namespace {

constexpr std::array<Named<AlgorithmModeEnum>, 6> metrics{{{"sad", AlgorithmModeSAD},
                                                           {"ssd", AlgorithmModeSSD},
                                                           {"maxad", AlgorithmModeMaxAD},
                                                           {"product", AlgorithmModeConvolution},
                                                           {"cosine", AlgorithmModeCorrelation},
                                                           {"correlation coefficient", AlgorithmModeCorrelation}}};
constexpr std::size_t plainMetrics = 4;
constexpr std::array<Named<SearchMethodEnum>, 2> searches{
    {{"exhaustive", SearchMethodExhaustive}, {"three-step", SearchMethodThreeStep}}};

/// What a rectangle covers in one dimension.
struct Span {
  std::int64_t start;
  std::int64_t size;
};

std::array<Span, 2> spansOf(const Rectangle& r) { return {{{r.x, r.width}, {r.y, r.height}}}; }
Rectangle rectangleOf(const Span& across, const Span& down) {
  return {across.start, down.start, across.size, down.size};
}

/// Checks a region. The front adds start and size, and subtracts a start from positions, in 32 bits.
void checkRegion(const Rectangle& region) {
  constexpr std::int64_t least = -maxIndex / 2;
  constexpr std::array<std::array<const char*, 2>, 2> names{{{"x", "width"}, {"y", "height"}}};
  const auto spans = spansOf(region);
  for (std::size_t d = 0; d < 2; ++d) {
    const auto [start, size] = spans[d];
    const std::string startText = std::string(names[d][0]) + " of " + std::to_string(start);
    if (start < least || start > maxIndex) {
      refuse("region", startText, "allowed are " + std::to_string(least) + " to " + std::to_string(maxIndex));
    }
    const std::int64_t maxSize = maxIndex - std::max(start, std::int64_t{0});
    if (size < 0 || size > maxSize) {
      refuse("region", std::string(names[d][1]) + " of " + std::to_string(size),
             "with " + startText + ", allowed are 0 to " + std::to_string(maxSize));
    }
  }
}

std::array<int, 2> dimsOf(const Extents& extents) {
  return {static_cast<int>(extents[0]), static_cast<int>(extents[1])};
}

}  // namespace

AlgorithmModeEnum metricOf(Metric metric, bool takesNormalised) {
  return chosen("metric", metric, std::span(metrics).first(takesNormalised ? metrics.size() : plainMetrics));
}

Rectangle intersection(const Rectangle& a, const Rectangle& b) {
  std::array<Span, 2> common{};
  for (std::size_t d = 0; d < 2; ++d) {
    const Span first = spansOf(a)[d], second = spansOf(b)[d];
    const std::int64_t start = std::max(first.start, second.start);
    common[d] = {start, std::min(first.start + first.size, second.start + second.size) - start};
    if (common[d].size <= 0) return {b.x, b.y, 0, 0};
  }
  return rectangleOf(common[0], common[1]);
}

MatchingGeometry::MatchingGeometry(const Extents& image, const Extents& pattern, const MatchOptions& options,
                                   std::int64_t maxElements, bool takesNormalised)
    : imageExtents(image), patternExtents(pattern) {
  mode = modeOf(options.mode);
  metric = metricOf(options.metric, takesNormalised);
  search = chosen("search", options.search, searches);
  if (greatestIsBest(options.metric) && search == SearchMethodThreeStep) {
    refuse("search", "1 (three-step)", "with this metric only 0 (exhaustive) is allowed");
  }
  // If an inside sector does not start at the first position, a three-step search can visit positions beyond it.
  const std::int64_t maxForSteps = (maxElements + 1) / 4;
  leavesRows = search == SearchMethodThreeStep && mode != OutputModeValid;
  if (image.rank() != 2) refuse("image", "rank " + std::to_string(image.rank()), "it must be 2");
  checkExtents("image", image, leavesRows ? maxForSteps : maxElements);
  const Extents outputs = checkedOutputExtents(image, pattern, mode, PadTypeReplicate, 2, maxElements, "template");
  checkNeighbourhood(options, maxElements);
  if (!options.best && !options.map) refuse("best", "false", "it must be true unless map is");
  if (!options.best && options.neighbourhood > 0) {
    refuse("neighbourhood", std::to_string(options.neighbourhood), "without best it must be 0");
  }
  edge = static_cast<int>(options.neighbourhood);
  const auto spanOf = [&](std::size_t d) {
    const std::int64_t beyond = mode == OutputModeFull ? pattern[d] - 1 : 0;
    return Span{mode == OutputModeSame ? 0 : centre(d) - beyond, outputs[d]};
  };
  support = rectangleOf(spanOf(0), spanOf(1));
  const auto insideOf = [&](std::size_t d) {
    return Span{centre(d), std::max(image[d] - pattern[d] + 1, std::int64_t{0})};
  };
  inside = rectangleOf(insideOf(0), insideOf(1));
  imageDims = dimsOf(image);
  patternDims = dimsOf(pattern);
  setRegion(options.region);
}

void MatchingGeometry::checkNeighbourhood(const MatchOptions& options, std::int64_t maxElements) const {
  const std::int64_t size = options.neighbourhood;
  auto maxEdge = static_cast<std::int64_t>(std::sqrt(static_cast<double>(maxElements)));
  for (std::size_t d = 0; d < 2; ++d) {
    maxEdge = std::min(maxEdge, (maxIndex - imageExtents[d] - 2 * patternExtents[d]) / 2);
  }
  if (size < 0 || size > maxEdge) {
    refuse("neighbourhood", std::to_string(size), "allowed are 0 (none) to " + std::to_string(maxEdge));
  }
  if (!options.refine) return;
  if (!options.best) refuse("refine", "true", "without best it must be false");
  if (size == 1 || size == 2) refuse("neighbourhood", std::to_string(size), "to refine, it must be 0 or at least 3");
}

void MatchingGeometry::setRegion(const std::optional<Rectangle>& region) {
  if (region) checkRegion(*region);
  positions = region ? intersection(support, *region) : support;
  const auto asked = spansOf(region ? *region : support);
  for (std::size_t d = 0; d < 2; ++d) {
    roi[d] = static_cast<int>(asked[d].start);
    roi[2 + d] = static_cast<int>(asked[d].size);
  }
}

bool MatchingGeometry::hasNeighboursInside(const std::array<std::int64_t, 2>& location, std::size_t d) const {
  const Rectangle area =
      d == 0 ? Rectangle{location[0] - 1, location[1], 3, 1} : Rectangle{location[0], location[1] - 1, 1, 3};
  return intersection(area, inside) == area;
}

Rectangle MatchingGeometry::windowAt(const std::array<std::int64_t, 2>& location) const {
  return {location[0] - centre(0), location[1] - centre(1), patternExtents[0], patternExtents[1]};
}

}  // namespace BP::filters::detail
