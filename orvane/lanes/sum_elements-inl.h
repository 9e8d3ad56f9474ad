// What is done with each tap, for each pair of elements. Included once for each target.
//
// An elements class names, for vectors of tag D,
//   In    a loaded vector of input, good for all output rows      Tap   one tap, in all lanes
//   Sum   the accumulators of as many outputs as a vector of input stands for
// the vector registers that each of them takes, the values of input in a vector (`lanes`), those of a packed tap
// (`tapSize`) and the parts in which a tap is loaded. `Narrower` is the same for fewer lanes, or the class itself.
// Everything is inlined by force into the loops.

#if defined(ORVANE_LANES_SUM_ELEMENTS_INL) == defined(HWY_TARGET_TOGGLE)
#ifdef ORVANE_LANES_SUM_ELEMENTS_INL
#undef ORVANE_LANES_SUM_ELEMENTS_INL
#else
#define ORVANE_LANES_SUM_ELEMENTS_INL
#endif

#include <hwy/highway.h>

#include <cstddef>
#include <cstring>
#include <type_traits>

#include "orvane/core/element.h"
#include "orvane/lanes/sum_kernels.h"

HWY_BEFORE_NAMESPACE();
namespace BP::lanes {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

/// Keeps a value in a register from here on. Compilers otherwise load it again as the memory operand of each operation
/// that uses it, which costs up to half of the speed.
template <class V>
HWY_INLINE void keepInRegister(V& v) {
#if HWY_TARGET == HWY_AVX3 || HWY_TARGET == HWY_AVX3_DL
  asm("" : "+v"(v.raw));
#elif HWY_ARCH_X86
  asm("" : "+x"(v.raw));
#elif HWY_ARCH_ARM_A64 && HWY_TARGET == HWY_NEON
  asm("" : "+w"(v.raw));
#else
  (void)v;
#endif
}

template <class D>
constexpr std::ptrdiff_t lanesOf = static_cast<std::ptrdiff_t>(hn::MaxLanes(D()));

/// Tag for a run that is narrower than a vector: four lanes, or, if there are no more than four, `least`.
template <class D, std::ptrdiff_t least>
using NarrowerTag = hn::CappedTag<hn::TFromD<D>, (lanesOf<D> > 4 ? 4 : std::size_t{least})>;

/// Real input and real filter: sum := sum + x * h.
template <class Tag>
struct RealReal {
  using D = Tag;
  using T = hn::TFromD<D>;
  using V = hn::Vec<D>;
  using Narrower = RealReal<NarrowerTag<D, 1>>;
  struct In {
    V x;
    HWY_INLINE void keep() { keepInRegister(x); }
  };
  struct Tap {
    V h;
    HWY_INLINE void keep() { keepInRegister(h); }
  };
  struct Sum {
    V sum;
  };
  static constexpr int inRegisters = 1, tapRegisters = 1, sumRegisters = 1, tapSize = 1, tapParts = 1;
  static constexpr bool hasOneColumnForm = true;
  static constexpr std::ptrdiff_t lanes = lanesOf<D>;

  static HWY_INLINE Sum zero() { return {hn::Zero(D())}; }
  static HWY_INLINE In load(const T* p) { return {hn::LoadU(D(), p)}; }
  static HWY_INLINE Tap loadTap(const T* p) { return {hn::Set(D(), *p)}; }
  template <int part>
  static HWY_INLINE void add(Sum& s, const In& in, const Tap& tap) {
    s.sum = hn::Add(s.sum, hn::Mul(in.x, tap.h));
  }
  static HWY_INLINE void store(const SumTask<T>& task, int row, std::ptrdiff_t at, const Sum& s) {
    hn::StoreU(s.sum, D(), task.out[row] + at);
  }
  static HWY_INLINE V square(const In& in) { return hn::Mul(in.x, in.x); }
};

/// Real input and complex filter: an accumulator for each part.
///
/// The plain form is re := (u h.re - h.im 0) + re and im := im + (u h.im + h.re 0). The products by 0 can be left out
/// where both parts of the tap are finite: they are then +0 or -0 and change at most the sign of a zero u h.re, and
/// adding a zero of either sign changes no sum, since a sum that starts at +0 is never -0 (x + y rounds to -0 only if
/// both are -0). A part that is not finite makes the other sum NaN, whatever the input; packing sees to that.
template <class Tag>
struct RealComplex {
  using D = Tag;
  using T = hn::TFromD<D>;
  using V = hn::Vec<D>;
  using Narrower = RealComplex<NarrowerTag<D, 1>>;
  using In = typename RealReal<D>::In;
  using Tap = typename RealReal<D>::Tap;
  struct Sum {
    V part[2];
  };
  static constexpr int inRegisters = 1, tapRegisters = 1, sumRegisters = 2, tapSize = 2, tapParts = 2;
  static constexpr bool hasOneColumnForm = false;
  static constexpr std::ptrdiff_t lanes = lanesOf<D>;

