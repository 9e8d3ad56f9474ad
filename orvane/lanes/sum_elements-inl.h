// What is done with each tap, for each pair of elements. Included once for each target.
//
// An elements class names, for vectors of tag D,
//   In    a loaded vector of input, good for all output rows      Tap   one tap, in all lanes
//   Sum   the accumulators of as many outputs as a vector of input stands for
// the vector registers that each of them takes, the values of input in a vector (`lanes`), those of a packed tap
// (`tapSize`), and the values of output for one of input (`outPerIn`). `Narrower` is the same for half as many lanes,
// or the class itself where none is left. Everything is inlined by force into the loops.

#if defined(ORVANE_LANES_SUM_ELEMENTS_INL) == defined(HWY_TARGET_TOGGLE)
#ifdef ORVANE_LANES_SUM_ELEMENTS_INL
#undef ORVANE_LANES_SUM_ELEMENTS_INL
#else
#define ORVANE_LANES_SUM_ELEMENTS_INL
#endif

#include <hwy/highway.h>

#include <cstddef>
#include <cstring>

HWY_BEFORE_NAMESPACE();
namespace BP::lanes {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

/// Keeps a value in a register from here on. Compilers otherwise load it again as the memory operand of each operation
/// that uses it, which costs up to half of the speed.
template <class V>
HWY_INLINE void keepInRegister(V& v) {
#if HWY_TARGET == HWY_AVX3
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

/// `E` for half the lanes, as long as there are at least `least`.
template <template <class> class E, class D, std::ptrdiff_t least>
using NarrowerElements = E<std::conditional_t<(lanesOf<D> > least), hn::Half<D>, D>>;

/// Real input and real filter: sum := sum + x * h.
template <class D>
struct RealReal {
  using T = hn::TFromD<D>;
  using V = hn::Vec<D>;
  using Narrower = NarrowerElements<RealReal, D, 1>;
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
  static constexpr int inRegisters = 1, tapRegisters = 1, sumRegisters = 1, tapSize = 1, outPerIn = 1;
  static constexpr std::ptrdiff_t lanes = lanesOf<D>;

  static HWY_INLINE Sum zero() { return {hn::Zero(D())}; }
  static HWY_INLINE In load(const T* p) { return {hn::LoadU(D(), p)}; }
  static HWY_INLINE Tap loadTap(const T* p) { return {hn::Set(D(), *p)}; }
  static HWY_INLINE void add(Sum& s, const In& in, const Tap& tap) { s.sum = hn::Add(s.sum, hn::Mul(in.x, tap.h)); }
  static HWY_INLINE void store(T* p, const Sum& s) { hn::StoreU(s.sum, D(), p); }
};

/// Real input and complex filter: an accumulator for each part.
///
/// The plain form is re := (u h.re - h.im 0) + re and im := im + (u h.im + h.re 0). The products by 0 can be left out
/// where both parts of the tap are finite: they are then +0 or -0 and change at most the sign of a zero u h.re, and
/// adding a zero of either sign changes no sum, since a sum that starts at +0 is never -0 (x + y rounds to -0 only if
/// both are -0). A part that is not finite makes the other sum NaN, whatever the input; packing sees to that.
template <class D>
struct RealComplex {
  using T = hn::TFromD<D>;
  using V = hn::Vec<D>;
  using Narrower = NarrowerElements<RealComplex, D, 1>;
  struct In {
    V x;
    HWY_INLINE void keep() { keepInRegister(x); }
  };
  struct Tap {
    V re, im;
    HWY_INLINE void keep() { keepInRegister(re), keepInRegister(im); }
  };
  struct Sum {
    V re, im;
  };
  static constexpr int inRegisters = 1, tapRegisters = 2, sumRegisters = 2, tapSize = 2, outPerIn = 2;
  static constexpr std::ptrdiff_t lanes = lanesOf<D>;

  static HWY_INLINE Sum zero() { return {hn::Zero(D()), hn::Zero(D())}; }
  static HWY_INLINE In load(const T* p) { return {hn::LoadU(D(), p)}; }
  static HWY_INLINE Tap loadTap(const T* p) { return {hn::Set(D(), p[0]), hn::Set(D(), p[1])}; }
  static HWY_INLINE void add(Sum& s, const In& in, const Tap& tap) {
    s.re = hn::Add(s.re, hn::Mul(in.x, tap.re));
    s.im = hn::Add(s.im, hn::Mul(in.x, tap.im));
  }
  static HWY_INLINE void store(T* p, const Sum& s) { hn::StoreInterleaved2(s.re, s.im, D(), p); }
};

/// Real input: energy := energy + x * x; all output rows share the square.
template <class D>
struct RealSquares {
  using T = hn::TFromD<D>;
  using V = hn::Vec<D>;
  using Narrower = NarrowerElements<RealSquares, D, 1>;
  struct In {
    V square;
    HWY_INLINE void keep() {}
  };
  struct Tap {
    HWY_INLINE void keep() {}
  };
  struct Sum {
    V sum;
  };
  static constexpr int inRegisters = 1, tapRegisters = 0, sumRegisters = 1, tapSize = 0, outPerIn = 1;
  static constexpr std::ptrdiff_t lanes = lanesOf<D>;

  static HWY_INLINE Sum zero() { return {hn::Zero(D())}; }
  static HWY_INLINE In load(const T* p) {
    const V x = hn::LoadU(D(), p);
    return {hn::Mul(x, x)};
  }
  static HWY_INLINE Tap loadTap(const T* /*none*/) { return {}; }
  static HWY_INLINE void add(Sum& s, const In& in, const Tap& /*none*/) { s.sum = hn::Add(s.sum, in.square); }
  static HWY_INLINE void store(T* p, const Sum& s) { hn::StoreU(s.sum, D(), p); }
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

/// Complex input and complex filter, the parts side by side as they are stored: with x' = (x.im, x.re),
/// sum := sum + (x (h.re, h.re) + x' (-h.im, h.im)). Adding a negated product is the subtraction of the plain form, bit
/// for bit. All output rows share x and x'.
template <class D>
struct ComplexComplex {
  using T = hn::TFromD<D>;
  using V = hn::Vec<D>;
  using Narrower = NarrowerElements<ComplexComplex, D, 2>;
  struct In {
    V x, swapped;
    HWY_INLINE void keep() { keepInRegister(x), keepInRegister(swapped); }
  };
  struct Tap {
    V re, im;
    HWY_INLINE void keep() { keepInRegister(re), keepInRegister(im); }
  };
  struct Sum {
    V sum;
  };
  static constexpr int inRegisters = 2, tapRegisters = 2, sumRegisters = 1, tapSize = 3, outPerIn = 1;
  static constexpr std::ptrdiff_t lanes = lanesOf<D>;

  static HWY_INLINE Sum zero() { return {hn::Zero(D())}; }
  static HWY_INLINE In load(const T* p) {
    const V x = hn::LoadU(D(), p);
    return {x, hn::Reverse2(D(), x)};
  }
  static HWY_INLINE Tap loadTap(const T* p) { return {hn::Set(D(), p[0]), loadPair(D(), p + 1)}; }
  static HWY_INLINE void add(Sum& s, const In& in, const Tap& tap) {
    s.sum = hn::Add(s.sum, hn::Add(hn::Mul(in.x, tap.re), hn::Mul(in.swapped, tap.im)));
  }
  static HWY_INLINE void store(T* p, const Sum& s) { hn::StoreU(s.sum, D(), p); }
};

/// Complex input: energy := energy + (x.re^2 + x.im^2), in both lanes of a pair.
template <class D>
struct ComplexSquares : RealSquares<D> {
  using T = hn::TFromD<D>;
  using V = hn::Vec<D>;
  using Narrower = NarrowerElements<ComplexSquares, D, 2>;
  using typename RealSquares<D>::In;
  using typename RealSquares<D>::Sum;

  static HWY_INLINE In load(const T* p) {
    const V x = hn::LoadU(D(), p);
    const V square = hn::Mul(x, x);
    return {hn::Add(square, hn::Reverse2(D(), square))};
  }
  static HWY_INLINE void store(T* p, const Sum& s) { hn::StoreU(hn::OddEven(hn::Zero(D()), s.sum), D(), p); }
};

#else  // A vector is one value, so that a complex one takes two.

template <class D>
struct ComplexComplex {
  using T = hn::TFromD<D>;
  using Narrower = ComplexComplex;
  struct In {
    T re, im;
    HWY_INLINE void keep() {}
  };
  struct Tap {
    T re, im;
    HWY_INLINE void keep() {}
  };
  struct Sum {
    T re, im;
  };
  static constexpr int inRegisters = 2, tapRegisters = 2, sumRegisters = 2, tapSize = 3, outPerIn = 1;
  static constexpr std::ptrdiff_t lanes = 2;

  static HWY_INLINE Sum zero() { return {0, 0}; }
  static HWY_INLINE In load(const T* p) { return {p[0], p[1]}; }
  static HWY_INLINE Tap loadTap(const T* p) { return {p[0], p[2]}; }
  static HWY_INLINE void add(Sum& s, const In& in, const Tap& tap) {
    s.re = (in.re * tap.re - in.im * tap.im) + s.re;
    s.im = s.im + (in.re * tap.im + tap.re * in.im);
  }
  static HWY_INLINE void store(T* p, const Sum& s) { p[0] = s.re, p[1] = s.im; }
};

template <class D>
struct ComplexSquares : RealSquares<D> {
  using T = hn::TFromD<D>;
  using Narrower = ComplexSquares;
  struct In {
    T square;
    HWY_INLINE void keep() {}
  };
  struct Sum {
    T sum;
  };
  static constexpr std::ptrdiff_t lanes = 2;

  static HWY_INLINE Sum zero() { return {0}; }
  static HWY_INLINE In load(const T* p) { return {p[0] * p[0] + p[1] * p[1]}; }
  static HWY_INLINE void add(Sum& s, const In& in, const typename RealSquares<D>::Tap& /*none*/) {
    s.sum = s.sum + in.square;
  }
  static HWY_INLINE void store(T* p, const Sum& s) { p[0] = s.sum, p[1] = 0; }
};

#endif

}  // namespace HWY_NAMESPACE
}  // namespace BP::lanes
HWY_AFTER_NAMESPACE();

#endif
