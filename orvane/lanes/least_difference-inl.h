// The search for the least difference in one row of positions. Included once for each target.

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

/// Blocks of one row of positions x V vectors, for real elements E.
template <class E, int V>
struct SearchBlocks {
  using T = typename E::T;
  using D = typename E::D;
  using B = Blocks<E, 1, V>;
  using Sums = typename B::Sums;
  static constexpr std::ptrdiff_t width = B::width;

  /// Whether a score so far is still below the best. A NaN never is.
  static HWY_INLINE bool isOpen(const Sums& sums, hn::Vec<D> limit) {
    auto below = hn::Lt(sums[0][0].sum, limit);
    ORVANE_UNROLL
    for (int v = 1; v < V; ++v) below = hn::Or(below, hn::Lt(sums[0][v].sum, limit));
    return !hn::AllFalse(D(), below);
  }

  /// Scores the block at `at`, and stops after a row of the template in which nothing below the best is left.
  static HWY_INLINE void search(const SearchTask<T>& task, std::ptrdiff_t at, LeastDifference<T>& best) {
    Sums sums;
    ORVANE_UNROLL
    for (int v = 0; v < V; ++v) sums[0][v] = E::zero();
    const auto limit = hn::Set(D(), best.score);
    const T* line = task.image + at;
    const T* taps = task.sums.taps;
    for (int j = 0; j < task.sums.filterRows; ++j) {
      B::template addLines<1>(sums, line, taps, nullptr, nullptr, task.sums);
      if (!isOpen(sums, limit)) return;
      line += task.pitch, taps += task.sums.columns;
    }
    keepBest(task, at, sums, best);
  }

  /// Looks at the scores one by one, in the order of their positions, so that the first of equals stays.
  static HWY_NOINLINE void keepBest(const SearchTask<T>& task, std::ptrdiff_t at, const Sums& sums,
                                    LeastDifference<T>& best) {
    HWY_ALIGN T scores[static_cast<std::size_t>(width)];
    for (int v = 0; v < V; ++v) {
      const auto score = E::result(task.image + at + v * E::lanes, task.sums.taps, sums[0][v]);
      hn::Store(score, D(), scores + v * E::lanes);
    }
    for (int i = 0; i < width; ++i) {
      if (scores[i] < best.score) best = {scores[i], static_cast<int>(at) + i, task.y};
    }
  }
};

/// What blocks leave over takes single vectors; the last one overlaps those before, whose scores are no longer below
/// the best.
template <class E, int V>
void searchRow(const SearchTask<typename E::T>& task, LeastDifference<typename E::T>& best) {
  const std::ptrdiff_t count = task.sums.width;
  std::ptrdiff_t at = 0;
  for (; at + SearchBlocks<E, V>::width <= count; at += SearchBlocks<E, V>::width) {
    SearchBlocks<E, V>::search(task, at, best);
  }
  if (at == count) return;
  if (count < E::lanes) {
    if constexpr (E::Narrower::lanes < E::lanes) searchRow<typename E::Narrower, 1>(task, best);
    return;
  }
  for (; at < count; at += E::lanes) {
    SearchBlocks<E, 1>::search(task, at + E::lanes <= count ? at : count - E::lanes, best);
  }
}

}  // namespace HWY_NAMESPACE
}  // namespace BP::lanes
HWY_AFTER_NAMESPACE();

#endif
