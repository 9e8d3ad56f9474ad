#pragma once

#include <cstddef>
#include <cstdint>

#include "orvane/lanes/sums.h"
#include "orvane/platform/export.h"

namespace BP::lanes {

/// What is added up for whole numbers: measures of their difference, or the count of bits that disagree.
/// `byteDifference` is the absolute difference where all values are from 0 to 255, or all from -128 to 127.
enum class IntegerTerm { absoluteDifference, squaredDifference, greatestDifference, unequalBits, byteDifference };

/// A template of whole numbers, packed as the kernels use it. Scores are those of `PackedFilter::sumDifferences`,
/// exact as long as they stay below 2^31, which the caller sees to.
///
/// Bits are compared 32 at a time: each element of a prepared line is a *window*, the 32 bits from there on, and a row
/// of the template takes one exclusive or and one population count for each 32 columns. Bytes are compared 8 at a time,
/// in lines of bytes.
class ORVANE_API IntegerTemplate {
 public:
  /// Elements behind the end of a line that `prepareLine` may write and `score` read.
  static constexpr std::ptrdiff_t spare = 64;
  /// Outputs of a row: `score` may write as many as fill the last such group.
  static constexpr std::ptrdiff_t outputGroup = 64;

  /// The most taps of a template of bits, a row having one for each 32 columns.
  static constexpr std::int64_t maxBitTaps = 2047;
  /// Whether a template can be packed.
  static bool canTake(IntegerTerm term, FilterExtents extents);

  /// Number of values that the packed taps take.
  static std::size_t sizeFor(IntegerTerm term, FilterExtents extents);

  IntegerTemplate() = default;
  /// `storage` has `sizeFor(term, extents)` values and stays the caller's. One plane only. `least` is 0 or -128, for
  /// bytes.
  IntegerTemplate(IntegerTerm term, FilterExtents extents, std::int32_t* storage, std::int32_t least = 0);

  /// Packs taps in storage order; bits are 0 or 1.
  void pack(const std::int32_t* taps);
  /// Makes a line of `length` values, bits being 0 or 1, what `score` reads, in place.
  void prepareLine(std::int32_t* line, std::ptrdiff_t length) const;
  /// Computes the scores of a run over prepared lines.
  void score(const Run<std::int32_t>& run) const;

 private:
  void packBytes(const std::int32_t* taps);
  /// Extents of the packed template: bits have a column for each 32.
  FilterExtents packedExtents() const;

  IntegerTerm term = IntegerTerm::absoluteDifference;
  FilterExtents extents;
  std::int32_t* storage = nullptr;
  std::int32_t least = 0;
};

}  // namespace BP::lanes
