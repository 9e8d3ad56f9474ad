#pragma once

#include "orvane/filters/box.h"
#include "orvane/filters/extents.h"
#include "orvane/filters/options.h"
#include "orvane/platform/export.h"

/// Filtering an array in tiles, which can lie in other memory, in files, or on other machines.
///
///     input   +--------------------+   The outputs of a tile depend on the elements under its windows: those of the
///             |   +- - - - - -+    |   tile and of a *halo* around it. Where these reach beyond an edge of the input,
///             |     +------+       |   the pad rule says which elements they stand for.
///             |   | | tile | |halo |
///             |     +------+       |   The same job over the part of the input that has all of them gives the outputs
///             |   +- - - - - -+    |   of the tile bit for bit. Its edges within the input are never reached, and
///             +--------------------+   those that it shares with the input are padded alike.
namespace BP::filters {

/// How many elements before and after a region of positions its outputs depend on, in each dimension.
struct Halo {
  Extents before;
  Extents after;
  bool operator==(const Halo&) const = default;
};

/// The halo of windows of these extents: (e - 1) / 2 before, rounded down, and e / 2 after.
ORVANE_API Halo haloOf(const Extents& window);
/// The halo of a job, such as a `Convolution`.
template <class Job>
Halo haloOf(const Job& job) {
  return haloOf(job.windowExtents());
}

/// What a tile needs of an input.
struct TileInput {
  Box part;    ///< the elements of the input to read
  Box region;  ///< the tile's positions, counted from the first of these elements: the region of the tile's job
};

/// The part of an input that the outputs of a tile need. `tile` is a box of positions, of which those count that the
/// mode has. If there are none, both boxes are empty.
///
/// Make the same job, with the same options, for an input of the part's extents and with the region; run it over the
/// part. The outputs are those of the whole at the tile's positions. Tiles may be smaller than the halo, may overlap
/// and may come in any order.
///
/// With `PadRule::circular` a tile whose windows cross an edge needs all elements of that dimension. With the other
/// rules it needs none that is farther from the tile than the halo and its image beyond the edge.
///
/// Throws `std::invalid_argument` for extents that do not fit each other, as a job would.
ORVANE_API TileInput tileInput(const Extents& input, const Extents& window, OutputMode mode, PadRule pad,
                               const Box& tile);

}  // namespace BP::filters
