// Keys: what medians are sorted by. Included once for each target.
//
// float becomes an integer of the same order, since integer minima and maxima are the faster ones on many processors:
// of a negative number all bits but the sign are inverted, which is its own inverse. Signed bytes and words become
// unsigned by a change of the sign bit. double stays as it is.

#if defined(ORVANE_LANES_MEDIAN_KEYS_INL) == defined(HWY_TARGET_TOGGLE)
#ifdef ORVANE_LANES_MEDIAN_KEYS_INL
#undef ORVANE_LANES_MEDIAN_KEYS_INL
#else
#define ORVANE_LANES_MEDIAN_KEYS_INL
#endif

#include <hwy/highway.h>

#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "orvane/lanes/median_kernels.h"

HWY_BEFORE_NAMESPACE();
namespace BP::lanes {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

/// Vectors of keys: all that tiles do with them.
template <class KeyT>
struct KeyVectors {
  using Key = KeyT;
  static constexpr hn::ScalableTag<Key> tag{};
  using V = hn::Vec<hn::ScalableTag<Key>>;
  static constexpr std::ptrdiff_t lanes = static_cast<std::ptrdiff_t>(HWY_LANES(Key));

  static HWY_INLINE V load(const Key* from) { return hn::LoadU(tag, from); }
  static HWY_INLINE void store(Key* to, V v) { hn::StoreU(v, tag, to); }
  static HWY_INLINE V min(V a, V b) { return hn::Min(a, b); }
  static HWY_INLINE V max(V a, V b) { return hn::Max(a, b); }
  static HWY_INLINE V greatest() {
    if constexpr (std::is_floating_point_v<Key>) {
      return hn::Inf(tag);
    } else {
      return hn::Set(tag, hwy::LimitsMax<Key>());
    }
  }
};

/// The keys of elements of type T.
template <class Element>
struct Keys : KeyVectors<MedianKey<Element>> {
  using T = Element;
  using Vectors = KeyVectors<MedianKey<T>>;
  using typename Vectors::Key;
  using typename Vectors::V;
  using Vectors::tag;
  static constexpr bool isFloating = std::is_floating_point_v<T>;
  static constexpr hn::ScalableTag<T> elementTag{};
  using ElementV = hn::Vec<hn::ScalableTag<T>>;

  static HWY_INLINE V keyOf(ElementV x) { return flipped(hn::BitCast(tag, x)); }
  static HWY_INLINE ElementV elementOf(V key) { return hn::BitCast(elementTag, flipped(key)); }

  /// What lines hold that their order by keys is not the order of the plain loop for.
  struct Seen {
    using M = hn::Mask<hn::ScalableTag<T>>;
    M nan, negativeZero;

    HWY_INLINE Seen() {
      const ElementV zero = hn::Zero(elementTag);
      nan = negativeZero = hn::Ne(zero, zero);
    }
    HWY_INLINE void add(ElementV x) {
      nan = hn::Or(nan, hn::IsNaN(x));
      const hn::RebindToUnsigned<hn::ScalableTag<T>> bits;
      const auto sign = hn::BitCast(bits, hn::Set(elementTag, T(-0.0)));
      negativeZero = hn::Or(negativeZero, hn::RebindMask(elementTag, hn::Eq(hn::BitCast(bits, x), sign)));
    }
    HWY_INLINE unsigned flags() const {
      return (hn::AllFalse(elementTag, nan) ? 0U : MedianFlags::nan) |
             (hn::AllFalse(elementTag, negativeZero) ? 0U : MedianFlags::negativeZero);
    }
  };

  /// The mean of two elements as the plain loop has it.
  static HWY_INLINE ElementV mean(ElementV low, ElementV high) {
    if constexpr (isFloating) {
      const ElementV half = hn::Set(elementTag, T(0.5));
      return hn::Add(hn::Mul(high, half), hn::Mul(low, half));
    } else {
      return low;
    }
  }