  static HWY_INLINE Sum zero() { return {{hn::Zero(D()), hn::Zero(D())}}; }
  static HWY_INLINE In load(const T* p) { return RealReal<D>::load(p); }
  static HWY_INLINE Tap loadTap(const T* p) { return RealReal<D>::loadTap(p); }
  template <int part>
  static HWY_INLINE void add(Sum& s, const In& in, const Tap& tap) {
    s.part[part] = hn::Add(s.part[part], hn::Mul(in.x, tap.h));
  }
  static HWY_INLINE void store(const SumTask<T>& task, int row, std::ptrdiff_t at, const Sum& s) {
    hn::StoreInterleaved2(s.part[0], s.part[1], D(), task.out[row] + 2 * at);
  }
  static HWY_INLINE V square(const In& in) { return hn::Mul(in.x, in.x); }
};

#if HWY_TARGET != HWY_SCALAR

/// (p[0], p[1]) in all pairs of lanes.
template <class D>
HWY_INLINE hn::Vec<D> loadPair(D d, const hn::TFromD<D>* p) {
  if constexpr (sizeof(hn::TFromD<D>) == sizeof(double)) {
    return hn::LoadDup128(d, p);
  } else {
    double both;
    std::memcpy(&both, p, sizeof both);
    return hn::BitCast(d, hn::Set(hn::Repartition<double, D>(), both));
  }
}

/// Complex input and real filter, the parts side by side as they are stored; the square is |x|^2 in both lanes of a
/// pair.
template <class Tag>
struct ComplexReal : RealReal<Tag> {
  using D = Tag;
  using typename RealReal<D>::V;
  using typename RealReal<D>::In;
  using Narrower = ComplexReal<NarrowerTag<D, 2>>;
  static HWY_INLINE V square(const In& in) {
    const V squares = hn::Mul(in.x, in.x);
    return hn::Add(squares, hn::Reverse2(D(), squares));
  }
};

/// Complex input and complex filter: with x' = (x.im, x.re), sum := sum + (x (h.re, h.re) + x' (-h.im, h.im)). Adding a
/// negated product is the subtraction of the plain form, bit for bit. All output rows share x and x'.
template <class Tag>
struct ComplexComplex {
  using D = Tag;
  using T = hn::TFromD<D>;
  using V = hn::Vec<D>;
  using Narrower = ComplexComplex<NarrowerTag<D, 2>>;
  struct In {
    V x, swapped;
    HWY_INLINE void keep() { keepInRegister(x), keepInRegister(swapped); }
  };
  struct Tap {
    V re, im;
    HWY_INLINE void keep() { keepInRegister(re), keepInRegister(im); }
  };
  using Sum = typename RealReal<D>::Sum;
  static constexpr int inRegisters = 2, tapRegisters = 2, sumRegisters = 1, tapSize = 3, tapParts = 1;
  static constexpr bool hasOneColumnForm = false;
  static constexpr std::ptrdiff_t lanes = lanesOf<D>;

  static HWY_INLINE Sum zero() { return RealReal<D>::zero(); }
  static HWY_INLINE In load(const T* p) {
    const V x = hn::LoadU(D(), p);
    return {x, hn::Reverse2(D(), x)};
  }
  static HWY_INLINE Tap loadTap(const T* p) { return {hn::Set(D(), p[0]), loadPair(D(), p + 1)}; }
  template <int part>
  static HWY_INLINE void add(Sum& s, const In& in, const Tap& tap) {
    s.sum = hn::Add(s.sum, hn::Add(hn::Mul(in.x, tap.re), hn::Mul(in.swapped, tap.im)));
  }
  static HWY_INLINE void store(const SumTask<T>& task, int row, std::ptrdiff_t at, const Sum& s) {
    RealReal<D>::store(task, row, at, s);
  }
  static HWY_INLINE V square(const In& in) { return ComplexReal<D>::square({in.x}); }
};

#else  // A vector is one value here, so that a complex element takes two.

template <class Tag>
struct ComplexComplex {
  using D = Tag;
  using T = hn::TFromD<D>;
  using V = hn::Vec<D>;
  using Narrower = ComplexComplex;
  struct In {
    V re, im;
    HWY_INLINE void keep() { keepInRegister(re), keepInRegister(im); }
  };
  using Tap = In;
  using Sum = typename RealComplex<D>::Sum;
  static constexpr int inRegisters = 2, tapRegisters = 2, sumRegisters = 2, tapSize = 3, tapParts = 1;
  static constexpr bool hasOneColumnForm = false;
  static constexpr std::ptrdiff_t lanes = 2;

