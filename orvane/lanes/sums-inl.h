// The kernels of sums. Included once for each target.
//
// A block is R output rows x V vectors, whose accumulators stay in registers while all taps are added. An input line is
// loaded once for all output rows that use it. With R = 3 and a filter of 5 rows, these are
//
//   input line      0    1    2    3    4    5    6
//   output rows     0    01   012  012  012   12    2        the lines at both ends are loops of their own
//
// R is at most the number of filter rows, so that there is a line that all R share, or 1.

#if defined(ORVANE_LANES_SUMS_INL) == defined(HWY_TARGET_TOGGLE)
#ifdef ORVANE_LANES_SUMS_INL
#undef ORVANE_LANES_SUMS_INL
#else
#define ORVANE_LANES_SUMS_INL
#endif

#include <hwy/highway.h>

#include "orvane/lanes/sum_elements-inl.h"
#include "orvane/lanes/sum_kernels.h"

#ifdef __clang__
#define ORVANE_UNROLL _Pragma("clang loop unroll(full)")
#else
#define ORVANE_UNROLL _Pragma("GCC unroll 16")
#endif

HWY_BEFORE_NAMESPACE();
namespace BP::lanes {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

#if HWY_TARGET == HWY_AVX3 || (HWY_TARGET == HWY_NEON && HWY_ARCH_ARM_A64)
constexpr int registers = 32;
constexpr int rowChoices[] = {8, 6, 4, 3, 2, 1};
#else
constexpr int registers = 16;
constexpr int rowChoices[] = {6, 4, 3, 2, 1};
#endif

/// Vectors of one row of a block, so that accumulators, one piece of input for each, a tap and a product fit.
template <class E>
constexpr int vectorsFor(int rows) {
  const int count = (registers - 1 - E::tapRegisters) / (rows * E::sumRegisters + E::inRegisters);
  return count < 1 ? 1 : count > 8 ? 8 : count;
}

/// Rows at once: few passes first, then few rows that are computed twice, as the last pass overlaps the one before.
inline int chooseRows(int rows, int filterRows) {
  const int most = rows < filterRows ? rows : filterRows;
  int best = 1;
  for (const int choice : rowChoices) {
    if (choice <= most) {
      best = choice;
      break;
    }
  }
  const int passes = (rows + best - 1) / best;
  for (const int choice : rowChoices) {
    if (choice < best && choice * passes >= rows) best = choice;
  }
  return best;
}

/// R output rows x V vectors.
template <class E, int R, int V>
struct Block {
  using T = typename E::T;
  using Sums = typename E::Sum[std::size_t{R}][std::size_t{V}];
  static constexpr std::ptrdiff_t width = V * E::lanes;

  /// Adds one input line to output rows First to Last - 1. What only one of them uses need not be kept.
  template <int First, int Last>
  static HWY_INLINE void addLine(Sums& sums, const T* x, const T* taps, const SumTask<T>& task) {
    const std::ptrdiff_t step = task.step, tapStep = task.packedRows * E::tapSize;
    const T* const end = x + task.columns * step;
    do {
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
        for (int v = 0; v < V; ++v) E::add(sums[r][v], in[v], tap);
      }
      x += step;
      taps += tapStep;
    } while (x != end);
  }

  /// The lines before the first that all output rows use: line I belongs to rows 0 to I.
  template <int I>
  static HWY_INLINE void addFirstLines(Sums& sums, const T* const* lines, std::ptrdiff_t at, const T* taps,
                                       std::ptrdiff_t lineTaps, const SumTask<T>& task) {
    if constexpr (I < R - 1) {
      addLine<0, I + 1>(sums, lines[I] + at, taps + I * lineTaps, task);
      addFirstLines<I + 1>(sums, lines, at, taps, lineTaps, task);
    }
  }

  /// The lines after the last that all use: the I-th of them belongs to rows I + 1 to R - 1.
  template <int I>
  static HWY_INLINE void addLastLines(Sums& sums, const T* const* lines, std::ptrdiff_t at, const T* taps,
                                      std::ptrdiff_t lineTaps, const SumTask<T>& task) {
    if constexpr (I < R - 1) {
      addLine<I + 1, R>(sums, lines[I] + at, taps + I * lineTaps, task);
      addLastLines<I + 1>(sums, lines, at, taps, lineTaps, task);
    }
  }

