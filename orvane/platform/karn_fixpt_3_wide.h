#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

/// Integers of more than 64 bits: the compiler's 128-bit integers, and `Wide` for larger ones.
namespace KarnDSPFixpt::detail {

__extension__ using Int128 = __int128;
__extension__ using Uint128 = unsigned __int128;

/// A two's-complement integer of 768 bits. It holds the exact product, quotient and square root of 128-bit components
/// with all their alignment shifts. Arithmetic is modulo 2^768. Shift counts are 0 to 767.
class Wide {
 public:
  Wide() = default;
  Wide(Int128 v) {
    const std::uint64_t sign = v < 0 ? ~std::uint64_t{0} : 0;
    limbs_.fill(sign);
    limbs_[0] = static_cast<std::uint64_t>(v);
    limbs_[1] = static_cast<std::uint64_t>(v >> 64);
  }
  Wide(Uint128 v) {
    limbs_[0] = static_cast<std::uint64_t>(v);
    limbs_[1] = static_cast<std::uint64_t>(v >> 64);
  }
  Wide(std::int64_t v) : Wide(static_cast<Int128>(v)) {}
  Wide(int v) : Wide(static_cast<Int128>(v)) {}

  /// The low 128 bits.
  Uint128 low() const { return static_cast<Uint128>(limbs_[1]) << 64 | limbs_[0]; }
  bool isNegative() const { return limbs_[count - 1] >> 63 != 0; }

  /// The number of bits without leading zeros; 0 for zero.
  int bitLength() const {
    for (std::size_t i = count; i-- > 0;) {
      if (limbs_[i] != 0) return static_cast<int>(i) * 64 + 64 - __builtin_clzll(limbs_[i]);
    }
    return 0;
  }
  bool bit(int i) const { return (limbs_[static_cast<std::size_t>(i) / 64] >> (i % 64) & 1) != 0; }

  Wide operator~() const {
    Wide r;
    for (std::size_t i = 0; i < count; ++i) r.limbs_[i] = ~limbs_[i];
    return r;
  }
  Wide operator-() const { return ~*this + Wide(1); }

  friend Wide operator+(const Wide& a, const Wide& b) {
    Wide r;
    Uint128 carry = 0;
    for (std::size_t i = 0; i < count; ++i) {
      carry += static_cast<Uint128>(a.limbs_[i]) + b.limbs_[i];
      r.limbs_[i] = static_cast<std::uint64_t>(carry);
      carry >>= 64;
    }
    return r;
  }
  friend Wide operator-(const Wide& a, const Wide& b) { return a + -b; }

  friend Wide operator*(const Wide& a, const Wide& b) {
    Wide r;
    for (std::size_t i = 0; i < count; ++i) {
      Uint128 carry = 0;
      for (std::size_t j = 0; i + j < count; ++j) {
        carry += static_cast<Uint128>(a.limbs_[i]) * b.limbs_[j] + r.limbs_[i + j];
        r.limbs_[i + j] = static_cast<std::uint64_t>(carry);
        carry >>= 64;
      }
    }
    return r;
  }

  friend Wide operator&(const Wide& a, const Wide& b) {
    Wide r;
    for (std::size_t i = 0; i < count; ++i) r.limbs_[i] = a.limbs_[i] & b.limbs_[i];
    return r;
  }
  friend Wide operator|(const Wide& a, const Wide& b) { return ~(~a & ~b); }
  friend Wide operator^(const Wide& a, const Wide& b) { return (a | b) & ~(a & b); }

  friend Wide operator<<(const Wide& a, int n) {
    Wide r;
    const auto limbs = static_cast<std::size_t>(n) / 64;
    const int bits = n % 64;
    for (std::size_t i = limbs; i < count; ++i) {
      r.limbs_[i] = a.limbs_[i - limbs] << bits;
      if (bits != 0 && i > limbs) r.limbs_[i] |= a.limbs_[i - limbs - 1] >> (64 - bits);
    }
    return r;
  }
  /// Shifts towards -infinity.
  friend Wide operator>>(const Wide& a, int n) {
    const std::uint64_t sign = a.isNegative() ? ~std::uint64_t{0} : 0;
    const auto at = [&](std::size_t i) { return i < count ? a.limbs_[i] : sign; };
    Wide r;
    const auto limbs = static_cast<std::size_t>(n) / 64;
    const int bits = n % 64;
    for (std::size_t i = 0; i < count; ++i) {
      r.limbs_[i] = at(i + limbs) >> bits;
      if (bits != 0) r.limbs_[i] |= at(i + limbs + 1) << (64 - bits);
    }
    return r;
  }

  friend bool operator==(const Wide& a, const Wide& b) = default;
  friend bool operator<(const Wide& a, const Wide& b) {
    if (a.isNegative() != b.isNegative()) return a.isNegative();
    for (std::size_t i = count; i-- > 0;) {
      if (a.limbs_[i] != b.limbs_[i]) return a.limbs_[i] < b.limbs_[i];
    }
    return false;
  }
  friend bool operator>(const Wide& a, const Wide& b) { return b < a; }

 private:
  static constexpr std::size_t count = 12;
  std::array<std::uint64_t, count> limbs_{};
};

}  // namespace KarnDSPFixpt::detail
