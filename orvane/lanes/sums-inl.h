// The kernels of sums. Included once for each target.
//
// A block is R output rows x V vectors, whose accumulators stay in registers while all taps are added. An input line is
// loaded once for all output rows that use it. With R = 3 and a filter of 5 rows, output rows a, b, c and those of the
// next block, A, B, C, use these lines:
//
//   own lines             0   1   2    3    4    5   6
//   output rows           a   ab  abc  abc  abc  bc  c
//   next block's lines                           0   1   2 ...
//   output rows                                  A   AB  ABC ...
//
// The lines that some rows do not use would leave the arithmetic units idle. So the blocks take turns: as soon as a row
// of one block is complete it is stored and its accumulators serve the next block, and one loop adds the last lines of
// the one block and the first lines of the next. The order of each sum stays as it is. A plane is followed by the next
// plane in the same way.

#if defined(ORVANE_LANES_SUMS_INL) == defined(HWY_TARGET_TOGGLE)
#ifdef ORVANE_LANES_SUMS_INL
#undef ORVANE_LANES_SUMS_INL
#else
#define ORVANE_LANES_SUMS_INL
#endif

#include <hwy/highway.h>

#include "orvane/lanes/sum_elements-inl.h"
#include "orvane/lanes/sum_kernels.h"

#undef ORVANE_UNROLL
#ifdef __clang__
#define ORVANE_UNROLL _Pragma("clang loop unroll(full)")
#else
#define ORVANE_UNROLL _Pragma("GCC unroll 16")
#endif

HWY_BEFORE_NAMESPACE();
namespace BP::lanes {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

#if HWY_TARGET == HWY_AVX3 || HWY_TARGET == HWY_AVX3_DL || (HWY_TARGET == HWY_NEON && HWY_ARCH_ARM_A64)
constexpr int registers = 32;
constexpr int rowChoices[] = {8, 6, 4, 3, 2, 1};
#else
constexpr int registers = 16;
constexpr int rowChoices[] = {6, 4, 3, 2, 1};
#endif

/// Vectors of one row of a block, so that accumulators, one piece of input for each, a tap and a product fit; 0 if
/// none.
template <class E>
constexpr int vectorsFor(int rows) {
  const int count = (registers - 1 - E::tapRegisters) / (rows * E::sumRegisters + E::inRegisters);
  return count > 8 ? 8 : count;
}

/// Whether blocks of so many rows are made: elements with a `mostRows` do with 1, 2, 4 and so on up to it.
template <class E>
constexpr bool hasRows(int rows) {
  if constexpr (requires { E::mostRows; }) {
    if (rows > E::mostRows || (rows & (rows - 1)) != 0) return false;
  }
  return vectorsFor<E>(rows) > 0;
}

/// The greatest choice of rows up to `most`, which is at least 1.
template <class E>
int maxRows(int most) {
  for (const int choice : rowChoices) {
    if (choice <= most && hasRows<E>(choice)) return choice;
  }
  return 1;
}

/// The least choice of rows from `least` on, where there is one.
template <class E>
int leastRows(int least) {
  int best = least;
  for (const int choice : rowChoices) {
    if (choice >= least && hasRows<E>(choice)) best = choice;
  }
  return best;
}

/// Where a block lies, and the plane that it adds next.
template <class T>
struct Place {
  int row;
  std::ptrdiff_t at;
  int plane;
  const T* const* lines;  ///< of the plane, from the first output row's on
  const T* taps;          ///< of the plane
};

/// The blocks of `rows` output rows and `width` input values from `begin` to `end`, row by row. The last one of a row
/// and the last row overlap those before where the extents leave a rest.
template <class T>
class BlockWalk {
 public:
  BlockWalk(const SumTask<T>& sums, int blockRows, std::ptrdiff_t blockWidth, std::ptrdiff_t from, std::ptrdiff_t to)
      : task(sums), rows(blockRows), width(blockWidth), begin(from), end(to) {}

  Place<T> first() const { return {0, begin, 0, task.lines, task.taps}; }

  /// Goes on to the next plane or block; whether a new block begins, or nothing is left (`done`).
  HWY_INLINE bool next(Place<T>& place, std::ptrdiff_t planeTaps) {
    if (++place.plane < task.planes) {
      place.lines += task.planeStride;
      place.taps += planeTaps;
      return false;
    }
    place.plane = 0;
    place.taps = task.taps;
    place.at += width;
    if (place.at >= end) {
      place.at = begin;
      done = place.row + rows >= task.rows;
      if (!done) place.row += rows;
    } else if (place.at + width > end) {
      place.at = end - width;
    }
    place.lines = task.lines + place.row;
    return true;
  }

