#include "tool/bands.h"

#include <algorithm>
#include <stdexcept>
#include <string>

#include "tool/text.h"

namespace BP::tool {

namespace {

using filters::OutputMode;
using filters::PadRule;

constexpr std::size_t parts = 2;  // one half of the memory is for readers, writers and the program itself

std::int64_t rowsIn(std::size_t memory, std::size_t rowBytes) {
  return static_cast<std::int64_t>(memory / (parts * rowBytes));
}

}  // namespace

Reach reachOf(const Window& window) {
  const std::int64_t span = window.height - 1, lead = span / 2;
  switch (window.mode) {
    case OutputMode::valid: return {0, span};
    case OutputMode::same: return {lead, span - lead};
    case OutputMode::full: return {span, 0};
  }
  throw std::logic_error("unknown output mode");
}

bool needsBothEnds(const Window& window) {
  return window.pad == PadRule::circular && window.mode != OutputMode::valid && window.height > 1;
}

std::int64_t outputExtent(std::int64_t extent, int window, OutputMode mode) {
  switch (mode) {
    case OutputMode::valid: return std::max<std::int64_t>(0, extent - window + 1);
    case OutputMode::same: return extent;
    case OutputMode::full: return extent + window - 1;
  }
  throw std::logic_error("unknown output mode");
}

std::vector<Band> bandsOf(std::int64_t height, const Window& window, std::int64_t rows, bool isWrapped) {
  const std::int64_t outHeight = outputExtent(height, window.height, window.mode);
  const Reach reach = reachOf(window);
  const std::int64_t mirrored = window.height;  // rows at an edge that windows beyond it can read
  std::vector<Band> bands;
  for (std::int64_t first = 0; first < outHeight; first += rows) {
    const std::int64_t count = std::min(rows, outHeight - first);
    std::int64_t from = first - reach.above, to = first + count + reach.below;
    if (!isWrapped) {
      if (to > height) from = std::min(from, height - mirrored);
      if (from < 0) to = std::max(to, mirrored);
      from = std::clamp<std::int64_t>(from, 0, height - 1);
      to = std::clamp<std::int64_t>(to, from + 1, height);
    }
    bands.push_back({first, count, from, to - from});
  }
  return bands;
}

std::int64_t bandRows(std::int64_t height, const Window& window, std::size_t rowBytes, std::size_t memory) {
  const std::int64_t surroundings = 2 * window.height;
  checkMemory(std::min(height, surroundings + 1), rowBytes, memory, "this window");
  return std::max<std::int64_t>(1, rowsIn(memory, rowBytes) - surroundings);
}

void checkMemory(std::int64_t rows, std::size_t rowBytes, std::size_t memory, const std::string& what) {
  if (rows <= rowsIn(memory, rowBytes)) return;
  constexpr std::size_t mebi = std::size_t{1} << 20;
  throw std::runtime_error("--memory " + std::to_string(memory / mebi) + ": a picture with rows of this length and " +
                           what + " needs at least " +
                           std::to_string(static_cast<std::size_t>(rows) * parts * rowBytes / mebi + 1) + " MiB");
}

std::int64_t padIndex(std::int64_t position, std::int64_t extent, PadRule pad) {
  if (position >= 0 && position < extent) return position;
  const auto within = [position](std::int64_t period) { return (position % period + period) % period; };
  switch (pad) {
    case PadRule::constant: return -1;
    case PadRule::replicate: return position < 0 ? 0 : extent - 1;
    case PadRule::circular: return within(extent);
    case PadRule::symmetric: return std::min(within(2 * extent), 2 * extent - 1 - within(2 * extent));
    case PadRule::mirror: {
      if (extent == 1) return 0;
      const std::int64_t period = 2 * (extent - 1);
      return std::min(within(period), period - within(period));
    }
  }
  throw std::logic_error("unknown pad rule");
}

}  // namespace BP::tool
