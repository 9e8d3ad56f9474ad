// The kernels of fixed-point sums, and their choice. Included once for each target.
//
// The kernel of this file serves all casts. It walks the taps of a few vectors of outputs, tap by tap, so that each
// lane sees its sums in order. What casts meet is kept in vectors beside: least and greatest results, and the number of
// casts that lost nothing and of those that fitted. These counts are summed up row by row.

#if defined(ORVANE_LANES_FIXED_SUMS_INL) == defined(HWY_TARGET_TOGGLE)
#ifdef ORVANE_LANES_FIXED_SUMS_INL
#undef ORVANE_LANES_FIXED_SUMS_INL
#else
#define ORVANE_LANES_FIXED_SUMS_INL
#endif

#include <hwy/highway.h>

#include "orvane/lanes/fixed_blocks-inl.h"
#include "orvane/lanes/fixed_casts-inl.h"
#include "orvane/lanes/fixed_sums.h"

HWY_BEFORE_NAMESPACE();
namespace BP::lanes {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

template <class D, bool gathers>
class GeneralKernel {
  using V = hn::Vec<D>;
  using T = hn::TFromD<D>;
  static constexpr std::ptrdiff_t lanes = lanesOf<D>;
#if HWY_TARGET == HWY_AVX3
  static constexpr int vectors = 4;
#else
  static constexpr int vectors = 2;
#endif

 public:
  static HWY_NOINLINE void compute(const FixedSumTask<T>& task, FixedSumCounts& counts) {
    const GeneralKernel kernel(task);
    for (int r = 0; r < task.rows; ++r) kernel.computeRow(r, counts);
  }

 private:
  explicit HWY_INLINE GeneralKernel(const FixedSumTask<T>& given)
      : task(given), product(given.product), sum(given.sum) {}

  struct Counts {
    CastCounts<D> product, sum;
    HWY_INLINE Counts() {}
  };

  HWY_INLINE void computeRow(int r, FixedSumCounts& counts) const {
    Counts lanesCounts;
    std::ptrdiff_t at = 0;
    if (task.counted == nullptr) {
      for (; at + vectors * lanes <= task.width; at += vectors * lanes) {
        computeVectors<vectors, true>(r, at, lanesCounts);
      }
    }
    for (; at < task.width; at += lanes) computeVectors<1, !gathers>(r, at, lanesCounts);
    if constexpr (!gathers) return;
    const std::uint64_t taps = std::uint64_t(task.columns) * std::uint64_t(task.filterRows);
    lanesCounts.product.addTo(counts.product, countedProducts(task, r), true, true);
    lanesCounts.sum.addTo(counts.sum, taps * std::uint64_t(task.width), true, true);
  }

  /// Adds the taps to `count` vectors of outputs. Unless they are `whole`, what lies beyond the width does not count.
  template <int count, bool isWhole>
  HWY_INLINE void computeVectors(int r, std::ptrdiff_t at, Counts& counts) const {
    V s[std::size_t{count}];
    for (int v = 0; v < count; ++v) s[v] = hn::Zero(D());
    const V valid = isWhole ? hn::Zero(D()) : hn::VecFromMask(D(), hn::FirstN(D(), std::size_t(task.width - at)));
    const T* tap = task.taps;
    for (int j = 0; j < task.filterRows; ++j) {
      const T* x = task.lines[r + j] + at;
      const T* counted = isWhole || task.counted == nullptr ? nullptr : task.counted[r + j] + at;
      for (int c = 0; c < task.columns; ++c, ++x, ++tap) {
        const V h = hn::Set(D(), *tap);
        V countedHere = valid;
        if constexpr (!isWhole) {
          if (counted != nullptr) countedHere = hn::And(valid, hn::LoadU(D(), counted++));
        }
        for (int v = 0; v < count; ++v) {
          const V exact = hn::ShiftLeftSame(exactProduct(D(), hn::LoadU(D(), x + v * lanes), h), task.append);
          const V p = cast<isWhole>(product, exact, counts.product, countedHere);
          const V total = hn::Add(hn::ShiftLeftSame(s[v], task.ownAppend), hn::ShiftLeftSame(p, task.otherAppend));
          s[v] = cast<isWhole>(sum, total, counts.sum, valid);
        }
      }
    }
    for (int v = 0; v < count; ++v) hn::StoreU(s[v], D(), task.out[r] + at + v * lanes);
  }

  template <bool isWhole>
  static HWY_INLINE V cast(const CastNumbers<D>& by, V exact, CastCounts<D>& counts, V counted) {
    const V rounded = by.template rounded<false>(exact), result = by.fitted(rounded);
    if constexpr (gathers) {
      counts.template range<isWhole>(result, counted);
      CastCounts<D>::template addWhere<isWhole>(counts.lossless, by.losesNothing(exact), counted);
      CastCounts<D>::template addWhere<isWhole>(counts.fitting, hn::Eq(result, rounded), counted);
    }
    return result;
  }

  const FixedSumTask<T>& task;
  CastNumbers<D> product, sum;
};

template <class D, FixedForm form, class Task>
void sumInBlocks(const Task& task, FixedSumCounts& counts) {
  if (task.gathers && task.ranges) return FixedBlocks<D, form, SumCounts::all>::compute(task, counts);
  if constexpr (form != FixedForm::exact) {
    if (task.gathers) return FixedBlocks<D, form, SumCounts::overflows>::compute(task, counts);
  }
  FixedBlocks<D, form, SumCounts::nothing>::compute(task, counts);
}

template <class T>
void sumFixedOnTarget(const FixedSumTask<T>& task, FixedSumCounts& counts) {
  using D = hn::ScalableTag<T>;
  switch (task.form) {
    case FixedForm::exact: return sumInBlocks<D, FixedForm::exact>(task, counts);
    case FixedForm::quickRound: return sumInBlocks<D, FixedForm::quickRound>(task, counts);
    case FixedForm::round: return sumInBlocks<D, FixedForm::round>(task, counts);
    case FixedForm::quickRoundWord:
      if constexpr (sizeof(T) == 4) sumInBlocks<D, FixedForm::quickRoundWord>(task, counts);
      return;
    case FixedForm::roundWord:
      if constexpr (sizeof(T) == 4) sumInBlocks<D, FixedForm::roundWord>(task, counts);
      return;
    case FixedForm::any:
      if (task.gathers) return GeneralKernel<D, true>::compute(task, counts);
      return GeneralKernel<D, false>::compute(task, counts);
  }
}

}  // namespace HWY_NAMESPACE
}  // namespace BP::lanes
HWY_AFTER_NAMESPACE();

#endif
