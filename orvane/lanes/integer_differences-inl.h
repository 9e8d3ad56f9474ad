// The kernels of whole numbers: the blocks of sums with other elements. Included once for each target.

#if defined(ORVANE_LANES_INTEGER_DIFFERENCES_INL) == defined(HWY_TARGET_TOGGLE)
#ifdef ORVANE_LANES_INTEGER_DIFFERENCES_INL
#undef ORVANE_LANES_INTEGER_DIFFERENCES_INL
#else
#define ORVANE_LANES_INTEGER_DIFFERENCES_INL
#endif

#include <hwy/highway.h>

#include <cstddef>
#include <cstdint>

#include "orvane/lanes/integer_kernels.h"
#include "orvane/lanes/sum_elements-inl.h"
#include "orvane/lanes/sums-inl.h"

HWY_BEFORE_NAMESPACE();
namespace BP::lanes {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

/// Whole numbers. Sums are pinned, as compilers regroup the additions of integers and run out of registers.
template <class Tag, IntegerTerm term>
struct IntegerDifference {
  using D = Tag;
  using T = hn::TFromD<D>;
  using V = hn::Vec<D>;
  using Narrower = IntegerDifference<NarrowerTag<D, 1>, term>;
  static constexpr bool isBits = term == IntegerTerm::unequalBits;
  struct In {
    V x;
    HWY_INLINE void keep() { keepInRegister(x); }
  };
  struct Tap {
    V h, mask;
    HWY_INLINE void keep() {
      keepInRegister(h);
      if constexpr (isBits) keepInRegister(mask);
    }
  };
  struct Sum {
    V sum;
  };
  static constexpr int inRegisters = 1, tapRegisters = isBits ? 5 : 2, sumRegisters = 1, tapSize = isBits ? 2 : 1;
  static constexpr int tapParts = 1, mostRows = 4;
  static constexpr bool hasOneColumnForm = false;
  static constexpr std::ptrdiff_t lanes = lanesOf<D>;

  static HWY_INLINE Sum zero() { return {hn::Zero(D())}; }
  static HWY_INLINE In load(const T* p) { return {hn::LoadU(D(), p)}; }
  static HWY_INLINE Tap loadTap(const T* p) {
    const V h = hn::Set(D(), p[0]);
    return {h, isBits ? hn::Set(D(), p[tapSize - 1]) : h};
  }
  template <int part>
  static HWY_INLINE void add(Sum& s, const In& in, const Tap& tap) {
    if constexpr (isBits) {
      const hn::RebindToUnsigned<D> bits;
      const V unequal = hn::And(hn::Xor(in.x, tap.h), tap.mask);
      s.sum = hn::Add(s.sum, hn::BitCast(D(), hn::PopulationCount(hn::BitCast(bits, unequal))));
    } else {
      const V d = hn::Sub(in.x, tap.h);
      if constexpr (term == IntegerTerm::absoluteDifference) {
        s.sum = hn::Add(s.sum, hn::Abs(d));
      } else if constexpr (term == IntegerTerm::squaredDifference) {
        s.sum = hn::Add(s.sum, hn::Mul(d, d));
      } else {
        s.sum = hn::Max(s.sum, hn::Abs(d));
      }
    }
    keepInRegister(s.sum);
  }
  static HWY_INLINE void store(const SumTask<T>& task, int row, std::ptrdiff_t at, const Sum& s) {
    hn::StoreU(s.sum, D(), task.out[row] + at);
  }
};

/// line[i] := line[i] with the `count` values from i + count on in the higher bits.
template <int count>
void joinBits(std::int32_t* line, std::ptrdiff_t length) {
  const hn::ScalableTag<std::int32_t> d;
  for (std::ptrdiff_t i = 0; i < length; i += lanesOf<decltype(d)>) {
    hn::StoreU(hn::Or(hn::LoadU(d, line + i), hn::ShiftLeft<count>(hn::LoadU(d, line + i + count))), d, line + i);
  }
}

/// Makes a line of bits, followed by zeros, one of windows: pairs of bits, pairs of pairs and so on.
inline void makeWindows(std::int32_t* line, std::ptrdiff_t length) {
  joinBits<1>(line, length);
  joinBits<2>(line, length);
  joinBits<4>(line, length);
  joinBits<8>(line, length);
  joinBits<16>(line, length);
}

constexpr IntegerKernels makeIntegerKernels() {
  using D = hn::ScalableTag<std::int32_t>;
  return {{computeSums<IntegerDifference<D, IntegerTerm::absoluteDifference>>,
           computeSums<IntegerDifference<D, IntegerTerm::squaredDifference>>,
           computeSums<IntegerDifference<D, IntegerTerm::greatestDifference>>,
           computeSums<IntegerDifference<D, IntegerTerm::unequalBits>>},
          makeWindows};
}

}  // namespace HWY_NAMESPACE
}  // namespace BP::lanes
HWY_AFTER_NAMESPACE();

#endif
