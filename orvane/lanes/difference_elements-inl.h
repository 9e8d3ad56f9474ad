// What is done with each tap of a template, for each metric of differences. Included once for each target.
//
// These are elements classes as in sum_elements-inl.h. A vector of input holds as many outputs as a vector has lanes;
// the parts of complex elements lie in vectors of their own.

#if defined(ORVANE_LANES_DIFFERENCE_ELEMENTS_INL) == defined(HWY_TARGET_TOGGLE)
#ifdef ORVANE_LANES_DIFFERENCE_ELEMENTS_INL
#undef ORVANE_LANES_DIFFERENCE_ELEMENTS_INL
#else
#define ORVANE_LANES_DIFFERENCE_ELEMENTS_INL
#endif

#include <hwy/highway.h>

#include <cstddef>

#include "orvane/lanes/sum_elements-inl.h"
#include "orvane/lanes/sum_kernels.h"
#include "orvane/lanes/sums.h"

HWY_BEFORE_NAMESPACE();
namespace BP::lanes {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

/// a > b ? a : b in each lane, so that a NaN on either side leaves b.
template <class D>
HWY_INLINE hn::Vec<D> greaterOf(D /*tag*/, hn::Vec<D> a, hn::Vec<D> b) {
#if HWY_ARCH_X86 && HWY_TARGET != HWY_SCALAR
  return hn::Max(a, b);  // the instruction's own rule
#else
  return hn::IfThenElse(hn::Gt(a, b), a, b);
#endif
}

/// Real elements. |a - t| is the oriented difference of the plain loop: both are exact negatives of each other but for
/// equal operands, which give +0 either way.
template <class Tag, Term term>
struct RealDifference {
  using D = Tag;
  using T = hn::TFromD<D>;
  using V = hn::Vec<D>;
  using Narrower = RealDifference<NarrowerTag<D, 1>, term>;
  using In = typename RealReal<D>::In;
  using Tap = typename RealReal<D>::Tap;
  using Sum = typename RealReal<D>::Sum;
  static constexpr int inRegisters = 1, tapRegisters = 2, sumRegisters = 1, tapSize = 1, tapParts = 1;
  static constexpr int mostRows = 4;
  static constexpr bool hasOneColumnForm = false;
  static constexpr std::ptrdiff_t lanes = lanesOf<D>;

  static HWY_INLINE Sum zero() { return {hn::Zero(D())}; }
  static HWY_INLINE In load(const T* p) { return RealReal<D>::load(p); }
  static HWY_INLINE Tap loadTap(const T* p) { return RealReal<D>::loadTap(p); }
  template <int part>
  static HWY_INLINE void add(Sum& s, const In& in, const Tap& tap) {
    const V d = hn::Sub(in.x, tap.h);
    if constexpr (term == Term::absoluteDifference) {
      s.sum = hn::Add(s.sum, hn::Abs(d));
    } else if constexpr (term == Term::squaredDifference) {
      s.sum = hn::Add(s.sum, hn::Mul(d, d));
    } else {
      s.sum = greaterOf(D(), hn::Abs(d), s.sum);
    }
  }
  /// The greatest difference is NaN if the first one is, and ignores every other NaN, as the sum did.
  static HWY_INLINE V result(const T* firstInput, const T* taps, const Sum& s) {
    if constexpr (term != Term::greatestDifference) return s.sum;
    const V first = hn::Sub(hn::LoadU(D(), firstInput), hn::Set(D(), *taps));
    return hn::IfThenElse(hn::IsNaN(first), first, s.sum);
  }
  static HWY_INLINE void store(const SumTask<T>& task, int row, std::ptrdiff_t at, const Sum& s) {
    hn::StoreU(result(task.lines[row] + at, task.taps, s), D(), task.out[row] + at);
  }
};

/// Complex elements; the image is real where `complexInput` is false. A packed tap is re, im and its energy re^2 +
/// im^2. A real element is complex with imaginary part 0, whose differences have the stated bits: x - 0 is x.
template <class Tag, Term term, bool complexInput>
struct ComplexDifference {
  using D = Tag;
  using T = hn::TFromD<D>;
  using V = hn::Vec<D>;
  using Narrower = ComplexDifference<NarrowerTag<D, 1>, term, complexInput>;
  static constexpr bool isOriented = term != Term::squaredDifference;
  static constexpr bool isGreatest = term == Term::greatestDifference;
  struct In {
    V re, im, energy;
    HWY_INLINE void keep() { keepInRegister(re), keepInRegister(im), keepInRegister(energy); }
  };
  using Tap = In;
  struct Sum {
    V re, im, energy;
  };
  static constexpr int inRegisters = 3, tapRegisters = 4, sumRegisters = isGreatest ? 3 : 2, tapSize = 3, tapParts = 1;
  static constexpr int mostRows = 2;
  static constexpr bool hasOneColumnForm = false;
  static constexpr std::ptrdiff_t lanes = lanesOf<D> * (complexInput ? 2 : 1);

