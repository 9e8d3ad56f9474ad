#pragma once

#include <cstdint>

namespace BP {

/// How much one call of the lanes computes, at most.
struct RunLimits {
  static constexpr int rows = 24;
  /// Bytes of a line: long enough that memory is read in long stretches, so short that a run stays in a near cache.
  static constexpr int lineBytes = 16 * 1024;
  /// Of runs whose lines are copied first: gathered ones, and those of a turned area.
  static constexpr int copiedWidth = 256;
  /// Of runs whose lines are converted: long, so that little is converted twice, and in the cache of a core.
  static constexpr int convertedWidth = 1024;
  /// Areas of fewer outputs along dimension 0 are turned, if they are higher than wide; so for sums.
  static constexpr int narrow = 16;
  /// Filters of more taps are left to the plain loop: they would be kept eightfold.
  static constexpr std::int64_t taps = std::int64_t{1} << 20;
  /// Areas under filters of more taps are not turned.
  static constexpr std::int64_t turnedTaps = std::int64_t{1} << 16;
};

}  // namespace BP
