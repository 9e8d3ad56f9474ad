#pragma once

#include <algorithm>
#include <type_traits>

#include "orvane/algorithm/collector.h"
#include "orvane/core/centre.h"
#include "orvane/core/clever_ptr.h"
#include "orvane/core/element.h"
#include "orvane/core/enums.h"
#include "orvane/plan/sector.h"

/// The loops over a sector. A scorer computes the result at one position; a walk visits positions in a certain order.
///
/// Everything here is two-dimensional: it uses entries 0 and 1 of every table, whatever the rank. A position (x, y) is
/// an index into the output; the window's first input element lies at (x - shift[0], y - shift[1]).
namespace BP {

/// The numbers of one walk.
struct WalkGeometry {
  int lo[2];        ///< first position
  int hi[2];        ///< last position, inclusive
  int shift[2];     ///< from a position to the window's first input index
  int inputPitch;   ///< elements from one input row to the next
  int outputPitch;  ///< elements from one output row to the next
};

template <class Algo, class Out>
WalkGeometry walkGeometry(const Algo& algorithm, const Sector& sector, const Out& result) {
  const auto& u = algorithm.getInput().getBlock();
  const auto& y = result.getBlock();
  WalkGeometry walk{};
  for (int d = 0; d < 2; ++d) {
    const int offset = u.getOrigin().ptr[d] - y.getOrigin().ptr[d];
    walk.lo[d] = sector.getStart().ptr[d] + offset;
    walk.hi[d] = sector.getEnd().ptr[d] + offset;
    walk.shift[d] = offset - algorithm.getFilter().getLoc().ptr[d];
  }
  walk.inputPitch = u.getStrides().ptr[1];
  walk.outputPitch = y.getStrides().ptr[1];
  return walk;
}

/// Scores a position whose window lies wholly in the input.
template <class Algo, class Out>
class InsideScorer {
 public:
  /// What a stepped search subtracts from the last position to get the one that it clips to.
  static constexpr int stepClip = 0;

  InsideScorer(Algo& algo, InsideSector& insideSector, Out& y1, const WalkGeometry& geometry)
      : algorithm(algo), sector(insideSector), scratch(y1), walk(geometry) {}

  void operator()(int x, int y) { algorithm.scoreAt(sector, scratch, indexOf(x, y)); }

  /// Whether all elements that the window at (x, y) addresses belong to the input. A stepped search can ask for windows
  /// that run over the end of a row, which linear indexing of a dense input allows, and for windows that leave it.
  bool canScore(int x, int y) const {
    const int* hDims = algorithm.getFilter().getDims().ptr;
    const int first = indexOf(x, y);
    const int last = first + hDims[0] - 1 + walk.inputPitch * (hDims[1] - 1);
    return first >= 0 && last < algorithm.getInput().getBlock().getNumElements();
  }

 private:
  int indexOf(int x, int y) const { return (x - walk.shift[0]) + walk.inputPitch * (y - walk.shift[1]); }

  Algo& algorithm;
  InsideSector& sector;
  Out& scratch;
  const WalkGeometry& walk;
};

/// Scores a position whose window crosses an edge of the input or misses it: tap by tap through the pad, or with a copy
/// of the pad output where no pad reads the input.
template <class Algo, class Out, class SectorT>
class OuterScorer {
 public:
  static constexpr int stepClip = 1;

  OuterScorer(Algo& algo, SectorT& outerSector, Out& y1, const WalkGeometry& geometry)
      : algorithm(algo), sector(outerSector), scratch(y1), walk(geometry) {
    algorithm.getAllocator()->allocateArray(index, 2, "ignore");
  }

  void operator()(int x, int y) {
    index.ptr[0] = x - walk.shift[0];
    index.ptr[1] = y - walk.shift[1];
    constexpr int padType = Algo::InputType::padType;
    constexpr bool isBoundary = std::is_same_v<SectorT, BoundarySector>;
    if constexpr (isBoundary && padType != 0) {
      algorithm.boundaryAt(sector, scratch, index);
    } else if constexpr (!isBoundary && padType > PadTypeConstant) {
      algorithm.outsideAt(sector, scratch, index);
    } else {
      copyPadOutput();
    }
  }

  bool canScore(int /*x*/, int /*y*/) const { return true; }

