// Beside the targets of the other sources, there is one more here, with a population count in vectors.
#define ORVANE_LANES_LATER_AVX512
#include "orvane/lanes/dispatch.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "orvane/lanes/integer_differences.cc"
#include <hwy/foreach_target.h>

#include "orvane/lanes/integer_differences-inl.h"

HWY_BEFORE_NAMESPACE();
namespace BP::lanes {
namespace HWY_NAMESPACE {

const IntegerKernels& integerKernelsHere() {
  static constexpr IntegerKernels kernels = makeIntegerKernels();
  return kernels;
}

}  // namespace HWY_NAMESPACE
}  // namespace BP::lanes
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

#include <algorithm>

namespace BP::lanes {

HWY_EXPORT(integerKernelsHere);

const IntegerKernels& integerKernels() { return HWY_DISPATCH_TABLE(integerKernelsHere)[targetIndex()](); }

namespace {

constexpr int windowBits = 32;

constexpr int tapSizeOf(IntegerTerm term) { return term == IntegerTerm::unequalBits ? 2 : 1; }
int packedRowsFor(FilterExtents extents) { return std::min(extents.rows, maxPackedRows); }

/// Bytes of a packed row, a multiple of 8.
constexpr int bytesOfRow(FilterExtents extents) { return (extents.columns + 7) / 8 * 8; }

/// Values as bytes, counted from `least`, which leaves their differences as they are. It may be done in place.
void makeBytes(const std::int32_t* from, std::ptrdiff_t count, std::int32_t least, std::uint8_t* to) {
  constexpr std::ptrdiff_t most = 64;
  std::uint8_t some[most];
  for (std::ptrdiff_t at = 0; at < count; at += most) {
    const std::ptrdiff_t n = std::min(most, count - at);
    for (std::ptrdiff_t i = 0; i < n; ++i) some[i] = static_cast<std::uint8_t>(from[at + i] - least);
    std::copy_n(some, n, to + at);
  }
}

FilterExtents packedExtentsFor(IntegerTerm term, FilterExtents extents) {
  if (term == IntegerTerm::unequalBits) extents.columns = (extents.columns + windowBits - 1) / windowBits;
  return extents;
}

}  // namespace

bool IntegerTemplate::canTake(IntegerTerm term, FilterExtents extents) {
  const FilterExtents packed = packedExtentsFor(term, extents);
  return term != IntegerTerm::unequalBits || std::int64_t{packed.rows} * packed.columns <= maxBitTaps;
}

std::size_t IntegerTemplate::sizeFor(IntegerTerm term, FilterExtents extents) {
  if (term == IntegerTerm::byteDifference) return std::size_t(extents.rows) * std::size_t(bytesOfRow(extents)) / 4;
  const FilterExtents packed = packedExtentsFor(term, extents);
  const int packedRows = packedRowsFor(extents);
  return std::size_t(packed.rows + packedRows - 1) * std::size_t(packed.columns) * std::size_t(packedRows) *
         std::size_t(tapSizeOf(term));
}

IntegerTemplate::IntegerTemplate(IntegerTerm packedTerm, FilterExtents size, std::int32_t* store,
                                 std::int32_t leastByte)
    : term(packedTerm), extents(size), storage(store), least(leastByte) {}

FilterExtents IntegerTemplate::packedExtents() const { return packedExtentsFor(term, extents); }

void IntegerTemplate::pack(const std::int32_t* taps) {
  if (term == IntegerTerm::byteDifference) return packBytes(taps);
  const FilterExtents packed = packedExtents();
  const int packedRows = packedRowsFor(extents);
  std::int32_t* to = storage;
  const auto packTap = [&](const std::int32_t* row, int c) {
    if (term != IntegerTerm::unequalBits) {
      to[0] = row[c];
      return;
    }
    std::uint32_t bits = 0, mask = 0;
    for (int i = 0; i < windowBits && c * windowBits + i < extents.columns; ++i) {
      bits |= static_cast<std::uint32_t>(row[c * windowBits + i]) << i;
      mask |= std::uint32_t{1} << i;
    }
    to[0] = static_cast<std::int32_t>(bits), to[1] = static_cast<std::int32_t>(mask);
  };
  for (int line = 0; line < packed.rows + packedRows - 1; ++line) {
    for (int c = 0; c < packed.columns; ++c) {
      for (int r = 0; r < packedRows; ++r, to += tapSizeOf(term)) {
        const int j = line - r;
        if (j >= 0 && j < packed.rows) packTap(taps + std::ptrdiff_t(j) * extents.columns, c);
      }
    }
  }
}

void IntegerTemplate::packBytes(const std::int32_t* taps) {
  auto* to = reinterpret_cast<std::uint8_t*>(storage);
  for (int j = 0; j < extents.rows; ++j, taps += extents.columns, to += bytesOfRow(extents)) {
    std::fill_n(to, bytesOfRow(extents), std::uint8_t{0});
    makeBytes(taps, extents.columns, least, to);
  }
}

void IntegerTemplate::prepareLine(std::int32_t* line, std::ptrdiff_t length) const {
  if (term == IntegerTerm::byteDifference) makeBytes(line, length, least, reinterpret_cast<std::uint8_t*>(line));
  if (term != IntegerTerm::unequalBits) return;
  std::fill_n(line + length, spare, 0);
  integerKernels().makeWindows(line, length);
}

void IntegerTemplate::score(const Run<std::int32_t>& run) const {
  const FilterExtents packed = packedExtents();
  SumTask<std::int32_t> task;
  task.taps = storage;
  task.packedRows = packedRowsFor(extents);
  task.filterRows = packed.rows;
  task.columns = packed.columns;
  task.step = term == IntegerTerm::unequalBits ? windowBits : 1;
  task.lines = run.lines;
  task.planeStride = run.planeStride;
  task.rows = run.rows;
  task.width = run.width;
  task.out = run.out;
  if (term == IntegerTerm::byteDifference) return integerKernels().scoreBytes(task);
  integerKernels().score[static_cast<std::size_t>(term)](task);
}

}  // namespace BP::lanes
#endif
