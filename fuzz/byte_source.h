#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <string_view>

/// What all fuzz targets share.
namespace BP::fuzz {

/// Choices that the bytes of an input make, one after the other. A fuzzer that changes a byte changes a choice.
///
/// Inputs that end early go on with numbers that follow from their bytes, so that a short input makes a whole job. It
/// is a uniform random bit generator, too.
class ByteSource {
 public:
  using result_type = std::uint32_t;

  ByteSource(const std::uint8_t* data, std::size_t size) : next(data), end(data + size) {
    for (const std::uint8_t* byte = data; byte != end; ++byte) state = (state ^ *byte) * 0x100000001B3U;
  }

  static constexpr result_type min() { return 0; }
  static constexpr result_type max() { return std::numeric_limits<result_type>::max(); }
  /// 32 bits.
  result_type operator()() {
    result_type bits = 0;
    for (int i = 0; i < 4; ++i) bits = bits << 8 | byte();
    return bits;
  }
  /// Eight bits.
  std::uint8_t byte() {
    if (next != end) return *next++;
    state = state * 6364136223846793005U + 1442695040888963407U;
    return static_cast<std::uint8_t>(state >> 56);
  }
  /// What no choice has taken yet.
  std::string_view rest() const { return {reinterpret_cast<const char*>(next), static_cast<std::size_t>(end - next)}; }

 private:
  const std::uint8_t* next;
  const std::uint8_t* end;
  std::uint64_t state = 0xCBF29CE484222325U;
};

/// Whole number from `low` to `high`, of as few bytes as hold it. The helpers of the tests call it.
inline int pick(ByteSource& source, int low, int high) {
  const std::uint64_t count = static_cast<std::uint64_t>(std::int64_t{high} - low) + 1;
  std::uint64_t bits = source.byte();
  for (std::uint64_t most = 256; most < count; most <<= 8) bits = bits << 8 | source.byte();
  return static_cast<int>(low + static_cast<std::int64_t>(bits % count));
}

}  // namespace BP::fuzz
