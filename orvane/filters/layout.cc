#include "orvane/filters/layout.h"

#include <algorithm>
#include <limits>
#include <stdexcept>
#include <string>

namespace BP::filters {

namespace {

constexpr std::int64_t most = std::numeric_limits<std::int64_t>::max();

/// a + (n - 1) * b for positive numbers, at most the greatest one.
std::int64_t grown(std::int64_t a, std::int64_t n, std::int64_t b) {
  if (n < 2) return a;
  return b > (most - a) / (n - 1) ? most : a + (n - 1) * b;
}

/// a * b for numbers of 0 or more, at most the greatest one.
std::int64_t times(std::int64_t a, std::int64_t b) { return a != 0 && b > most / a ? most : a * b; }

[[noreturn]] void refuse(const std::string& what) { throw std::invalid_argument(what); }

}  // namespace

Pitch::Pitch(std::initializer_list<Extent> pitches) : count(pitches.size()) {
  if (count > values.size()) {
    refuse("pitch: " + std::to_string(count) + " numbers; at most " + std::to_string(values.size()) + " are allowed");
  }
  std::ranges::transform(pitches, values.begin(), [](const Extent& pitch) { return pitch.value(); });
}

Layout::Layout(const Extents& extents) : Layout(extents, Pitch({})) {}

Layout::Layout(const Extents& extents, const Pitch& pitch) : size(extents) {
  if (pitch.size() > 0 && pitch.size() >= size.rank()) {
    refuse("pitch: " + std::to_string(pitch.size()) + " numbers for extents " + toText(size) + "; allowed are 0 to " +
           std::to_string(size.rank() == 0 ? 0 : size.rank() - 1));
  }
  for (std::size_t d = 0; d < size.rank(); ++d) {
    strides[d] = d == 0              ? 1
                 : d <= pitch.size() ? pitch[d - 1]
                                     : times(strides[d - 1], std::max<std::int64_t>(size[d - 1], 0));
  }
  if (pitch.size() > 0) checkPitches();
}

Layout Layout::withStrides(const Extents& extents, const std::array<std::int64_t, Extents::maxRank>& strides) {
  Layout layout(extents);
  std::copy_n(strides.begin(), extents.rank(), layout.strides.begin());
  layout.checkPitches();
  return layout;
}

void Layout::checkPitches() const {
  std::int64_t lower = size.rank() > 0 ? size[0] : 1;  // elements from first to last in the dimensions before
  for (std::size_t d = 1; d < size.rank(); ++d) {
    if (size[d] > 1 && strides[d] < lower) {
      refuse("pitch: " + std::to_string(strides[d]) + " in dimension " + std::to_string(d) + "; for extents " +
             toText(size) + " at least " + std::to_string(lower) + " is needed");
    }
    lower = grown(lower, size[d], strides[d]);
  }
}

std::int64_t Layout::span() const {
  if (elementCount(size) == 0) return 0;
  std::int64_t last = 1;
  for (std::size_t d = 0; d < size.rank(); ++d) last = grown(last, size[d], strides[d]);
  return last;
}

bool Layout::isDense() const {
  std::int64_t dense = 1;
  for (std::size_t d = 0; d < size.rank(); ++d) {
    if (size[d] > 1 && strides[d] != dense) return false;
    dense = times(dense, std::max<std::int64_t>(size[d], 0));
  }
  return true;
}

std::int64_t Layout::offsetOf(const Extents& start) const {
  std::int64_t offset = 0;
  for (std::size_t d = 0; d < start.rank(); ++d) offset += start[d] * strides[d];
  return offset;
}

Layout Layout::part(const Extents& start, const Extents& extents) const {
  const std::string text = "part: start " + toText(start) + ", extents " + toText(extents) + "; ";
  if (start.rank() != size.rank() || extents.rank() != size.rank()) {
    refuse(text + "both need rank " + std::to_string(size.rank()));
  }
  for (std::size_t d = 0; d < size.rank(); ++d) {
    if (start[d] < 0 || extents[d] < 0 || start[d] > size[d] || extents[d] > size[d] - start[d]) {
      refuse(text + "it must lie within extents " + toText(size));
    }
  }
  Layout part = *this;
  part.size = extents;
  return part;
}

}  // namespace BP::filters
