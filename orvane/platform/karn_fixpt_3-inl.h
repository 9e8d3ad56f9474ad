#pragma once

#include <algorithm>
#include <bit>
#include <cstring>

#include "orvane/platform/karn_fixpt_3.h"

/// The operations on narrow values, which take a few nanoseconds; everything else leaves through a function call.
namespace KarnDSPFixpt {

static_assert(std::endian::native == std::endian::little, "components are written by their low bytes");

inline std::int64_t Fixpt::loadNarrow(int component) const {
  const auto read = [p = address(component)]<class U>(U bits) {
    std::memcpy(&bits, p, sizeof bits);
    return static_cast<std::int64_t>(bits);
  };
  switch (bytesLog_) {
    case 0: return range_.reduce(read(std::uint8_t{}));
    case 1: return range_.reduce(read(std::uint16_t{}));
    case 2: return range_.reduce(read(std::uint32_t{}));
    default: return range_.reduce(read(std::uint64_t{}));
  }
}

inline void Fixpt::storeNarrow(int component, std::int64_t v) {
  const auto write = [p = address(component)](auto bits) { std::memcpy(p, &bits, sizeof bits); };
  switch (bytesLog_) {
    case 0: write(static_cast<std::uint8_t>(v)); break;
    case 1: write(static_cast<std::uint16_t>(v)); break;
    case 2: write(static_cast<std::uint32_t>(v)); break;
    default: write(v); break;
  }
}

inline void Fixpt::putNarrow(int component, std::int64_t exact, const detail::Rounder<std::int64_t>& rounder) {
  const detail::Cast<std::int64_t> cast = detail::castInto(exact, rounder, range_);
  storeNarrow(component, cast.value);
  if (!counting_) return;
  ++counters_.casts;
  counters_.overflows += cast.overflow;
  counters_.lossy += cast.lossy;
  counters_.least = std::min(counters_.least, cast.value);
  counters_.greatest = std::max(counters_.greatest, cast.value);
}

inline Fixpt& Fixpt::operator=(const Fixpt& v) {
  if (v.key_ != assignPlan_.key) [[unlikely]]
    return assignAny(v);
  putNarrow(cursor_, v.loadNarrow(v.cursor_), assignPlan_.rounder);
  return *this;
}

template <bool subtracts>
inline Fixpt& Fixpt::addNarrow(const Fixpt& v) {
  const std::int64_t own = loadNarrow(cursor_) << sumPlan_.ownShift;
  const std::int64_t other = v.loadNarrow(v.cursor_) << sumPlan_.otherShift;
  putNarrow(cursor_, subtracts ? own - other : own + other, sumPlan_.rounder);
  return *this;
}

inline Fixpt& Fixpt::operator+=(const Fixpt& v) {
  if (v.key_ != sumPlan_.key) [[unlikely]]
    return addAny(v, false);
  return addNarrow<false>(v);
}

inline Fixpt& Fixpt::operator-=(const Fixpt& v) {
  if (v.key_ != sumPlan_.key) [[unlikely]]
    return addAny(v, true);
  return addNarrow<true>(v);
}

inline Fixpt& Fixpt::operator*(const Fixpt& v) const {
  if (v.key_ != productPlan_.key) [[unlikely]]
    return productAny(v);
  Fixpt& product = *subordinates_[0];
  product.cursor_ = 0;
  product.putNarrow(0, loadNarrow(cursor_) * v.loadNarrow(v.cursor_), productPlan_.rounder);
  return product;
}

inline Fixpt& Fixpt::norm() const {
  if (key_ != normPlan_.key) [[unlikely]]
    return normAny();
  Fixpt& square = *subordinates_[2];
  square.cursor_ = 0;
  const std::int64_t value = loadNarrow(cursor_);
  square.putNarrow(0, value * value, normPlan_.rounder);
  return square;
}

inline int Fixpt::compare(const Fixpt& v) const {
  if (!isNarrow_ || v.key_ != key_) return compareAny(v);
  const std::int64_t a = loadNarrow(cursor_);
  const std::int64_t b = v.loadNarrow(v.cursor_);
  return (a > b) - (a < b);
}

inline Fixpt& Fixpt::operator=(const int& v) {
  if (v == 0) {
    clear();
  } else {
    *this = static_cast<double>(v);  // exact
  }
  return *this;
}

}  // namespace KarnDSPFixpt