 private:
  static HWY_INLINE V flipped(V v) {
    if constexpr (std::is_same_v<T, float>) {
      const hn::RebindToUnsigned<hn::ScalableTag<Key>> bits;
      const auto sign = hn::BitCast(bits, hn::ShiftRight<31>(v));
      return hn::Xor(v, hn::BitCast(tag, hn::ShiftRight<1>(sign)));
    } else if constexpr (std::is_integral_v<T> && std::is_signed_v<T>) {
      return hn::Xor(v, hn::Set(tag, static_cast<Key>(Key{1} << (8 * sizeof(Key) - 1))));
    } else {
      return v;
    }
  }
};

/// The even and the odd elements of two vectors, and the inverse.
#if HWY_TARGET == HWY_SCALAR
template <class K, class V>
HWY_INLINE void split(V a, V b, V& even, V& odd) {
  even = a, odd = b;
}
template <class K, class V>
HWY_INLINE void join(V even, V odd, V& a, V& b) {
  a = even, b = odd;
}
#else
template <class K, class V>
HWY_INLINE void split(V a, V b, V& even, V& odd) {
  even = hn::ConcatEven(K::tag, b, a), odd = hn::ConcatOdd(K::tag, b, a);
}
template <class K, class V>
HWY_INLINE void join(V even, V odd, V& a, V& b) {
  constexpr std::size_t bytes = K::lanes * sizeof(typename K::Key);
  a = hn::InterleaveLower(K::tag, even, odd), b = hn::InterleaveUpper(K::tag, even, odd);
  if constexpr (bytes > 16) {
    const V low = a, high = b;
    a = hn::ConcatLowerLower(K::tag, high, low), b = hn::ConcatUpperUpper(K::tag, high, low);
  }
  if constexpr (bytes == 64) {  // the blocks of 16 bytes are in the order 0 2 1 3
    const hn::ScalableTag<std::uint64_t> words;
    alignas(64) constexpr std::uint64_t order[] = {0, 1, 4, 5, 2, 3, 6, 7};
    const auto places = hn::SetTableIndices(words, order);
    a = hn::BitCast(K::tag, hn::TableLookupLanes(hn::BitCast(words, a), places));
    b = hn::BitCast(K::tag, hn::TableLookupLanes(hn::BitCast(words, b), places));
  }
}
#endif

/// `count` vectors, one behind the other, into as many of every `count`-th element.
template <class K, std::size_t count, class V>
HWY_INLINE void splitAll(const V* in, V* out) {
  if constexpr (count == 1) {
    out[0] = in[0];
  } else {
    constexpr std::size_t half = count / 2;
    V even[half], odd[half], ofEven[half], ofOdd[half];
    for (std::size_t i = 0; i < half; ++i) split<K>(in[2 * i], in[2 * i + 1], even[i], odd[i]);
    splitAll<K, half>(even, ofEven);
    splitAll<K, half>(odd, ofOdd);
    for (std::size_t i = 0; i < half; ++i) out[2 * i] = ofEven[i], out[2 * i + 1] = ofOdd[i];
  }
}

/// The inverse of `splitAll`.
template <class K, std::size_t count, class V>
HWY_INLINE void joinAll(const V* in, V* out) {
  if constexpr (count == 1) {
    out[0] = in[0];
  } else {
    constexpr std::size_t half = count / 2;
    V even[half], odd[half], ofEven[half], ofOdd[half];
    for (std::size_t i = 0; i < half; ++i) ofEven[i] = in[2 * i], ofOdd[i] = in[2 * i + 1];
    joinAll<K, half>(ofEven, even);
    joinAll<K, half>(ofOdd, odd);
    for (std::size_t i = 0; i < half; ++i) join<K>(even[i], odd[i], out[2 * i], out[2 * i + 1]);
  }
}

}  // namespace HWY_NAMESPACE
}  // namespace BP::lanes
HWY_AFTER_NAMESPACE();

#endif
