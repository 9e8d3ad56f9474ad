#include "orvane/filters/checks.h"

#include <algorithm>
#include <charconv>
#include <stdexcept>

namespace BP::filters::detail {

void refuse(std::string_view argument, const std::string& value, const std::string& allowed) {
  throw std::invalid_argument(std::string(argument) + ": " + value + "; " + allowed);
}

std::string textOf(double value) {
  std::array<char, 32> text{};
  return {text.data(), std::to_chars(text.data(), text.data() + text.size(), value).ptr};
}

void checkExtents(std::string_view argument, const Extents& extents, std::int64_t maxElements, std::size_t maxRank) {
  if (extents.rank() < 1 || extents.rank() > maxRank) {
    refuse(argument, "rank " + std::to_string(extents.rank()),
           maxRank == 2 ? "allowed are 1 and 2" : "allowed are 1 to " + std::to_string(maxRank));
  }
  for (std::size_t d = 0; d < extents.rank(); ++d) {
    if (extents[d] >= 1 && extents[d] <= maxIndex) continue;
    refuse(argument, "extent " + std::to_string(extents[d]) + " in dimension " + std::to_string(d),
           "allowed are 1 to " + std::to_string(maxIndex));
  }
  if (elementCount(extents) > maxElements) {
    refuse(argument, toText(extents) + " are " + std::to_string(elementCount(extents)) + " elements",
           "at most " + std::to_string(maxElements) + " are allowed");
  }
}

void checkArray(std::string_view argument, const void* data, const Layout& layout, const Extents& expected,
                std::int64_t maxSpan) {
  const Extents& extents = layout.extents();
  if (extents != expected) refuse(argument, "extents " + toText(extents), "they must be " + toText(expected));
  if (data == nullptr && elementCount(expected) > 0)
    refuse(argument, "null", "it must point to " + toText(expected) + " elements");
  if (layout.span() <= maxSpan) return;
  refuse(argument, std::to_string(layout.span()) + " elements from the first to the last",
         "with a pitch at most " + std::to_string(maxSpan) + " are allowed");
}

namespace {

/// An array of lines: bytes of a line, bytes from one line to the next, number of lines.
struct Lines {
  std::int64_t width, pitch, count;
};

/// The lines of an array of one or two dimensions, or all bytes from the first to the last as one line.
Lines linesOf(const Memory& memory) {
  const auto bytes = static_cast<std::int64_t>(memory.elementBytes);
  const Layout& layout = memory.layout;
  if (layout.extents().rank() != 2 || layout.extents()[1] < 2) return {layout.span() * bytes, 0, 1};
  return {layout.extents()[0] * bytes, layout.pitch(1) * bytes, layout.extents()[1]};
}

/// a / b rounded down, for b above 0.
std::int64_t floorOf(std::int64_t a, std::int64_t b) { return a / b - (a % b < 0 ? 1 : 0); }

/// Whether two arrays of lines of one pitch share a byte. The second starts `offset` bytes after the first.
///
/// Line i of the first and line k of the second do if -width of the second < offset - (i - k) pitch < width of the
/// first.
bool linesMeet(const Lines& first, const Lines& second, std::int64_t offset) {
  const std::int64_t least = std::max(floorOf(offset - first.width, first.pitch) + 1, 1 - second.count);
  const std::int64_t most = std::min(-floorOf(-offset - second.width, first.pitch) - 1, first.count - 1);
  return least <= most;
}

}  // namespace

void checkDisjoint(const Memory& input, const Memory& output) {
  const auto inputStart = reinterpret_cast<std::uintptr_t>(input.data);
  const auto outputStart = reinterpret_cast<std::uintptr_t>(output.data);
  const auto spanOf = [](const Memory& memory) {
    return static_cast<std::uintptr_t>(memory.layout.span()) * memory.elementBytes;
  };
  // The distance of the starts cannot overflow, but an end could.
  const bool spansMeet =
      inputStart <= outputStart ? outputStart - inputStart < spanOf(input) : inputStart - outputStart < spanOf(output);
  if (!spansMeet) return;
  const Lines from = linesOf(input), to = linesOf(output);
  const auto offset = static_cast<std::int64_t>(outputStart - inputStart);
  if (from.pitch > 0 && from.pitch == to.pitch && !linesMeet(from, to, offset)) return;
  refuse("output", "overlaps the input", "the two must not share memory, as outputs would overwrite inputs of others");
}

void LineStrides::set(const Layout& layout) {
  hasGaps = !layout.isDense();
  std::int64_t lower = 1;  // elements from first to last in the dimensions before
  for (std::size_t d = 0; d < strides.size(); ++d) {
    const std::int64_t extent = d < layout.extents().rank() ? layout.extents()[d] : 1;
    const std::int64_t stride = extent > 1 ? layout.pitch(d) : lower;
    strides[d] = static_cast<int>(stride);
    lower += (extent - 1) * stride;
  }
}

}  // namespace BP::filters::detail
