#include "orvane/filters/matching_geometry.h"

#include <algorithm>
#include <cmath>
#include <string>

#include "orvane/filters/convolution_geometry.h"

namespace BP::filters::detail {

namespace {

constexpr std::array<Named<AlgorithmModeEnum>, 4> metrics{{{"sad", AlgorithmModeSAD},
                                                           {"ssd", AlgorithmModeSSD},
                                                           {"maxad", AlgorithmModeMaxAD},
                                                           {"product", AlgorithmModeConvolution}}};
constexpr std::array<Named<SearchMethodEnum>, 2> searches{
    {{"exhaustive", SearchMethodExhaustive}, {"three-step", SearchMethodThreeStep}}};

std::string textOf(const char* what, std::int64_t value, std::size_t dimension) {
  return std::string(what) + " " + std::to_string(value) + " in dimension " + std::to_string(dimension);
}

/// Checks a region. The front adds start and size, and subtracts a start from positions, in 32 bits.
void checkRegion(const Rectangle& region) {
  constexpr std::int64_t least = -maxIndex / 2;
  for (std::size_t d = 0; d < 2; ++d) {
    if (region.start[d] < least || region.start[d] > maxIndex) {
      refuse("region", textOf("start", region.start[d], d),
             "allowed are " + std::to_string(least) + " to " + std::to_string(maxIndex));
    }
    const std::int64_t maxSize = maxIndex - std::max(region.start[d], std::int64_t{0});
    if (region.size[d] < 0 || region.size[d] > maxSize) {
      refuse("region", textOf("size", region.size[d], d),
             "with a start of " + std::to_string(region.start[d]) + ", allowed are 0 to " + std::to_string(maxSize));
    }
  }
}

/// The intersection of two regions. If it is empty, its size is 0 in both dimensions.
Rectangle intersection(const Rectangle& a, const Rectangle& b) {
  Rectangle common;
  for (std::size_t d = 0; d < 2; ++d) {
    common.start[d] = std::max(a.start[d], b.start[d]);
    common.size[d] = std::min(a.start[d] + a.size[d], b.start[d] + b.size[d]) - common.start[d];
    if (common.size[d] <= 0) return {b.start, {0, 0}};
  }
  return common;
}

std::array<int, 2> dimsOf(const Extents& extents) {
  return {static_cast<int>(extents[0]), static_cast<int>(extents[1])};
}

}  // namespace

AlgorithmModeEnum metricOf(Metric metric) { return chosen("metric", metric, metrics); }

MatchingGeometry::MatchingGeometry(const Extents& image, const Extents& pattern, const MatchOptions& options,
                                   std::int64_t maxElements)
    : imageExtents(image), patternExtents(pattern) {
  mode = modeOf(options.mode);
  metric = metricOf(options.metric);
  search = chosen("search", options.search, searches);
  // If an inside sector does not start at the first position, a three-step search can visit positions beyond it.
  const std::int64_t maxForSteps = (maxElements + 1) / 4;
  const bool leavesSectors = search == SearchMethodThreeStep && mode != OutputModeValid;
  if (image.rank() != 2) refuse("image", "rank " + std::to_string(image.rank()), "it must be 2");
  checkExtents("image", image, leavesSectors ? maxForSteps : maxElements);
  const Extents outputs = checkedOutputExtents(image, pattern, mode, PadTypeReplicate, 2, maxElements, "template");
  checkNeighbourhood(options.neighbourhood, maxElements);
  if (!options.best && !options.map) refuse("best", "false", "it must be true unless map is");
  if (!options.best && options.neighbourhood > 0) {
    refuse("neighbourhood", std::to_string(options.neighbourhood), "without best it must be 0");
  }
  edge = static_cast<int>(options.neighbourhood);
  support.size = {outputs[0], outputs[1]};
  for (std::size_t d = 0; d < 2; ++d) {
    const std::int64_t beyond = mode == OutputModeFull ? pattern[d] - 1 : 0;
    support.start[d] = mode == OutputModeSame ? 0 : centre(d) - beyond;
  }
  imageDims = dimsOf(image);
  patternDims = dimsOf(pattern);
  setRegion(options.region);
}

void MatchingGeometry::checkNeighbourhood(std::int64_t size, std::int64_t maxElements) const {
  auto maxEdge = static_cast<std::int64_t>(std::sqrt(static_cast<double>(maxElements)));
  for (std::size_t d = 0; d < 2; ++d) {
    maxEdge = std::min(maxEdge, (maxIndex - imageExtents[d] - 2 * patternExtents[d]) / 2);
  }
  if (size >= 0 && size <= maxEdge) return;
  refuse("neighbourhood", std::to_string(size), "allowed are 0 (none) to " + std::to_string(maxEdge));
}

void MatchingGeometry::setRegion(const std::optional<Rectangle>& region) {
  if (region) checkRegion(*region);
  positions = region ? intersection(support, *region) : support;
  const Rectangle& asked = region ? *region : support;
  for (std::size_t d = 0; d < 2; ++d) {
    roi[d] = static_cast<int>(asked.start[d]);
    roi[2 + d] = static_cast<int>(asked.size[d]);
  }
}

Rectangle MatchingGeometry::windowAt(const std::array<std::int64_t, 2>& location) const {
  return {{location[0] - centre(0), location[1] - centre(1)}, {patternExtents[0], patternExtents[1]}};
}

}  // namespace BP::filters::detail