  static HWY_INLINE V energyOf(V re, V im) { return hn::Add(hn::Mul(re, re), hn::Mul(im, im)); }

  static HWY_INLINE Sum zero() { return {hn::Zero(D()), hn::Zero(D()), hn::Zero(D())}; }
  static HWY_INLINE In load(const T* p) {
    In in;
    if constexpr (complexInput) {
      hn::LoadInterleaved2(D(), p, in.re, in.im);
    } else {
      in.re = hn::LoadU(D(), p), in.im = hn::Zero(D());
    }
    in.energy = isOriented ? energyOf(in.re, in.im) : hn::Zero(D());
    return in;
  }
  static HWY_INLINE Tap loadTap(const T* p) {
    return {hn::Set(D(), p[0]), hn::Set(D(), p[1]), isOriented ? hn::Set(D(), p[2]) : hn::Zero(D())};
  }
  /// a - t where a has the greater energy, else t - a; always a - t for squares.
  static HWY_INLINE In difference(const In& a, const Tap& t) {
    const V re = hn::Sub(a.re, t.re), im = hn::Sub(a.im, t.im);
    if constexpr (!isOriented) return {re, im, re};
    const auto inputIsGreater = hn::Gt(a.energy, t.energy);
    return {hn::IfThenElse(inputIsGreater, re, hn::Sub(t.re, a.re)),
            hn::IfThenElse(inputIsGreater, im, hn::Sub(t.im, a.im)), re};
  }
  template <int part>
  static HWY_INLINE void add(Sum& s, const In& in, const Tap& tap) {
    const In d = difference(in, tap);
    if constexpr (term == Term::absoluteDifference) {
      s.re = hn::Add(s.re, d.re), s.im = hn::Add(s.im, d.im);
    } else if constexpr (term == Term::squaredDifference) {
      s.re = hn::Add(s.re, hn::Sub(hn::Mul(d.re, d.re), hn::Mul(d.im, d.im)));
      s.im = hn::Add(s.im, hn::Mul(hn::Add(d.re, d.re), d.im));
    } else {
      const V energy = energyOf(d.re, d.im);
      const auto isMore = hn::Gt(energy, s.energy);
      s.re = hn::IfThenElse(isMore, d.re, s.re), s.im = hn::IfThenElse(isMore, d.im, s.im);
      s.energy = hn::IfThenElse(isMore, energy, s.energy);
    }
  }
  /// The greatest difference is the first one if that has an energy of NaN, or if no energy exceeds 0.
  static HWY_INLINE void store(const SumTask<T>& task, int row, std::ptrdiff_t at, Sum s) {
    if constexpr (isGreatest) {
      const In first = difference(load(task.lines[row] + at), loadTap(task.taps));
      const auto isFirst = hn::Or(hn::IsNaN(energyOf(first.re, first.im)), hn::Eq(s.energy, hn::Zero(D())));
      s.re = hn::IfThenElse(isFirst, first.re, s.re), s.im = hn::IfThenElse(isFirst, first.im, s.im);
    }
    hn::StoreInterleaved2(s.re, s.im, D(), task.out[row] + (complexInput ? at : 2 * at));
  }
};

}  // namespace HWY_NAMESPACE
}  // namespace BP::lanes
HWY_AFTER_NAMESPACE();

#endif
