#pragma once

#include <cstddef>
#include <cstdint>
#include <tuple>
#include <vector>

#include "orvane/algorithm/fixed_products.h"
#include "orvane/algorithm/fixed_sums.h"
#include "orvane/exec/fixed_output.h"
#include "orvane/exec/line_walk.h"
#include "orvane/input/line_reader.h"
#include "orvane/lanes/fixed_sums.h"
#include "orvane/plan/block.h"
#include "orvane/plan/sector.h"
#include "orvane/platform/export.h"
#include "orvane/platform/karn_fixpt_3.h"

namespace BP {

/// Has vector lanes compute the fixed-point sums of a sector, in place of `LineWalk`.
///
///     sector   +--------+--------+    strips along dimension 0, each walked in tiles of 24 rows;
///              | tile   |        |    a line is read once for all tiles of its strip, as integers of the lanes,
///              +--------+        |    and kept in a ring as long as a tile needs it
///              | tile   | strip  |
///              +--------+--------+
///
/// Outputs and all counts of casts are those of the plain walk: of products, sums and outputs. Products of a constant
/// pad's value are not counted among those of the input.
class ORVANE_API FixedSumWalk {
 public:
  using Fixpt = KarnDSPFixpt::Fixpt;

  explicit FixedSumWalk(FixedSums* fixedSums) : sums(fixedSums) {}

  /// Makes room for filters of the present extents, in two dimensions.
  void resize(const Block& filter, const Block& input, int walkedRank);
  /// The array through which each sum passes before it is cast into the output; it counts that.
  void setScratch(Fixpt* scratchOutput) { scratch = scratchOutput; }

  /// Computes all outputs of a sector; `edges` is the sector again, or null for an inside one. Returns false and does
  /// nothing if lanes are not in use or do not take the types or the filter.
  bool run(const LineSource<Fixpt>& source, const Sector& sector, const OuterSector* edges, const Block& filter,
           const Block& input, const Block& output, const LineTarget<Fixpt>& target);

 private:
  static constexpr int stripWidth = 512;
  static constexpr int byteStripWidth = 1024;
  static constexpr int tileRows = 24;
  static constexpr int wordTileRows = 8;  ///< so that sums of dot products stay in the nearest cache

  /// Where the outputs of a sector lie and what they read.
  struct Area {
    int width, height;
    int column, row;        ///< of the input, of the first output's first tap
    int outColumn, outRow;  ///< of the output
    int outPitch;
  };
  /// The outputs of a tile: their extents, the first one's element and its first tap's place in the input.
  struct Tile {
    int width, rows;
    std::ptrdiff_t first;
    int column, row;
    int line;  ///< of the strip
  };

  /// Lines of input as integers L: line k has place k modulo their number. It lies in the input if it is the same
  /// there.
  template <class L>
  struct Ring {
    std::vector<L> values;
    std::vector<const L*> places;
    std::vector<const L*> pointers;  ///< those of a tile, in their order
    std::ptrdiff_t pitch = 0;
    int count = 0;
    void resize(const lanes::FilterExtents& extents, int stripWidth);
    L* line(int k) { return values.data() + pitch * (k % count); }
    const L*& place(int k) { return places[static_cast<std::size_t>(k % count)]; }
  };

  /// Rows of sums.
  template <class T>
  struct Rows {
    std::vector<T> values;
    std::vector<T*> pointers;
    void resize(int width);
  };

  /// Arrays in lanes of T.
  template <class T>
  struct Store {
    Ring<T> ring;
    Rows<T> out;
    std::vector<T> taps;
    std::vector<T> marks;  ///< a line of the input, and one beyond its edge, for the widest strip
    std::ptrdiff_t markPitch = 0;
    std::vector<const T*> markPointers;
    void resize(const lanes::FilterExtents& extents);
  };

  /// Taps and sums of narrow operands; `high` halves are for sums of 64 bits.
  struct DotStore {
    Ring<std::uint8_t> bytes;
    Ring<std::int16_t> words;
    std::vector<std::int32_t> taps, packed, packedHigh;
    std::vector<const void*> lines;
    Rows<std::int32_t> high;
    std::int64_t start = 0;
    void resize(const lanes::FilterExtents& extents);
  };

  template <class C>
  void runFrom(const LineSource<C>& source, const Area& area, bool gathersLines);
  template <class L, class C, class TakeT>
  void forEachTile(Ring<L>& ring, const LineSource<C>& source, const Area& area, bool gathersLines, TakeT&& take);
  void beginProducts();
  template <class L, class C>
  void readLines(Ring<L>& ring, LineReader<C>& reader, const LineSource<C>& source, int firstRow, int from, int to,
                 int length);
  template <class T, class C>
  void runSingly(Store<T>& store, const LineSource<C>& source, const Area& area, bool gathersLines);
  template <class T>
  lanes::FixedSumTask<T> makeTask(Store<T>& store) const;
  template <class T, class C>
  void setMarks(Store<T>& store, lanes::FixedSumTask<T>& task, const LineSource<C>& source, const Tile& tile) const;
  void packDots();
  template <class L, class C>
  void runDots(Ring<L>& ring, const LineSource<C>& source, const Area& area, bool gathersLines);
  void sumDots(const Tile& tile, std::ptrdiff_t outPitch);
  void sumDotsInTwo(const Tile& tile, std::ptrdiff_t outPitch);
  lanes::FixedDotTask makeDotTask(const Tile& tile) const;
  bool countsCasts() const;
  bool wantsRanges() const;

  FixedSums* sums;
  const FixedSumPlan* plan = nullptr;
  Fixpt* scratch = nullptr;
  lanes::FilterExtents extents{1, 0, 0};
  std::tuple<LineReader<std::uint8_t>, LineReader<std::uint16_t>, LineReader<std::uint32_t>, LineReader<std::uint64_t>>
      readers;
  std::vector<std::uint64_t> room;  ///< one line as it is stored, of any container
  Store<std::int32_t> narrow;
  Store<std::int64_t> wide;
  DotStore dots;
  FixedProducts products;
  std::vector<std::int64_t> productTaps;
  FixedOutput output;
  lanes::FixedSumCounts met;
};

template <>
struct WalkOf<FixedSums> {
  using type = FixedSumWalk;
};

}  // namespace BP
