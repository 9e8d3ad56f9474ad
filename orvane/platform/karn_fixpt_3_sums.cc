#include <algorithm>
#include <array>
#include <cstring>
#include <span>
#include <type_traits>

#include "orvane/platform/karn_fixpt_3.h"
#include "orvane/platform/karn_fixpt_3_tier.h"

namespace KarnDSPFixpt {

namespace {

std::int64_t fractionOf(const Fixpt& v) { return v.attributes().type().fraction; }
int bitsOf(const Fixpt& v) { return detail::signedBits(v.attributes().type()); }

/// Reads a row of components of a type with `range`. The first one is at `p`, and the next one is `step` components on.
template <class I, class Container>
void readContainers(const std::byte* p, int step, const detail::Range<I>& range, std::span<I> values) {
  const std::ptrdiff_t stride = step * static_cast<std::ptrdiff_t>(sizeof(Container));
  for (std::size_t k = 0; k < values.size(); ++k) {
    Container bits;
    std::memcpy(&bits, p + static_cast<std::ptrdiff_t>(k) * stride, sizeof bits);
    values[k] = range.reduce(static_cast<I>(bits));
  }
}

template <class I>
void readValues(const std::byte* p, unsigned bytesLog, int step, const detail::Range<I>& range, std::span<I> values) {
  switch (bytesLog) {
    case 0: return readContainers<I, std::uint8_t>(p, step, range, values);
    case 1: return readContainers<I, std::uint16_t>(p, step, range, values);
    case 2: return readContainers<I, std::uint32_t>(p, step, range, values);
    case 3: return readContainers<I, std::uint64_t>(p, step, range, values);
    default: return readContainers<I, detail::Uint128>(p, step, range, values);
  }
}

/// The number of bits of a value that I can hold and round.
template <class I>
constexpr int limitOf = sizeof(I) == 8 ? detail::narrowBits : detail::mediumBits;

}  // namespace

/// The prepared casts of a sum of products. It is a local variable, so the compiler can keep the counts in registers.
template <class I>
struct detail::ProductSum {
  Range<I> left;
  Range<I> right;
  CountingCast<I> product;
  CountingCast<I> sum;
  int productAppend = 0;  ///< bits to append to a product before it is rounded
  int ownAppend = 0;      ///< bits to append to the sum before an addition
  int otherAppend = 0;    ///< bits to append to the product before an addition
};

/// Prepares the cast of exact components of `bits` bits, in units of 2^-fraction, into this array. Returns
/// false if I is too small.
template <class I>
bool Fixpt::prepareCast(detail::CountingCast<I>& cast, int bits, std::int64_t fraction) const {
  const FixptType type = attributes_.type();
  const std::int64_t drop = fraction - type.fraction;
  if (attributes_.isFloating() || detail::signedBits(type) > limitOf<I>) return false;
  if (!detail::holds(limitOf<I>, bits, drop)) return false;
  cast.start(detail::makeRounder<I>(static_cast<int>(drop), attributes_.roundingMode()),
             detail::makeRange<I>(type, attributes_.overflowMode()));
  return true;
}

/// Prepares the addition of products of the real fixed-point values `a` and `b`. Returns false if I is too small.
template <class I>
[[gnu::always_inline]] inline bool Fixpt::prepareProducts(const Fixpt& a, const Fixpt& b,
                                                          detail::ProductSum<I>& casts) {
  const Fixpt& product = *a.subordinates_[0];
  if constexpr (std::is_same_v<I, std::int64_t>) {
    if (a.productPlan_.key != b.key_ || !planSum(product)) return false;
    casts.left = a.range_;
    casts.right = b.range_;
    casts.product.start(a.productPlan_.rounder, product.range_);
    casts.productAppend = a.productPlan_.append;
    casts.sum.start(sumPlan_.rounder, range_);
    casts.ownAppend = sumPlan_.append;
    casts.otherAppend = sumPlan_.otherAppend;
    return true;
  }
  const std::int64_t fraction = fractionOf(a) + fractionOf(b);
  const detail::Alignment shifts = detail::align(fractionOf(*this), fractionOf(product), detail::maxAppend);
  const int sumBits = std::max(bitsOf(*this) + shifts.own, bitsOf(product) + shifts.other) + 1;
  if (!product.prepareCast(casts.product, bitsOf(a) + bitsOf(b), fraction)) return false;
  if (!prepareCast(casts.sum, sumBits, shifts.fraction)) return false;
  casts.left = detail::makeRange<I>(a.attributes_.type(), fxpOverflowWrap);
  casts.right = detail::makeRange<I>(b.attributes_.type(), fxpOverflowWrap);
  casts.productAppend = static_cast<int>(std::max<std::int64_t>(fractionOf(product) - fraction, 0));
  casts.ownAppend = shifts.own;
  casts.otherAppend = shifts.other;
  return true;
}

/// Adds the counts of a number of casts to the statistics.
template <class I>
void Fixpt::count(const detail::CountingCast<I>& cast, unsigned casts) {
  if (!counting_ || casts == 0) return;
  if constexpr (std::is_same_v<I, std::int64_t>) {
    counters_.casts += casts;
    counters_.overflows += cast.overflows;
    counters_.lossy += cast.lossy;
    counters_.least = std::min(counters_.least, cast.least);
    counters_.greatest = std::max(counters_.greatest, cast.greatest);
  } else {
    const int fraction = attributes_.type().fraction;
    addStatistics({cast.overflows, casts, cast.lossy, 1, detail::scaled(static_cast<double>(cast.least), fraction),
                   detail::scaled(static_cast<double>(cast.greatest), fraction)});
  }
}

/// Adds the products in integers of type I. Three loops read, multiply and add a row, because a single loop would need
/// too many registers. A product takes about four nanoseconds, which the two casts and their counts need.
template <class I>
[[gnu::always_inline]] inline void Fixpt::addProductsBy(detail::ProductSum<I>& casts, const FixptWindow& left,
                                                        const FixptWindow& right, int width, int height) {
  constexpr int maxRun = 32;
  std::array<I, maxRun> x, y;
  const auto read = [](const FixptWindow& w, int i, int j, const detail::Range<I>& range, std::span<I> values) {
    const Fixpt& v = w.array;
    readValues(v.address(w.first + j * w.pitch + i * w.step), v.bytesLog_, w.step, range, values);
  };
  I sum = load<I>(cursor_);
  for (int j = 0; j < height; ++j) {
    for (int i = 0; i < width; i += maxRun) {
      const auto n = static_cast<std::size_t>(std::min(width - i, maxRun));
      read(left, i, j, casts.left, std::span(x).first(n));
      read(right, i, j, casts.right, std::span(y).first(n));
      for (std::size_t k = 0; k < n; ++k) x[k] = casts.product((x[k] * y[k]) << casts.productAppend);
      for (std::size_t k = 0; k < n; ++k) sum = casts.sum((sum << casts.ownAppend) + (x[k] << casts.otherAppend));
    }
  }
  store(cursor_, static_cast<detail::Uint128>(sum));
  const unsigned count = static_cast<unsigned>(width) * static_cast<unsigned>(height);
  left.array.subordinates_[0]->count(casts.product, count);
  this->count(casts.sum, count);
}

Fixpt& Fixpt::addProducts(const FixptWindow& left, const FixptWindow& right, int width, int height) {
  Fixpt& a = left.array;
  Fixpt& b = right.array;
  a.prepareProduct(b);
  if (!isComplex_ && !a.isComplex_ && !b.isComplex_ && !a.attributes_.isFloating() && !b.attributes_.isFloating()) {
    detail::ProductSum<std::int64_t> narrow;
    if (prepareProducts(a, b, narrow)) {
      addProductsBy(narrow, left, right, width, height);
      return *this;
    }
    detail::ProductSum<detail::Int128> medium;
    if (prepareProducts(a, b, medium)) {
      addProductsBy(medium, left, right, width, height);
      return *this;
    }
  }
  for (int j = 0; j < height; ++j) {
    for (int i = 0; i < width; ++i) {
      *this += a[left.first + j * left.pitch + i * left.step] * b[right.first + j * right.pitch + i * right.step];
    }
  }
  return *this;
}

}  // namespace KarnDSPFixpt
