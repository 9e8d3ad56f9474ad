#pragma once

#include <cstddef>
#include <cstdint>

#include "orvane/lanes/fixed_sums.h"
#include "orvane/platform/export.h"

/// Exact sums of products of narrow operands, for a run of neighbouring outputs.
///
/// No product and no sum rounds or overflows, so products may be regrouped: one instruction adds the products of a few
/// neighbouring columns. Only the last sum has to fit the lanes, because the arithmetic is that of the integers modulo
/// 2^32. Lanes are neighbouring outputs. All calls are thread-safe and allocate nothing.
namespace BP::lanes {

/// What lines and taps hold. Both are shifted by a constant, if need be, so that they fit (see `FixedDotTask::start`).
enum class DotOperands {
  none,
  bytes,        ///< lines of `uint8_t`, taps of -128 to 127
  signedBytes,  ///< lines of `int8_t`, taps of 0 to 255
  words,        ///< lines of `int16_t`, taps of -2^15 to 2^15 - 1
};

/// A run of outputs and its filter: out[r][i] := start + sum over filter rows j, columns c of
/// lines[r + j][i + c] * tap[j][c].
struct FixedDotTask {
  /// Values past the last one that a line or an output row has room for; what they hold does not matter.
  static constexpr std::ptrdiff_t slack = 128;

  DotOperands operands = DotOperands::none;
  int columns = 1;
  int filterRows = 1;
  const std::int32_t* taps = nullptr;  ///< as `packDots` makes them
  std::int32_t start = 0;
  const void* const* lines = nullptr;
  int rows = 1;
  std::ptrdiff_t width = 1;
  std::int32_t* const* out = nullptr;  ///< not looked at by `sumDotsIntoBytes`
};

/// Values that packed taps take at most.
constexpr std::size_t packedDotsFor(int columns, int rows) { return std::size_t(columns + 1) / 2 * std::size_t(rows); }
/// Packs `columns` x `rows` taps in the order of the sum, for the target in use: neighbours of a row in each value, and
/// zeros beside the last one.
void packDots(DotOperands operands, const std::int32_t* taps, int columns, int rows, std::int32_t* packed);

/// Computes a run.
ORVANE_API void sumDots(const FixedDotTask& task);

/// The cast of sums into bytes of the caller's.
struct DotCast {
  FixedCast cast;         ///< its range clamps, or is never left
  bool isSigned = false;  ///< whether its range is that of `int8_t`, or of `uint8_t`
  bool counts = false;    ///< whether casts, overflows and lossy casts are counted
  std::uint8_t* const* to = nullptr;
};
/// Computes the first outputs of each row, casts them and stores them as bytes. Returns their number: all, or as many
/// as whole blocks of vectors hold, or 0 on a target that does not have this.
std::ptrdiff_t sumDotsIntoBytes(const FixedDotTask& task, const DotCast& cast, FixedCounts& counts);

/// The halves of a tap that is wider than a word: tap = 256 * high + low, with low from -128 to 127.
struct DotHalves {
  std::int64_t high;
  std::int64_t low;
  static constexpr DotHalves of(std::int64_t tap) {
    const std::int64_t low = static_cast<std::int8_t>(tap);
    return {(tap - low) >> 8, low};
  }
};

/// out[i] := 256 * high[i] + low[i] + start, for `count` values with slack after them.
void joinDots(const std::int32_t* high, const std::int32_t* low, std::int64_t start, std::ptrdiff_t count,
              std::int64_t* out);

}  // namespace BP::lanes
