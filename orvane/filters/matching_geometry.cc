#include "orvane/filters/matching_geometry.h"

#include <algorithm>
#include <string>

#include "orvane/filters/checks.h"

namespace BP::filters::detail {

namespace {

constexpr std::array<Choice<OutputModeEnum>, 3> modes{
    {{"valid", OutputModeValid}, {"same", OutputModeSame}, {"full", OutputModeFull}}};
constexpr std::array<Choice<AlgorithmModeEnum>, 4> metrics{{{"sad", AlgorithmModeSAD},
                                                            {"ssd", AlgorithmModeSSD},
                                                            {"maxad", AlgorithmModeMaxAD},
                                                            {"product", AlgorithmModeConvolution}}};
constexpr std::array<Choice<SearchMethodEnum>, 2> searches{
    {{"exhaustive", SearchMethodExhaustive}, {"three-step", SearchMethodThreeStep}}};

/// Of a square block that still has no more elements than an index reaches.
constexpr std::int64_t greatestEdge = 46340;

void checkRank(std::string_view argument, const Extents& extents) {
  if (extents.rank() != 2) refuse(argument, "rank " + std::to_string(extents.rank()), "it must be 2");
}

std::string textOf(const char* what, std::int64_t value, std::size_t dimension) {
  return std::string(what) + " " + std::to_string(value) + " in dimension " + std::to_string(dimension);
}

/// The front adds start and size in 32 bits, and subtracts a start from positions.
void checkRegion(const Region& region) {
  constexpr std::int64_t least = -greatestIndex / 2;
  for (std::size_t d = 0; d < 2; ++d) {
    if (region.start[d] < least || region.start[d] > greatestIndex) {
      refuse("region", textOf("start", region.start[d], d),
             "allowed are " + std::to_string(least) + " to " + std::to_string(greatestIndex));
    }
    const std::int64_t most = greatestIndex - std::max(region.start[d], std::int64_t{0});
    if (region.size[d] < 0 || region.size[d] > most) {
      refuse("region", textOf("size", region.size[d], d),
             "with a start of " + std::to_string(region.start[d]) + ", allowed are 0 to " + std::to_string(most));
    }
  }
}

/// What two regions have in common: of size 0, in both dimensions, if that is nothing.
Region intersection(const Region& a, const Region& b) {
  Region common;
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

MatchingGeometry::MatchingGeometry(const Extents& image, const Extents& pattern, const MatchOptions& options)
    : imageExtents(image), patternExtents(pattern) {
  mode = chosen("mode", options.mode, modes);
  metric = chosen("metric", options.metric, metrics);
  search = chosen("search", options.search, searches);
  checkExtents("image", image);
  checkRank("image", image);
  checkExtents("template", pattern);
  checkRank("template", pattern);
  checkPattern();
  checkNeighbourhood(options.neighbourhood);
  if (!options.best && !options.map) refuse("best", "false", "it must be true unless map is");
  if (!options.best && options.neighbourhood > 0) {
    refuse("neighbourhood", std::to_string(options.neighbourhood), "without best it must be 0");
  }
  edge = static_cast<int>(options.neighbourhood);
  for (std::size_t d = 0; d < 2; ++d) {
    const std::int64_t u = image[d], h = pattern[d];
    support.start[d] = mode == OutputModeSame ? 0 : mode == OutputModeValid ? centre(d) : centre(d) - h + 1;
    support.size[d] = mode == OutputModeSame ? u : mode == OutputModeValid ? u - h + 1 : u + h - 1;
  }
  checkExtents("map", {support.size[0], support.size[1]});
  imageDims = dimsOf(image);
  patternDims = dimsOf(pattern);
  setRegion(options.region);
}

/// Checks that the template fits, and that coordinates stay in 32 bits: windows go over each edge by up to its extents.
void MatchingGeometry::checkPattern() const {
  for (std::size_t d = 0; d < 2; ++d) {
    const std::int64_t u = imageExtents[d], h = patternExtents[d];
    if (mode == OutputModeValid && h > u) {
      refuse("template", textOf("extent", h, d),
             "with mode valid and an image of " + filters::toText(imageExtents) + ", allowed are 1 to " +
                 std::to_string(u));
    }
    if (u + 2 * h > greatestIndex) {
      refuse("template", textOf("extent", h, d),
             "for an image extent of " + std::to_string(u) + ", at most " + std::to_string((greatestIndex - u) / 2) +
                 " is allowed");
    }
  }
  // A three-step search can look at positions beyond an inside sector that does not start at the first position.
  constexpr std::int64_t mostForSteps = std::int64_t{1} << 29;
  if (search == SearchMethodThreeStep && mode != OutputModeValid) checkExtents("image", imageExtents, mostForSteps);
}

void MatchingGeometry::checkNeighbourhood(std::int64_t size) const {
  std::int64_t most = greatestEdge;
  for (std::size_t d = 0; d < 2; ++d) {
    most = std::min(most, (greatestIndex - imageExtents[d] - 2 * patternExtents[d]) / 2);
  }
  if (size >= 0 && size <= most) return;
  refuse("neighbourhood", std::to_string(size), "allowed are 0 (none) to " + std::to_string(most));
}

void MatchingGeometry::setRegion(const std::optional<Region>& region) {
  if (region) checkRegion(*region);
  positions = region ? intersection(support, *region) : support;
  const Region& asked = region ? *region : support;
  for (std::size_t d = 0; d < 2; ++d) {
    roi[d] = static_cast<int>(asked.start[d]);
    roi[2 + d] = static_cast<int>(asked.size[d]);
  }
}

Region MatchingGeometry::windowAt(const std::array<std::int64_t, 2>& location) const {
  return {{location[0] - centre(0), location[1] - centre(1)}, {patternExtents[0], patternExtents[1]}};
}

}  // namespace BP::filters::detail
