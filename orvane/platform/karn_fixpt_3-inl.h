#pragma once

#include <algorithm>
#include <bit>
#include <cstring>

#include "orvane/platform/karn_fixpt_3_value.h"

/// The operations on narrow values take a few nanoseconds; everything else leaves through a function call.
///
/// They must be inlined. The compiler would otherwise choose calls, since they have many users, and a call into a
/// shared library goes through a table.
namespace KarnDSPFixpt {

static_assert(std::endian::native == std::endian::little, "components are written by their low bytes");

[[gnu::always_inline]] inline std::int64_t Fixpt::loadNarrow(int component) const {
  const auto read = [this, component](auto bits) {
    std::memcpy(&bits, values_ + static_cast<std::ptrdiff_t>(component) * static_cast<std::ptrdiff_t>(sizeof bits),
                sizeof bits);
    return range_.reduce(static_cast<std::int64_t>(bits));
  };
  switch (bytesLog_) {
    case 0: return read(std::uint8_t{});
    case 1: return read(std::uint16_t{});
    case 2: return read(std::uint32_t{});
    default: return read(std::uint64_t{});
  }
}

[[gnu::always_inline]] inline void Fixpt::storeNarrow(int component, std::int64_t v) {
  const auto write = [this, component](auto bits) {
    std::memcpy(values_ + static_cast<std::ptrdiff_t>(component) * static_cast<std::ptrdiff_t>(sizeof bits), &bits,
                sizeof bits);
  };
  switch (bytesLog_) {
    case 0: write(static_cast<std::int8_t>(v)); break;
    case 1: write(static_cast<std::int16_t>(v)); break;
    case 2: write(static_cast<std::int32_t>(v)); break;
    default: write(v); break;
  }
}

[[gnu::always_inline]] inline void Fixpt::putNarrow(int component, std::int64_t exact,
                                                    const detail::Rounder<std::int64_t>& rounder) {
  const detail::Cast<std::int64_t> cast = detail::castInto(exact, rounder, range_);
  storeNarrow(component, cast.value);
  if (!counting_) return;
  ++counters_.casts;
  if (cast.overflow) [[unlikely]]
    ++counters_.overflows;
  counters_.lossy += cast.lossy;
  if (cast.value < counters_.least) [[unlikely]]
    counters_.least = cast.value;
  if (cast.value > counters_.greatest) [[unlikely]]
    counters_.greatest = cast.value;
}

// NOLINTNEXTLINE(bugprone-unhandled-self-assignment): a value of the array itself is like any other
[[gnu::always_inline]] inline Fixpt& Fixpt::operator=(const Fixpt& v) {
  if (v.key_ != assignPlan_.key) [[unlikely]]
    return assignAny(v);
  putNarrow(cursor_, v.loadNarrow(v.cursor_) << assignPlan_.append, assignPlan_.rounder);
  return *this;
}

[[gnu::always_inline]] inline void Fixpt::addNarrow(int component, const Fixpt& v, int other, bool subtracts) {
  const std::int64_t a = loadNarrow(component) << sumPlan_.append;
  const std::int64_t b = v.loadNarrow(other) << sumPlan_.otherAppend;
  putNarrow(component, subtracts ? a - b : a + b, sumPlan_.rounder);
}

[[gnu::always_inline]] inline Fixpt& Fixpt::operator+=(const Fixpt& v) {
  if (v.key_ != sumPlan_.key) [[unlikely]]
    return addAny(v, false);
  addNarrow(cursor_, v, v.cursor_, false);
  return *this;
}

[[gnu::always_inline]] inline Fixpt& Fixpt::operator-=(const Fixpt& v) {
  if (v.key_ != sumPlan_.key) [[unlikely]]
    return addAny(v, true);
  addNarrow(cursor_, v, v.cursor_, true);
  return *this;
}

[[gnu::always_inline]] inline Fixpt& Fixpt::operator*(const Fixpt& v) const {
  if (v.key_ != productPlan_.key) [[unlikely]]
    return productAny(v);
  Fixpt& product = *subordinates_[0];
  product.cursor_ = 0;
  product.putNarrow(0, (loadNarrow(cursor_) * v.loadNarrow(v.cursor_)) << productPlan_.append, productPlan_.rounder);
  return product;
}

[[gnu::always_inline]] inline Fixpt& Fixpt::norm() const {
  if (key_ != normPlan_.key) [[unlikely]]
    return normAny();
  Fixpt& square = *subordinates_[2];
  square.cursor_ = 0;
  const std::int64_t value = loadNarrow(cursor_);
  square.putNarrow(0, (value * value) << normPlan_.append, normPlan_.rounder);
  return square;
}

inline int Fixpt::compare(const Fixpt& v) const {
  if (v.key_ != key_ || !isNarrow_ || isComplex_) return compareAny(v);
  const std::int64_t a = loadNarrow(cursor_);
  const std::int64_t b = v.loadNarrow(v.cursor_);
  return (a > b) - (a < b);
}

[[gnu::always_inline]] inline void Fixpt::clear() {
  if (!isNarrow_) return clearAny();
  storeNarrow(cursor_, 0);
  if (isComplex_) storeNarrow(cursor_ + 1, 0);
}

inline Fixpt& Fixpt::operator=(const int& v) {
  if (v == 0) {
    clear();
  } else if (integerPlan_.key != 0) {
    putNarrow(cursor_, static_cast<std::int64_t>(v) << integerPlan_.append, integerPlan_.rounder);
  } else {
    assignInteger(v);
  }
  return *this;
}

}  // namespace KarnDSPFixpt
