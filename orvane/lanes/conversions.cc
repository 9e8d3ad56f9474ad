#include "orvane/lanes/conversions.h"

#include <limits>

#include "orvane/lanes/dispatch.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "orvane/lanes/conversions.cc"
#include <hwy/foreach_target.h>

// Highway's headers come last.
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace BP::lanes {
namespace HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

/// A loop that compilers turn into vectors of the target.
template <class C, class T>
void convert(const void* stored, std::ptrdiff_t count, T* HWY_RESTRICT to) {
  const C* HWY_RESTRICT from = static_cast<const C*>(stored);
  for (std::ptrdiff_t i = 0; i < count; ++i) to[i] = static_cast<T>(from[i]);
}

template <class C, class T>
std::int64_t round(const T* HWY_RESTRICT from, std::ptrdiff_t count, void* stored) {
  C* HWY_RESTRICT to = static_cast<C*>(stored);
  std::int64_t clipped = 0;
  std::ptrdiff_t i = 0;
  if constexpr (sizeof(C) < 4) {  // a vector of T holds all of them, and what lies beside their range
    using D = hn::ScalableTag<T>;
    const D d;
    const hn::Rebind<std::int32_t, D> whole;
    const hn::Rebind<C, D> narrow;
    const auto least = hn::Set(d, T(std::numeric_limits<C>::min()));
    const auto greatest = hn::Set(d, T(std::numeric_limits<C>::max()));
    const auto lanes = static_cast<std::ptrdiff_t>(hn::Lanes(d));
    for (; i + lanes <= count; i += lanes) {
      const auto near = hn::Round(hn::LoadU(d, from + i));
      const auto fits = hn::And(hn::Ge(near, least), hn::Le(near, greatest));
      clipped += lanes - static_cast<std::ptrdiff_t>(hn::CountTrue(d, fits));
      const auto kept = hn::IfThenElseZero(hn::Eq(near, near), hn::Min(hn::Max(near, least), greatest));
      if constexpr (sizeof(T) == 4) {
        hn::StoreU(hn::DemoteTo(narrow, hn::ConvertTo(whole, kept)), narrow, to + i);
      } else {
        hn::StoreU(hn::DemoteTo(narrow, hn::DemoteTo(whole, kept)), narrow, to + i);
      }
    }
  }
  for (; i < count; ++i) to[i] = roundAndClip<C>(from[i], clipped);
  return clipped;
}

template <class T>
void convertAny(Stored stored, const void* from, std::ptrdiff_t count, T* to) {
  visitStored(stored, [&](auto element) { convert<decltype(element)>(from, count, to); });
}
template <class T>
std::int64_t roundAny(Stored stored, const T* from, std::ptrdiff_t count, void* to) {
  return visitStored(stored, [&](auto element) { return round<decltype(element)>(from, count, to); });
}

void convertF32(Stored stored, const void* from, std::ptrdiff_t count, float* to) {
  convertAny(stored, from, count, to);
}
void convertF64(Stored stored, const void* from, std::ptrdiff_t count, double* to) {
  convertAny(stored, from, count, to);
}
std::int64_t roundF32(Stored stored, const float* from, std::ptrdiff_t count, void* to) {
  return roundAny(stored, from, count, to);
}
std::int64_t roundF64(Stored stored, const double* from, std::ptrdiff_t count, void* to) {
  return roundAny(stored, from, count, to);
}

}  // namespace HWY_NAMESPACE
}  // namespace BP::lanes
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace BP::lanes {

HWY_EXPORT(convertF32);
HWY_EXPORT(convertF64);
HWY_EXPORT(roundF32);
HWY_EXPORT(roundF64);

template <>
void convertLine(Stored stored, const void* from, std::ptrdiff_t count, float* to) {
  HWY_DISPATCH_TABLE(convertF32)[targetIndex()](stored, from, count, to);
}
template <>
void convertLine(Stored stored, const void* from, std::ptrdiff_t count, double* to) {
  HWY_DISPATCH_TABLE(convertF64)[targetIndex()](stored, from, count, to);
}
template <>
std::int64_t roundLine(Stored stored, const float* from, std::ptrdiff_t count, void* to) {
  return HWY_DISPATCH_TABLE(roundF32)[targetIndex()](stored, from, count, to);
}
template <>
std::int64_t roundLine(Stored stored, const double* from, std::ptrdiff_t count, void* to) {
  return HWY_DISPATCH_TABLE(roundF64)[targetIndex()](stored, from, count, to);
}

}  // namespace BP::lanes
#endif