  static HWY_INLINE void compute(const SumTask<T>& task, int row, std::ptrdiff_t at) {
    Sums sums;
    ORVANE_UNROLL
    for (int r = 0; r < R; ++r) {
      ORVANE_UNROLL
      for (int v = 0; v < V; ++v) sums[r][v] = E::zero();
    }
    const std::ptrdiff_t lineTaps = std::ptrdiff_t(task.columns) * task.packedRows * E::tapSize;
    const std::ptrdiff_t planeTaps = lineTaps * (task.filterRows + task.packedRows - 1);
    const T* const* lines = task.lines + row;
    const T* taps = task.taps;
    for (int p = 0; p < task.planes; ++p, lines += task.planeStride, taps += planeTaps) {
      addFirstLines<0>(sums, lines, at, taps, lineTaps, task);
      for (int i = R - 1; i < task.filterRows; ++i) addLine<0, R>(sums, lines[i] + at, taps + i * lineTaps, task);
      addLastLines<0>(sums, lines + task.filterRows, at, taps + task.filterRows * lineTaps, lineTaps, task);
    }
    ORVANE_UNROLL
    for (int r = 0; r < R; ++r) {
      T* const out = task.out[row + r] + at * E::outPerIn;
      ORVANE_UNROLL
      for (int v = 0; v < V; ++v) E::store(out + v * E::lanes * E::outPerIn, sums[r][v]);
    }
  }

  /// Computes whole blocks from `at` on; returns where they end.
  static HWY_NOINLINE std::ptrdiff_t computeAll(const SumTask<T>& task, int row, std::ptrdiff_t at) {
    for (; at + width <= task.width; at += width) compute(task, row, at);
    return at;
  }
};

/// R output rows. What is left over at their ends takes single vectors, the last of which overlaps the one before; a
/// run that is narrower than a vector takes narrower ones.
template <class E, int R, int V>
void computeRows(const SumTask<typename E::T>& task, int row) {
  std::ptrdiff_t at = Block<E, R, V>::computeAll(task, row, 0);
  if constexpr (V > 1) at = Block<E, R, 1>::computeAll(task, row, at);
  if (at == task.width) return;
  if (task.width >= E::lanes) {
    Block<E, R, 1>::computeAll(task, row, task.width - E::lanes);
  } else if constexpr (E::Narrower::lanes < E::lanes) {
    computeRows<typename E::Narrower, R, 1>(task, row);
  }
}

template <class E, int R>
HWY_INLINE void computePasses(const SumTask<typename E::T>& task) {
  constexpr int V = vectorsFor<E>(R);
  int row = 0;
  for (; row + R <= task.rows; row += R) computeRows<E, R, V>(task, row);
  if (row < task.rows) computeRows<E, R, V>(task, task.rows - R);
}

template <class E>
void computeSums(const SumTask<typename E::T>& task) {
  switch (chooseRows(task.rows, task.filterRows)) {
    case 1: return computePasses<E, 1>(task);
    case 2: return computePasses<E, 2>(task);
    case 3: return computePasses<E, 3>(task);
    case 4: return computePasses<E, 4>(task);
    case 6: return computePasses<E, 6>(task);
    default:
      if constexpr (registers == 32) computePasses<E, 8>(task);
  }
}

template <class D>
HWY_INLINE void divideVector(D d, hn::TFromD<D>* sums, const hn::TFromD<D>* energies, hn::TFromD<D> filterNorm) {
  const auto divisor = hn::Mul(hn::Sqrt(hn::LoadU(d, energies)), hn::Set(d, filterNorm));
  const auto isZero = hn::Eq(divisor, hn::Zero(d));
  hn::StoreU(hn::IfThenZeroElse(isZero, hn::Div(hn::LoadU(d, sums), divisor)), d, sums);
}

template <class T>
void divideByNorms(T* sums, const T* energies, T filterNorm, std::ptrdiff_t count) {
  const hn::ScalableTag<T> d;
  const hn::CappedTag<T, 1> one;
  constexpr std::ptrdiff_t lanes = lanesOf<hn::ScalableTag<T>>;
  std::ptrdiff_t i = 0;
  for (; i + lanes <= count; i += lanes) divideVector(d, sums + i, energies + i, filterNorm);
  for (; i < count; ++i) divideVector(one, sums + i, energies + i, filterNorm);
}

template <class T>
constexpr SumKernels<T> makeSumKernels() {
  using D = hn::ScalableTag<T>;
  return {computeSums<RealReal<D>>,    computeSums<RealComplex<D>>,    computeSums<ComplexComplex<D>>,
          computeSums<RealSquares<D>>, computeSums<ComplexSquares<D>>, divideByNorms<T>};
}

}  // namespace HWY_NAMESPACE
}  // namespace BP::lanes
HWY_AFTER_NAMESPACE();

#endif
