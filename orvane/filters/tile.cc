#include "orvane/filters/tile.h"

#include <algorithm>
#include <array>
#include <span>

#include "orvane/core/centre.h"
#include "orvane/filters/checks.h"
#include "orvane/filters/convolution_geometry.h"
#include "orvane/input/pad_redirector.h"

namespace BP::filters {

namespace {

using Numbers = std::array<std::int64_t, Extents::maxRank>;

Extents extentsOf(const Numbers& numbers, std::size_t rank) {
  return Extents(std::span<const std::int64_t>(numbers.data(), rank));
}

/// Elements of one dimension, from `first` to before `end`.
struct Stretch {
  std::int64_t first, end;
};

/// The elements, of `count`, that taps at coordinates from `taps.first` to before `taps.end` read.
Stretch elementsUnder(const Stretch& taps, std::int64_t count, PadTypeEnum pad) {
  Stretch part{std::clamp<std::int64_t>(taps.first, 0, count - 1), std::clamp<std::int64_t>(taps.end, 1, count)};
  const auto take = [&](std::int64_t from, std::int64_t to) {
    for (std::int64_t i = from; i < to && pad != PadTypeConstant; ++i) {
      const std::int64_t element = redirectedInto(static_cast<int>(count), pad, static_cast<int>(i));
      part.first = std::min(part.first, element);
      part.end = std::max(part.end, element + 1);
    }
  };
  take(taps.first, std::min<std::int64_t>(taps.end, 0));
  take(std::max(taps.first, count), taps.end);
  return part;
}

}  // namespace

Halo haloOf(const Extents& window) {
  Numbers before{}, after{};
  for (std::size_t d = 0; d < window.rank(); ++d) {
    before[d] = centreOf(window[d]);
    after[d] = window[d] - 1 - before[d];
  }
  return {extentsOf(before, window.rank()), extentsOf(after, window.rank())};
}

TileInput tileInput(const Extents& input, const Extents& window, OutputMode mode, PadRule pad, const Box& tile) {
  const OutputModeEnum coreMode = detail::modeOf(mode);
  const PadTypeEnum corePad = detail::padOf(pad);
  detail::checkedOutputExtents(input, window, coreMode, corePad, Extents::maxRank);
  const Box positions = detail::positionsIn(detail::positionsOf(input, window, coreMode), tile);
  const std::size_t rank = input.rank();
  if (positions.isEmpty())
    return {{extentsOf({}, rank), extentsOf({}, rank)}, {extentsOf({}, rank), extentsOf({}, rank)}};
  const Halo halo = haloOf(window);
  Numbers first{}, extents{}, start{};
  for (std::size_t d = 0; d < rank; ++d) {
    const std::int64_t begin = positions.start[d], end = begin + positions.extents[d];
    const Stretch part = elementsUnder({begin - halo.before[d], end + halo.after[d]}, input[d], corePad);
    first[d] = part.first;
    extents[d] = part.end - part.first;
    start[d] = begin - part.first;
  }
  return {{extentsOf(first, rank), extentsOf(extents, rank)}, {extentsOf(start, rank), positions.extents}};
}

}  // namespace BP::filters
