#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "orvane/algorithm/algorithm.h"
#include "orvane/algorithm/lane_sums.h"
#include "orvane/input/line_reader.h"
#include "orvane/lanes/conversions.h"
#include "orvane/lanes/target.h"
#include "orvane/plan/block.h"
#include "orvane/plan/sector.h"

namespace BP {

/// Walks a sector in runs: stretches of neighbouring outputs in several rows, which vector lanes compute at once.
///
///     sector   +--------------+-------+     a run has some rows along dimension 1 (see its limits),
///              | run          | run   |     and a width that leaves its lines in a near cache;
///              +--------------+-------+     further dimensions are walked position by position
///              | run          | run   |
///              +--------------+-------+
///
/// Lines come from a `LineReader`, sums from `SumsT`, a `LaneSums`. Inside and boundary sectors take the same road. A
/// sector that is narrow and high, as at the left edge of a picture, is turned: its input is copied so that columns
/// become lines, and lanes run across neighbouring rows, in the same order of taps.
///
/// Where elements are stored in another type, runs go down in columns, so that each line is converted once and kept for
/// the runs below. Such outputs are computed in room of the walk, and rounded row by row.
///
/// `resize` makes all room, but that for arrays that are stored so, which the first run makes. That is a number of
/// lines which follows from the filter, whatever the size of the arrays.
template <class SumsT>
class LineWalk {
 public:
  using UT = typename SumsT::InputElement;
  using YT = typename SumsT::OutputElement;

  explicit LineWalk(SumsT* laneSums) : sums(laneSums) {}

  /// Makes room for the extents of filter and input; the first `walkedRank` dimensions are walked. Only a walk that
  /// `searches` has room for strips.
  void resize(const Block& filter, const Block& input, int walkedRank, bool searches = false);

  /// Computes all outputs of a sector; `edges` is the sector again, or null for an inside one. Returns false and does
  /// nothing if lanes are not in use, do not take the filter, or would need more room than there is.
  bool run(const LineSource<UT>& source, const Sector& sector, const OuterSector* edges, const Block& filter,
           const Block& input, const Block& output, const LineTarget<YT>& target);

  /// Computes the outputs of an inside sector in *strips*: a few whole rows of it, without those between the rows of an
  /// output. Calls `take(strip, firstRow, rows, width)` for each, where row 0 is the sector's first. Returns false as
  /// `run` does, or if there is no room for strips.
  template <class TakeT>
  bool runInStrips(const LineSource<UT>& source, const Sector& sector, const Block& filter, const Block& input,
                   TakeT&& take);

 private:
  using Real = typename SumsT::Real;
  using Limits = typename SumsT::Limits;
  using Size = std::ptrdiff_t;

  /// The numbers of one walk, an entry per dimension, at least two.
  struct Geometry {
    std::vector<int> position;  ///< of the run's first output, counted from the input's first element
    std::vector<int> first, last;
    std::vector<int> windowLoc;   ///< from a position to the window's first input element
    std::vector<int> windowDims;  ///< extents of the filter
    std::vector<int> inputDims;
    std::vector<int> inputStrides;
    std::vector<int> outputOffset;  ///< from a position to the output's index
    std::vector<Size> outputStride;
    void resize(int dimensions);
  };

  void beginLines(const LineSource<UT>& source, bool gathers);
  void readGeometry(const LineSource<UT>& source, const Sector& sector, const Block& filter, const Block& input,
                    const Block& output, const int* outputStrides);
  bool nextPosition(std::vector<int>& at, const std::vector<int>& low, const std::vector<int>& high) const;
  static bool canCopy(Size elements) { return elements <= maxCopied; }
  /// Elements of the lines of a run that are gathered, or turned.
  Size uprightElements(int width, int rows) const;
  Size turnedElements(int width, int rows) const;
  bool makeConvertedRoom(int width, int rows);
  void runUpright(const LineTarget<YT>& target, int maxWidth, int maxRows);
  void runColumns(const LineTarget<YT>& target, int maxWidth, int maxRows);
  void runTurned(const LineTarget<YT>& target);
  void computeUpright(const LineTarget<YT>& target, int width, int rows);
  const UT* readLine(int number, int length);
  void storeRows(const LineTarget<YT>& target, int width, int rows);
  void computeTurned(const LineTarget<YT>& target, int width, int rows);
  template <class TakeT>
  void forEachPlane(TakeT&& take);
  Size outputIndex() const;

  /// Elements that gathered or turned lines may take; a filter that needs more is left to the plain loop.
  static constexpr Size maxCopied = Size{1} << 21;
  static constexpr int stripRows = 12;

  /// How much of `Limits` the extents of the arrays let a run use; a sector of more outputs takes more runs.
  struct Capacity {
    int rows = 0;
    int width = 0;
    int copiedWidth = 0;
    int turnedWidth = 0;
    int turnedHeight = 0;
  };

  SumsT* sums;
  LineReader<UT> reader;
  Capacity capacity;
  Geometry g;
  int rank = 0;      ///< walked dimensions, at least 2
  int hostRank = 0;  ///< those of the tables
  std::vector<int> index;
  std::vector<int> tap;
  std::vector<int> tapEnd;
  std::vector<int> zeros;
  std::vector<const Real*> lines;
  std::vector<Real*> out;
  std::vector<UT> copied;
  std::vector<const UT*> kept;  ///< of converted lines, which lie in `copied` in turns: where each is
  int keptLines = 0;            ///< how many lines take turns; 0 if none is kept
  int readyRow = 0;             ///< the row of the input whose line is not ready yet, before which all are
  std::vector<YT> storedRows;   ///< outputs before they are rounded to the type in which they are stored
  std::vector<YT> turnedOutput;
  std::vector<YT> strip;
};

/// The walk of an algorithm without lanes: it computes nothing.
template <>
class LineWalk<NoLanes> {
 public:
  explicit LineWalk(NoLanes* /*laneSums*/) {}
  void resize(const Block& /*filter*/, const Block& /*input*/, int /*walkedRank*/) {}
};

/// The walk of an algorithm's lanes: their own one, if they have elements in memory that are not those of the arrays.
template <class Lanes>
struct WalkOf {
  using type = LineWalk<Lanes>;
};
template <class Lanes>
requires requires { typename Lanes::Walk; }
struct WalkOf<Lanes> {
  using type = typename Lanes::Walk;
};

}  // namespace BP

#include "orvane/exec/line_walk-inl.h"
