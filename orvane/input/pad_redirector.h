#pragma once

#include "orvane/core/pad_types.h"
#include "orvane/plan/block.h"
#include "orvane/plan/sector.h"
#include "orvane/platform/export.h"

/// Redirectors: which element of the input a coordinate beyond its edge stands for, one dimension at a time.
///
///     replicate  a a a | a b c | c c c
///     symmetric  c b a | a b c | c b a
///     circular   a b c | a b c | a b c
///     mirror     d c b | a b c d | c b a
///
/// Each rule gives two formulas: for a coordinate below the first element, lo, and for one beyond the last, hi, of n
/// elements. They hold at any distance from the array; remainders truncate. n is at least 1: a plan has no sector that
/// would redirect into an empty input.
namespace BP {

/// Base of the redirectors. `isDistanceBased` tells that a read beyond the edge yields an element of the input.
class ORVANE_API PadRedirector {
 public:
  /// Whether the formulas use twice the extent of the input, which then must fit 32 bits.
  static constexpr bool doublesExtent = false;
  explicit PadRedirector(bool distanceBased) : isDistanceBased(distanceBased) {}
  virtual ~PadRedirector();
  bool getIsDistanceBased() const { return isDistanceBased; }

 private:
  bool isDistanceBased;
};

/// The edge element, at any distance.
class ORVANE_API ReplicatePadRedirector : public PadRedirector {
 public:
  /// Marked as distance-based, so that sectors with both outside and boundary sections run as boundary sectors, which
  /// test each coordinate before they redirect it.
  ReplicatePadRedirector() : PadRedirector(true) {}
  static int fromBelow(int /*i*/, int lo, int /*hi*/, int /*n*/) { return lo; }
  static int fromAbove(int /*i*/, int /*lo*/, int hi, int /*n*/) { return hi; }
};

/// Base of the rules that depend on how far a coordinate lies beyond the edge.
class ORVANE_API DistanceBasedPadRedirector : public PadRedirector {
 public:
  DistanceBasedPadRedirector() : PadRedirector(true) {}
};

/// Reflection with the edge element repeated: the first n steps beyond an edge walk back through the array, the next n
/// walk forward again, and so on.
class ORVANE_API SymmetricPadRedirector : public DistanceBasedPadRedirector {
 public:
  static constexpr bool doublesExtent = true;
  static int fromBelow(int i, int lo, int hi, int n) {
    const int r = (lo - i - 1) % (2 * n);
    return r < n ? lo + r : hi - r % n;
  }
  static int fromAbove(int i, int lo, int hi, int n) {
    const int r = (i - hi - 1) % (2 * n);
    return r < n ? hi - r : lo + r % n;
  }
};

/// Wrap-around.
class ORVANE_API CircularPadRedirector : public DistanceBasedPadRedirector {
 public:
  static int fromBelow(int i, int lo, int hi, int n) { return hi - (lo - i - 1) % n; }
  static int fromAbove(int i, int lo, int hi, int n) { return lo + (i - hi - 1) % n; }
};

/// Reflection with the edge element once: the first n - 1 steps beyond an edge walk back through the array from the
/// edge's neighbour, the next n - 1 walk forward again, and so on. An array of one element gives that element.
class ORVANE_API MirrorPadRedirector : public DistanceBasedPadRedirector {
 public:
  static constexpr bool doublesExtent = true;
  static int fromBelow(int i, int lo, int hi, int n) {
    if (n == 1) return lo;
    const int r = (lo - i) % (2 * (n - 1));
    return r < n ? lo + r : hi - (r - (n - 1));
  }
  static int fromAbove(int i, int lo, int hi, int n) {
    if (n == 1) return lo;
    const int r = (i - hi) % (2 * (n - 1));
    return r < n ? hi - r : lo + (r - (n - 1));
  }
};

/// The rule of a pad type whose values come from the input.
template <int padType>
struct RedirectorOf;
template <>
struct RedirectorOf<PadTypeReplicate> {
  using type = ReplicatePadRedirector;
};
template <>
struct RedirectorOf<PadTypeSymmetric> {
  using type = SymmetricPadRedirector;
};
template <>
struct RedirectorOf<PadTypeCircular> {
  using type = CircularPadRedirector;
};
template <>
struct RedirectorOf<PadTypeMirror> {
  using type = MirrorPadRedirector;
};

/// The element, of `n`, that coordinate `i` beyond the edge of an input reads as; for a data-based pad type.
ORVANE_API int redirectedInto(int n, int padType, int i);

/// Whether the rule of a pad type uses twice the extent of the input.
ORVANE_API bool doublesExtent(int padType);

/// Applies `move(d, below)` to the dimensions of the sector's edge lists that are below `rank`, low edges first.
template <class MoveT>
inline void forEachEdge(const OuterSector& sector, int rank, MoveT&& move) {
  const int* preEdge = sector.getPreEdge().ptr;
  for (int k = 0; k < sector.getPreEdgeCount() && preEdge[k] < rank; ++k) move(preEdge[k], true);
  const int* postEdge = sector.getPostEdge().ptr;
  for (int k = 0; k < sector.getPostEdgeCount() && postEdge[k] < rank; ++k) move(postEdge[k], false);
}

/// Redirects coordinate `d` of `index` by the rule's formula for one edge of `block`.
template <class RedirectorT>
inline void redirect(const TraversableBlock& block, int d, bool below, int* index) {
  const int lo = block.getStart().ptr[d], hi = block.getEnd().ptr[d], n = block.getDims().ptr[d];
  index[d] = below ? RedirectorT::fromBelow(index[d], lo, hi, n) : RedirectorT::fromAbove(index[d], lo, hi, n);
}

/// Boundary form: redirects those coordinates of `index`, in place, that lie beyond a listed edge. The low edge is
/// tested against 0, because the input begins there in every processor.
template <class RedirectorT>
inline void redirectBoundary(const TraversableBlock& block, const OuterSector& sector, int rank, int* index) {
  forEachEdge(sector, rank, [&](int d, bool below) {
    const bool isBeyond = below ? index[d] < 0 : index[d] > block.getEnd().ptr[d];
    if (isBeyond) redirect<RedirectorT>(block, d, below, index);
  });
}

/// Outside form: redirects every listed coordinate without a test. Every rule but replicate can move a coordinate that
/// is already inside out of the array.
template <class RedirectorT>
inline void redirectOutside(const TraversableBlock& block, const OuterSector& sector, int rank, int* index) {
  forEachEdge(sector, rank, [&](int d, bool below) { redirect<RedirectorT>(block, d, below, index); });
}

}  // namespace BP
