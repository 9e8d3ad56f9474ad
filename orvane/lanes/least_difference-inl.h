// The search for the least difference. Included once for each target.

#if defined(ORVANE_LANES_LEAST_DIFFERENCE_INL) == defined(HWY_TARGET_TOGGLE)
#ifdef ORVANE_LANES_LEAST_DIFFERENCE_INL
#undef ORVANE_LANES_LEAST_DIFFERENCE_INL
#else
#define ORVANE_LANES_LEAST_DIFFERENCE_INL
#endif

#include <hwy/highway.h>

#include <cstddef>

#include "orvane/lanes/difference_elements-inl.h"
#include "orvane/lanes/difference_kernels.h"
#include "orvane/lanes/sums-inl.h"

HWY_BEFORE_NAMESPACE();
namespace BP::lanes {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

/// Blocks of R rows of positions x V vectors, for real elements E. Rows do not share lines here as they do in sums, but
/// each takes part in every step: a block is given up after a few rows of the template, when shared lines would not yet
/// have reached all of its rows.
template <class E, int R, int V>
struct SearchBlocks {
  using T = typename E::T;
  using D = typename E::D;
  using Sums = typename E::Sum[std::size_t{R}][std::size_t{V}];
  static constexpr std::ptrdiff_t width = V * E::lanes;

  /// Adds row j of the template to all sums.
  static HWY_INLINE void addRow(const SearchTask<T>& task, const T* line, const T* taps, Sums& sums) {
    for (int c = 0; c < task.columns; ++c) {
      typename E::Tap tap = E::loadTap(taps + c);
      tap.keep();
      ORVANE_UNROLL
      for (int r = 0; r < R; ++r) {
        ORVANE_UNROLL
        for (int v = 0; v < V; ++v) {
          E::template add<0>(sums[r][v], E::load(line + c + r * task.pitch + v * E::lanes), tap);
        }
      }
    }
  }

  /// Whether a score so far is still below the limit. A NaN never is.
  static HWY_INLINE bool isOpen(const Sums& sums, hn::Vec<D> limit) {
    auto below = hn::Lt(sums[0][0].sum, limit);
    ORVANE_UNROLL
    for (int k = 1; k < R * V; ++k) below = hn::Or(below, hn::Lt(sums[k / V][k % V].sum, limit));
    return !hn::AllFalse(D(), below);
  }

  /// Scores the block at `at` of the rows from `y` on, and stops when nothing that could be the best is left.
  static HWY_INLINE void search(const SearchTask<T>& task, int y, std::ptrdiff_t at, LeastDifference<T>& best) {
    Sums sums;
    ORVANE_UNROLL
    for (int k = 0; k < R * V; ++k) sums[k / V][k % V] = E::zero();
    // An equal score in an earlier row precedes a best of these rows.
    const auto limit = hn::Set(D(), best.y > y ? task.nextAbove(best.score) : best.score);
    const T* const corner = task.image + y * task.pitch + at;
    const T* line = corner;
    const T* taps = task.taps;
    for (int j = 0; j < task.rows; ++j, line += task.pitch, taps += task.columns) {
      addRow(task, line, taps, sums);
      if (!isOpen(sums, limit)) return;
    }
    ORVANE_UNROLL
    for (int r = 0; r < R; ++r) keepBest(task, corner + r * task.pitch, y + r, at, sums[r], best);
  }

  /// Looks at the scores of a row one by one. The first of equals stays.
  static HWY_NOINLINE void keepBest(const SearchTask<T>& task, const T* corner, int y, std::ptrdiff_t at,
                                    const typename E::Sum* sums, LeastDifference<T>& best) {
    HWY_ALIGN T scores[static_cast<std::size_t>(width)];
    for (int v = 0; v < V; ++v) {
      hn::Store(E::result(corner + v * E::lanes, task.taps, sums[v]), D(), scores + v * E::lanes);
    }
    for (int i = 0; i < width; ++i) {
      const bool isEarlier = scores[i] == best.score && y < best.y;
      if (scores[i] < best.score || isEarlier) best = {scores[i], static_cast<int>(at) + i, y};
    }
  }
};

/// R rows of positions from `y` on. What blocks leave over takes single vectors; the last one overlaps those before,
/// whose scores are no longer below the best.
template <class E, int R, int V>
void searchRows(const SearchTask<typename E::T>& task, int y, LeastDifference<typename E::T>& best) {
  constexpr std::ptrdiff_t step = SearchBlocks<E, R, V>::width;
  const std::ptrdiff_t count = task.width;
  std::ptrdiff_t at = 0;
  for (; at + step <= count; at += step) SearchBlocks<E, R, V>::search(task, y, at, best);
  if (at == count) return;
  if (count < E::lanes) {
    if constexpr (E::Narrower::lanes < E::lanes) searchRows<typename E::Narrower, R, 1>(task, y, best);
    return;
  }
  for (; at < count; at += E::lanes) {
    SearchBlocks<E, R, 1>::search(task, y, at + E::lanes <= count ? at : count - E::lanes, best);
  }
}

/// The rows of positions from `y` to before `end`.
template <class E>
void search(const SearchTask<typename E::T>& task, int y, int end, LeastDifference<typename E::T>& best) {
  constexpr int rows = 2, vectors = 2;
  for (; y + rows <= end; y += rows) searchRows<E, rows, vectors>(task, y, best);
  for (; y < end; ++y) searchRows<E, 1, rows * vectors>(task, y, best);
}

}  // namespace HWY_NAMESPACE
}  // namespace BP::lanes
HWY_AFTER_NAMESPACE();

#endif
