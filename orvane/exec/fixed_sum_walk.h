#pragma once

#include <cstddef>
#include <cstdint>
#include <tuple>
#include <vector>

#include "orvane/algorithm/fixed_sums.h"
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
           const Block& input, const Block& output, Fixpt* y);

 private:
  static constexpr int stripWidth = 512;
  static constexpr int tileRows = 24;

  /// Where the outputs of a sector lie and what they read.
  struct Area {
    int width, height;
    int column, row;        ///< of the input, of the first output's first tap
    int outColumn, outRow;  ///< of the output
    int outPitch;
  };

  /// Lines of input as integers L: line k lies in place k modulo their number.
  template <class L>
  struct Ring {
    std::vector<L> values;
    std::vector<const L*> pointers;
    std::ptrdiff_t pitch = 0;
    int count = 0;
    void resize(const lanes::FilterExtents& extents);
    L* line(int k) { return values.data() + pitch * (k % count); }
  };

  /// Arrays in lanes of T.
  template <class T>
  struct Store {
    Ring<T> ring;
    std::vector<T> taps, out;
    std::vector<T> marks;  ///< a line of the input, and one beyond its edge
    std::vector<const T*> markPointers;
    std::vector<T*> outPointers;
    void resize(const lanes::FilterExtents& extents);
  };

  template <class T>
  void runIn(Store<T>& store, const FixedSumPlan& plan, const LineSource<Fixpt>& source, const Area& area, Fixpt& y,
             bool gathersLines);
  template <class T>
  lanes::FixedSumTask<T> makeTask(Store<T>& store, const FixedSumPlan& plan, bool hasMarks) const;
  bool countsCasts() const;
  template <class T, class L, class C>
  void runFrom(Store<T>& store, Ring<L>& ring, const FixedSumPlan& plan, const LineSource<C>& source, const Area& area,
               Fixpt& y, bool gathersLines);
  template <class L, class C>
  void readLines(Ring<L>& ring, LineReader<C>& reader, int firstRow, int from, int to, int length);
  template <class T>
  void sumTile(const Store<T>& store, const lanes::FixedSumTask<T>& task, bool inPairs);
  template <class T>
  void putRow(T* values, int count, const FixedSumPlan& plan, std::ptrdiff_t first, Fixpt& y);
  template <class T>
  void castRow(T* values, int count, const FixedSumPlan& plan, std::ptrdiff_t first, Fixpt& y);
  void addCounts(Fixpt& y) const;

  FixedSums* sums;
  Fixpt* scratch = nullptr;
  lanes::FilterExtents extents{1, 0, 0};
  std::tuple<LineReader<std::uint8_t>, LineReader<std::uint16_t>, LineReader<std::uint32_t>, LineReader<std::uint64_t>>
      readers;
  std::vector<std::uint64_t> room;  ///< one line as it is stored, of any container
  Ring<std::int16_t> shortRing;     ///< for `narrow` sums of pairs
  std::vector<std::int32_t> pairs;
  Store<std::int32_t> narrow;
  Store<std::int64_t> wide;
  lanes::FixedSumCounts met;
  lanes::FixedCounts metScratch;
  lanes::FixedCounts metOutput;
};

template <>
struct WalkOf<FixedSums> {
  using type = FixedSumWalk;
};

}  // namespace BP