  static HWY_INLINE Sum zero() { return RealComplex<D>::zero(); }
  static HWY_INLINE In load(const T* p) { return {hn::Set(D(), p[0]), hn::Set(D(), p[1])}; }
  static HWY_INLINE Tap loadTap(const T* p) { return {hn::Set(D(), p[0]), hn::Set(D(), p[2])}; }
  template <int part>
  static HWY_INLINE void add(Sum& s, const In& in, const Tap& tap) {
    s.part[0] = hn::Add(hn::Sub(hn::Mul(in.re, tap.re), hn::Mul(in.im, tap.im)), s.part[0]);
    s.part[1] = hn::Add(s.part[1], hn::Add(hn::Mul(in.re, tap.im), hn::Mul(tap.re, in.im)));
  }
  static HWY_INLINE void store(const SumTask<T>& task, int row, std::ptrdiff_t at, const Sum& s) {
    hn::StoreInterleaved2(s.part[0], s.part[1], D(), task.out[row] + at);
  }
  static HWY_INLINE V square(const In& in) { return hn::Add(hn::Mul(in.re, in.re), hn::Mul(in.im, in.im)); }
};

template <class Tag>
struct ComplexReal : ComplexComplex<Tag> {
  using D = Tag;
  using typename ComplexComplex<D>::T;
  using typename ComplexComplex<D>::In;
  using typename ComplexComplex<D>::Sum;
  using Tap = typename RealReal<D>::Tap;
  using Narrower = ComplexReal;
  static constexpr int tapRegisters = 1, tapSize = 1;

  static HWY_INLINE Tap loadTap(const T* p) { return RealReal<D>::loadTap(p); }
  template <int part>
  static HWY_INLINE void add(Sum& s, const In& in, const Tap& tap) {
    s.part[0] = hn::Add(s.part[0], hn::Mul(in.re, tap.h));
    s.part[1] = hn::Add(s.part[1], hn::Mul(in.im, tap.h));
  }
};

#endif

/// The elements `E` with the energy of the window beside the sum: energy := energy + |x|^2, whose square all output
/// rows share.
template <class E>
struct WithEnergy : E {
  using typename E::D;
  using typename E::T;
  using typename E::V;
  struct In {
    typename E::In in;
    V square;
    HWY_INLINE void keep() { in.keep(), keepInRegister(square); }
  };
  struct Sum {
    typename E::Sum sum;
    V energy;
  };
  static constexpr int inRegisters = E::inRegisters + 1, sumRegisters = E::sumRegisters + 1;
  static constexpr bool hasOneColumnForm = false;

  static HWY_INLINE Sum zero() { return {E::zero(), hn::Zero(D())}; }
  static HWY_INLINE In load(const T* p) {
    const typename E::In in = E::load(p);
    return {in, E::square(in)};
  }
  template <int part>
  static HWY_INLINE void add(Sum& s, const In& in, const typename E::Tap& tap) {
    E::template add<part>(s.sum, in.in, tap);
    if constexpr (part == 0) s.energy = hn::Add(s.energy, in.square);
  }
  /// sqrt(energy) * norm of the filter.
  static HWY_INLINE V divisor(const SumTask<T>& task, const Sum& s) {
    return hn::Mul(hn::Sqrt(s.energy), hn::Set(D(), task.filterNorm));
  }
};

/// Real elements; what is stored is sum / (sqrt(energy) * norm of the filter), or 0 where the divisor is 0.
template <class Tag>
struct Normalised : WithEnergy<RealReal<Tag>> {
  using D = Tag;
  using typename WithEnergy<RealReal<D>>::T;
  using typename WithEnergy<RealReal<D>>::Sum;
  using Narrower = Normalised<NarrowerTag<D, 1>>;
  static HWY_INLINE void store(const SumTask<T>& task, int row, std::ptrdiff_t at, const Sum& s) {
    const auto divisor = WithEnergy<RealReal<D>>::divisor(task, s);
    const auto quotient = hn::Div(s.sum.sum, divisor);
    hn::StoreU(hn::IfThenZeroElse(hn::Eq(divisor, hn::Zero(D())), quotient), D(), task.out[row] + at);
  }
};

/// The same of windows less their means: sum := sum + (x - mean) * h and energy := energy + (x - mean)^2, with the mean
/// of each output's own window.
template <class Tag>
struct Centred : RealReal<Tag> {
  using D = Tag;
  using typename RealReal<D>::T;
  using typename RealReal<D>::V;
  using typename RealReal<D>::In;
  using typename RealReal<D>::Tap;
  using Narrower = Centred<NarrowerTag<D, 1>>;
  struct Sum {
    V sum, energy, mean;
  };
  static constexpr int tapRegisters = 2, sumRegisters = 3;
  static constexpr bool hasOneColumnForm = false;