  bool isDone() const { return done; }

 private:
  const SumTask<T>& task;
  int rows;
  std::ptrdiff_t width, begin, end;
  bool done = false;
};

/// What becomes of a row's accumulators when its lines of a plane are complete.
enum class RowEnd { reset, storeAndReset, goOn };

/// Blocks of R output rows x V vectors; `oneColumn` spares filters of one column the loop over columns.
template <class E, int R, int V, bool oneColumn = false>
struct Blocks {
  using T = typename E::T;
  using Sums = typename E::Sum[std::size_t{R}][std::size_t{V}];
  static constexpr std::ptrdiff_t width = V * E::lanes;

  /// Adds one column of a line to output rows First to Last - 1. What only one of them uses need not be kept.
  template <int First, int Last>
  static HWY_INLINE void addColumn(Sums& sums, const T* x, const T* taps) {
    typename E::In in[std::size_t{V}];
    ORVANE_UNROLL
    for (int v = 0; v < V; ++v) {
      in[v] = E::load(x + v * E::lanes);
      if constexpr (Last - First > 1) in[v].keep();
    }
    ORVANE_UNROLL
    for (int r = First; r < Last; ++r) {
      typename E::Tap tap = E::loadTap(taps + r * E::tapSize);
      tap.keep();
      ORVANE_UNROLL
      for (int v = 0; v < V; ++v) E::template add<0>(sums[r][v], in[v], tap);
      if constexpr (E::tapParts == 2) {
        tap = E::loadTap(taps + r * E::tapSize + 1);
        tap.keep();
        ORVANE_UNROLL
        for (int v = 0; v < V; ++v) E::template add<1>(sums[r][v], in[v], tap);
      }
    }
  }

  /// Adds line x to rows 0 to Split - 1, and beside it line y to the others.
  template <int Split>
  static HWY_INLINE void addLines(Sums& sums, const T* x, const T* xTaps, const T* y, const T* yTaps,
                                  const SumTask<T>& task) {
    if constexpr (oneColumn) {
      addColumn<0, Split>(sums, x, xTaps);
      if constexpr (Split < R) addColumn<Split, R>(sums, y, yTaps);
      return;
    }
    const std::ptrdiff_t step = task.step, tapStep = std::ptrdiff_t{task.packedRows} * E::tapSize;
    const T* const end = x + task.columns * step;
    do {
      addColumn<0, Split>(sums, x, xTaps);
      x += step, xTaps += tapStep;
      if constexpr (Split < R) {
        addColumn<Split, R>(sums, y, yTaps);
        y += step, yTaps += tapStep;
      }
    } while (x != end);
  }

  /// The sums of a vector of outputs before their first tap.
  static HWY_INLINE typename E::Sum begin(const SumTask<T>& task, int row, std::ptrdiff_t at) {
    if constexpr (requires { E::begin(task, row, at); }) {
      return E::begin(task, row, at);
    } else {
      return E::zero();
    }
  }

  template <int Row>
  static HWY_INLINE void endRow(Sums& sums, const SumTask<T>& task, const Place<T>& place, const Place<T>& next,
                                RowEnd end) {
    if (end == RowEnd::goOn) return;
    if (end == RowEnd::storeAndReset) {
      ORVANE_UNROLL
      for (int v = 0; v < V; ++v) E::store(task, place.row + Row, place.at + v * E::lanes, sums[Row][v]);
    }
    ORVANE_UNROLL
    for (int v = 0; v < V; ++v) sums[Row][v] = begin(task, next.row + Row, next.at + v * E::lanes);
  }

  /// Ends one place and begins the next, whose line I is added beside the line that follows `from`'s row I.
  template <int I>
  static HWY_INLINE void takeTurns(Sums& sums, const SumTask<T>& task, std::ptrdiff_t lineTaps, const Place<T>& from,
                                   const Place<T>& to, RowEnd end) {
    endRow<I>(sums, task, from, to, end);
    if constexpr (I < R - 1) {
      const int last = task.filterRows + I;
      addLines<I + 1>(sums, to.lines[I] + to.at, to.taps + I * lineTaps, from.lines[last] + from.at,
                      from.taps + last * lineTaps, task);
      takeTurns<I + 1>(sums, task, lineTaps, from, to, end);
    }
  }

