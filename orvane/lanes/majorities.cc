#include "orvane/lanes/majorities.h"

#include "orvane/lanes/dispatch.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "orvane/lanes/majorities.cc"
#include <hwy/foreach_target.h>

#include <hwy/highway.h>

#include <algorithm>
#include <limits>
#include <utility>

#ifndef ORVANE_LANES_MAJORITIES_ONCE
#define ORVANE_LANES_MAJORITIES_ONCE
namespace BP::lanes {

/// One run, and room for four rows of sums.
struct MajorityTask {
  MedianRun<unsigned char> run;
  int columns;
  int rows;
  std::byte* sums;
};

/// Outputs of a strip, so that its sums stay in the nearest cache.
constexpr std::ptrdiff_t majorityStrip = 1024;

}  // namespace BP::lanes
#endif

HWY_BEFORE_NAMESPACE();
namespace BP::lanes {
namespace HWY_NAMESPACE {

// The loops of this file are so plain that compilers make vectors of them.

/// sums[x] += added[x] - removed[x]; `removed` may be null.
template <class Sum>
void moveDown(Sum* HWY_RESTRICT sums, const unsigned char* HWY_RESTRICT added,
              const unsigned char* HWY_RESTRICT removed, std::ptrdiff_t count) {
  if (removed == nullptr) {
    for (std::ptrdiff_t x = 0; x < count; ++x) sums[x] = static_cast<Sum>(sums[x] + added[x]);
  } else {
    for (std::ptrdiff_t x = 0; x < count; ++x) sums[x] = static_cast<Sum>(sums[x] + added[x] - removed[x]);
  }
}

/// to[x] := a[x] + b[x]
template <class Sum>
void add(const Sum* a, const Sum* b, Sum* HWY_RESTRICT to, std::ptrdiff_t count) {
  for (std::ptrdiff_t x = 0; x < count; ++x) to[x] = static_cast<Sum>(a[x] + b[x]);
}

/// Whether sums of few neighbouring columns reach `half`.
template <int columns, class Sum>
void compareFew(const Sum* HWY_RESTRICT sums, Sum half, unsigned char* HWY_RESTRICT out, std::ptrdiff_t count) {
  for (std::ptrdiff_t x = 0; x < count; ++x) {
    Sum sum = sums[x];
    for (int c = 1; c < columns; ++c) sum = static_cast<Sum>(sum + sums[x + c]);
    out[x] = sum >= half;
  }
}

/// Whether sums of `columns` neighbouring columns reach `half`. The binary digits of `columns` tell which sums of 1, 2,
/// 4, ... columns follow each other in a sum; `room` holds three rows.
template <class Sum>
void compareMany(const Sum* sums, int columns, Sum half, Sum* room, std::ptrdiff_t stride,
                 unsigned char* HWY_RESTRICT out, std::ptrdiff_t count) {
  const std::ptrdiff_t length = count + columns - 1;
  const Sum* powers = sums;  // of `power` columns each
  Sum* const total = room + 2 * stride;
  const Sum* totals = nullptr;
  int done = 0, next = 0;
  for (int power = 1; power <= columns; power *= 2) {
    if ((columns & power) != 0) {
      if (totals == nullptr) {
        std::copy_n(powers, count, total);
      } else {
        for (std::ptrdiff_t x = 0; x < count; ++x) total[x] = static_cast<Sum>(total[x] + powers[x + done]);
      }
      totals = total;
      done += power;
    }
    if (2 * power > columns) break;
    add(powers, powers + power, room + next * stride, length - 2 * power + 1);
    powers = room + next * stride;
    next = 1 - next;
  }
  for (std::ptrdiff_t x = 0; x < count; ++x) out[x] = totals[x] >= half;
}

template <class Sum>
void computeStrip(const MajorityTask& task, std::ptrdiff_t first, std::ptrdiff_t count) {
  const std::ptrdiff_t length = count + task.columns - 1;
  const std::ptrdiff_t stride = majorityStrip + task.columns;
  Sum* const sums = reinterpret_cast<Sum*>(task.sums);
  const auto half = static_cast<Sum>((std::int64_t{task.columns} * task.rows + 1) / 2);
  const auto* const* const lines = task.run.lines;
  std::fill_n(sums, length, Sum(0));
  for (int k = 0; k < task.rows - 1; ++k) moveDown(sums, lines[k] + first, nullptr, length);
  for (int r = 0; r < task.run.rows; ++r) {
    moveDown(sums, lines[r + task.rows - 1] + first, r == 0 ? nullptr : lines[r - 1] + first, length);
    unsigned char* const out = task.run.out[r] + first;
    switch (task.columns) {
      case 1: compareFew<1>(sums, half, out, count); break;
      case 2: compareFew<2>(sums, half, out, count); break;
      case 3: compareFew<3>(sums, half, out, count); break;
      case 4: compareFew<4>(sums, half, out, count); break;
      case 5: compareFew<5>(sums, half, out, count); break;
      default: compareMany(sums, task.columns, half, sums + stride, stride, out, count);
    }
  }
}

void computeMajorities(const MajorityTask& task) {
  const bool isSmall = std::int64_t{task.columns} * task.rows <= std::numeric_limits<std::uint16_t>::max();
  for (std::ptrdiff_t x = 0; x < task.run.width; x += majorityStrip) {
    const std::ptrdiff_t count = std::min(majorityStrip, task.run.width - x);
    isSmall ? computeStrip<std::uint16_t>(task, x, count) : computeStrip<std::uint32_t>(task, x, count);
  }
}

}  // namespace HWY_NAMESPACE
}  // namespace BP::lanes
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace BP::lanes {

HWY_EXPORT(computeMajorities);

bool LaneMajority::resize(int windowColumns, int windowRows) {
  sums.clear();
  if (windowColumns < 1 || windowRows < 1 || std::ptrdiff_t{windowColumns} * windowRows > mostElements) return false;
  columns = windowColumns;
  rows = windowRows;
  sums.resize(4 * sizeof(std::uint32_t) * static_cast<std::size_t>(majorityStrip + columns));
  return true;
}

void LaneMajority::compute(const MedianRun<unsigned char>& run) {
  HWY_DISPATCH_TABLE(computeMajorities)[targetIndex()]({run, columns, rows, sums.data()});
}

}  // namespace BP::lanes
#endif