  static HWY_INLINE Sum zero() { return {hn::Zero(D()), hn::Zero(D()), hn::Zero(D())}; }
  static HWY_INLINE Sum begin(const SumTask<T>& task, int row, std::ptrdiff_t at) {
    return {hn::Zero(D()), hn::Zero(D()), hn::LoadU(D(), task.means[row] + at)};
  }
  template <int part>
  static HWY_INLINE void add(Sum& s, const In& in, const Tap& tap) {
    const V difference = hn::Sub(in.x, s.mean);
    s.sum = hn::Add(s.sum, hn::Mul(difference, tap.h));
    s.energy = hn::Add(s.energy, hn::Mul(difference, difference));
  }
  static HWY_INLINE void store(const SumTask<T>& task, int row, std::ptrdiff_t at, const Sum& s) {
    Normalised<D>::store(task, row, at, {{s.sum}, s.energy});
  }
};

/// Complex sums divided likewise: ((re + im 0) / d, (im - re 0) / d) within the bounds of `divideBy`, one by one where
/// a value of the vector is out of them.
template <class E>
struct NormalisedComplex : WithEnergy<E> {
  using typename E::D;
  using typename E::T;
  using typename E::V;
  using typename WithEnergy<E>::Sum;
  using Narrower = NormalisedComplex<typename E::Narrower>;
  using Mask = hn::Mask<D>;
  /// Whether a vector of sums holds both parts of each, side by side.
  static constexpr bool hasPairs = requires(typename E::Sum s) { s.sum; };

  static HWY_INLINE void store(const SumTask<T>& task, int row, std::ptrdiff_t at, const Sum& s) {
    const V divisor = WithEnergy<E>::divisor(task, s), most = hn::Set(D(), greatestDividend<T>);
    const Mask isNull = hn::Eq(divisor, hn::Zero(D()));
    const Mask takesDivisor = hn::And(hn::Ge(divisor, hn::Set(D(), 1 / greatestDividend<T>)), hn::Le(divisor, most));
    const auto isWithin = [&](V x) HWY_ATTR { return hn::Le(hn::Abs(x), most); };
    const auto quotient = [&](V x, V zero)
                              HWY_ATTR { return hn::IfThenZeroElse(isNull, hn::Div(hn::Add(x, zero), divisor)); };
    Mask isSafe = hn::Or(isNull, takesDivisor);
    typename E::Sum result;
    if constexpr (hasPairs) {
      const V x = s.sum.sum, signs = hn::OddEven(hn::Set(D(), T(-0.0)), hn::Zero(D()));
      isSafe = hn::And(isSafe, isWithin(x));
      result.sum = quotient(x, hn::Mul(hn::Reverse2(D(), x), signs));
    } else {
      const V re = s.sum.part[0], im = s.sum.part[1];
      isSafe = hn::And(isSafe, hn::And(isWithin(re), isWithin(im)));
      result.part[0] = quotient(re, hn::Mul(im, hn::Zero(D())));
      result.part[1] = quotient(im, hn::Mul(re, hn::Set(D(), T(-0.0))));
    }
    if (HWY_LIKELY(hn::AllTrue(D(), isSafe))) return E::store(task, row, at, result);
    storeOneByOne(task, row, at, s);
  }

  static HWY_NOINLINE void storeOneByOne(const SumTask<T>& task, int row, std::ptrdiff_t at, const Sum& s) {
    constexpr std::ptrdiff_t count = lanesOf<D>, step = hasPairs ? 2 : 1;
    T energies[std::size_t{count}];
    hn::StoreU(s.energy, D(), energies);
    E::store(task, row, at, s.sum);
    T* const out = task.out[row] + (std::is_same_v<E, RealComplex<D>> ? 2 * at : at);
    for (std::ptrdiff_t i = 0; i < count; i += step) task.divide(out + 2 / step * i, energies[i], task.filterNorm);
  }
};

}  // namespace HWY_NAMESPACE
}  // namespace BP::lanes
HWY_AFTER_NAMESPACE();

#endif
