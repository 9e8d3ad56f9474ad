// Beside the targets of the other sources, there is one more here, with a population count in vectors.
#define ORVANE_LANES_COUNT_BITS
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

const IntegerKernels& integerKernels() { return HWY_DISPATCH_TABLE(integerKernelsHere)[bitCountingTargetIndex()](); }

namespace {

constexpr int windowBits = 32;

constexpr int tapSizeOf(IntegerTerm term) { return term == IntegerTerm::unequalBits ? 2 : 1; }
int packedRowsFor(FilterExtents extents) { return std::min(extents.rows, maxPackedRows); }

FilterExtents packedExtentsFor(IntegerTerm term, FilterExtents extents) {
  if (term == IntegerTerm::unequalBits) extents.columns = (extents.columns + windowBits - 1) / windowBits;
  return extents;
}

}  // namespace

std::size_t IntegerTemplate::sizeFor(IntegerTerm term, FilterExtents extents) {
  const FilterExtents packed = packedExtentsFor(term, extents);
  const int packedRows = packedRowsFor(extents);
  return std::size_t(packed.rows + packedRows - 1) * std::size_t(packed.columns) * std::size_t(packedRows) *
         std::size_t(tapSizeOf(term));
}

IntegerTemplate::IntegerTemplate(IntegerTerm packedTerm, FilterExtents size, std::int32_t* store)
    : term(packedTerm), extents(size), storage(store) {}

FilterExtents IntegerTemplate::packedExtents() const { return packedExtentsFor(term, extents); }

void IntegerTemplate::pack(const std::int32_t* taps) {
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

void IntegerTemplate::prepareLine(std::int32_t* line, std::ptrdiff_t length) const {
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
  integerKernels().score[static_cast<std::size_t>(term)](task);
}

}  // namespace BP::lanes
#endif