  /// Computes the blocks from `begin` to `end` of all rows. Before the first block and after the last one, the lines
  /// beside are some of the block itself; the accumulators that take them are reset or forgotten.
  static HWY_NOINLINE void compute(const SumTask<T>& given, std::ptrdiff_t begin, std::ptrdiff_t end) {
    const SumTask<T> task = given;  // out of reach of the stores, after which it would have to be loaded again
    const std::ptrdiff_t lineTaps = std::ptrdiff_t(oneColumn ? 1 : task.columns) * task.packedRows * E::tapSize;
    const std::ptrdiff_t planeTaps = lineTaps * (task.filterRows + task.packedRows - 1);
    BlockWalk<T> walk(task, R, width, begin, end);
    Place<T> place = walk.first(), before = place;
    RowEnd rowEnd = RowEnd::reset;
    Sums sums;
    ORVANE_UNROLL
    for (int r = 0; r < R; ++r) {
      ORVANE_UNROLL
      for (int v = 0; v < V; ++v) sums[r][v] = E::zero();
    }
    for (;;) {
      takeTurns<0>(sums, task, lineTaps, before, place, rowEnd);
      if (walk.isDone()) return;
      for (int i = R - 1; i < task.filterRows; ++i) {
        addLines<R>(sums, place.lines[i] + place.at, place.taps + i * lineTaps, nullptr, nullptr, task);
      }
      before = place;
      rowEnd = walk.next(place, planeTaps) ? RowEnd::storeAndReset : RowEnd::goOn;
    }
  }
};

/// As many rows as R goes into. What blocks leave over takes single vectors, the last one overlapping; a run that is
/// narrower than a vector takes narrower ones.
template <class E, int R, int V>
void computePasses(const SumTask<typename E::T>& task) {
  std::ptrdiff_t at = 0;
  if constexpr (V > 1) {
    at = task.width - task.width % Blocks<E, R, V>::width;
    if (at > 0) {
      if (E::hasOneColumnForm && task.columns == 1) {
        Blocks<E, R, V, E::hasOneColumnForm>::compute(task, 0, at);
      } else {
        Blocks<E, R, V>::compute(task, 0, at);
      }
    }
    if (at == task.width) return;
  }
  if (task.width >= E::lanes) {
    const std::ptrdiff_t last = task.width - E::lanes;
    Blocks<E, R, 1>::compute(task, at < last ? at : last, task.width);
  } else if constexpr (E::Narrower::lanes < E::lanes) {
    computePasses<typename E::Narrower, (R > 4 ? R / 2 : R), 1>(task);
  }
}

template <class E, int R>
void computeRows(const SumTask<typename E::T>& task) {
  if constexpr (hasRows<E>(R)) computePasses<E, R, vectorsFor<E>(R)>(task);
}

/// The output rows from `row` on, `count` of them, `rows` at once.
template <class E>
void computeRows(SumTask<typename E::T> task, int row, int count, int rows) {
  task.lines += row;
  task.out += row;
  if (task.means != nullptr) task.means += row;
  task.rows = count;
  switch (rows) {
    case 1: return computeRows<E, 1>(task);
    case 2: return computeRows<E, 2>(task);
    case 3: return computeRows<E, 3>(task);
    case 4: return computeRows<E, 4>(task);
    case 6: return computeRows<E, 6>(task);
    default:
      if constexpr (registers == 32) computeRows<E, 8>(task);
  }
}

/// Many rows at once first, as long as there is a line that all of them use; then what is left, of which some may be
/// computed again.
template <class E>
void computeSums(const SumTask<typename E::T>& task) {
  const int rows = maxRows<E>(task.rows < task.filterRows ? task.rows : task.filterRows), rest = task.rows % rows;
  computeRows<E>(task, 0, task.rows - rest, rows);
  if (rest == 0) return;
  const int restRows = leastRows<E>(rest);
  computeRows<E>(task, task.rows - restRows, restRows, restRows);
}

template <class T>
constexpr SumKernels<T> makeSumKernels() {
  using D = hn::ScalableTag<T>;
  return {computeSums<RealReal<D>>,
          computeSums<RealComplex<D>>,
          computeSums<ComplexComplex<D>>,
          computeSums<Normalised<D>>,
          computeSums<NormalisedComplex<ComplexReal<D>>>,
          computeSums<NormalisedComplex<RealComplex<D>>>,
          computeSums<NormalisedComplex<ComplexComplex<D>>>,
          computeSums<Centred<D>>};
}

}  // namespace HWY_NAMESPACE
}  // namespace BP::lanes
HWY_AFTER_NAMESPACE();

#endif