 private:
  void copyPadOutput() {
    const auto& y1 = scratch.getBlock();
    for (int i = 0; i < y1.getNumElements(); ++i) {
      assign(elementAt(y1.getData().ptr, i), elementAt(algorithm.getInput().getPadOutput().ptr, i));
    }
  }

  Algo& algorithm;
  SectorT& sector;
  Out& scratch;
  const WalkGeometry& walk;
  CleverPtr<int> index;
};

/// Scores every position and stores the result there.
template <class ScorerT, class Out>
void runWalk(ScorerT&& score, const WalkGeometry& walk, Out& scratch, Out& result) {
  auto* const from = scratch.getBlock().getData().ptr;
  for (int y = walk.lo[1]; y <= walk.hi[1]; ++y) {
    const int row = walk.outputPitch * y;
    for (int x = walk.lo[0]; x <= walk.hi[0]; ++x) {
      score(x, y);
      result.getBlock().put(row + x, elementAt(from, 0));
    }
  }
}

/// Keeps the best of the positions that it takes, in the algorithm's collector and in `bestIndex`.
template <class Algo, class Out>
class BestMatch {
 public:
  BestMatch(Algo& algorithm, Out& y1, CleverPtr<int>& best)
      : collector(algorithm.getMinIdxCollector()), scratch(y1), bestIndex(best) {}

  /// Out of line, so that the two searches share one copy of the algorithm.
  template <class ScorerT>
  [[gnu::noinline]] void take(ScorerT& score, int x, int y) {
    score(x, y);
    put(elementAt(scratch.getBlock().getData().ptr, 0), x, y);
  }
  /// Takes a position whose score is known.
  void put(typename Algo::Value& value, int x, int y) {
    feed(collector, value, x, y);
    std::copy_n(collector.getIndex().ptr, 2, bestIndex.ptr);
  }

 private:
  MinIdxCollector<typename Algo::AllocatorType, typename Algo::Value>& collector;
  Out& scratch;
  CleverPtr<int>& bestIndex;
};

/// Scores every position and keeps the best: the first one met of those with the least score.
template <class ScorerT, class BestT>
void searchWalk(ScorerT&& score, const WalkGeometry& walk, BestT&& best) {
  for (int y = walk.lo[1]; y <= walk.hi[1]; ++y) {
    for (int x = walk.lo[0]; x <= walk.hi[0]; ++x) best.take(score, x, y);
  }
}

/// The step of the first round: half the centre (see centre.h) of the sector's smaller extent, rounded down, plus 1.
inline int firstStep(const WalkGeometry& walk) {
  int halfWidth[2];
  for (int d = 0; d < 2; ++d) halfWidth[d] = centreOf(walk.hi[d] - walk.lo[d] + 1);
  return std::min(halfWidth[0], halfWidth[1]) / 2 + 1;
}

/// Scores a pattern of 3 by 3 positions around the best one and keeps the best, while the pattern shrinks by 1 each
/// round.
///
/// Results depend on these properties. The pattern starts at its low corner, which is clipped to the sector. Of a row
/// or column of the pattern only the points after the first are clipped at the high end: to the last position in an
/// inside sector, to the one before it in other sectors. The next centre is the best position plus the sector's first
/// position, even where that is not 0.
template <class ScorerT, class BestT>
void stepSearchWalk(ScorerT&& score, const WalkGeometry& walk, BestT&& best, const CleverPtr<int>& bestIndex) {
  int centre[2], last[2];
  for (int d = 0; d < 2; ++d) {
    centre[d] = walk.lo[d] + (walk.hi[d] - walk.lo[d]) / 2;
    last[d] = walk.hi[d] - std::remove_reference_t<ScorerT>::stepClip;
  }
  for (int step = firstStep(walk); step > 0; --step) {
    int y = std::max(walk.lo[1], centre[1] - step);
    for (int row = 0; row < 3; ++row, y = std::min(y + step, last[1])) {
      int x = std::max(walk.lo[0], centre[0] - step);
      for (int column = 0; column < 3; ++column, x = std::min(x + step, last[0])) {
        if (score.canScore(x, y)) best.take(score, x, y);
      }
    }
    for (int d = 0; d < 2; ++d) centre[d] = bestIndex.ptr[d] + walk.lo[d];
  }
}

}  // namespace BP
