#include "tool/plan_axis.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <iterator>

namespace BP::tool {

namespace {

/// A long run grows by a little each time that its count is four times as large.
int shownLength(int count) {
  constexpr int longest = 12;
  if (count <= longest) return count;
  return longest + static_cast<int>(std::bit_width(static_cast<unsigned>(count / longest)) + 1) / 2;
}

}  // namespace

PlanAxis::PlanAxis(const std::set<int>& breaks) {
  int offset = 0;
  for (auto next = std::next(breaks.begin()); next != breaks.end(); ++next) {
    const int first = *std::prev(next);
    const int count = *next - first;
    runs.push_back({first, count, offset, shownLength(count)});
    offset += runs.back().length;
  }
}

int PlanAxis::cells() const { return runs.back().offset + runs.back().length; }

bool PlanAxis::isShortened() const {
  return std::ranges::any_of(runs, [](const Run& run) { return run.length < run.count; });
}

int PlanAxis::at(int position) const {
  const auto behind = std::ranges::upper_bound(runs, position, {}, &Run::first);
  const Run& run = *std::prev(behind);
  const std::int64_t within = std::int64_t{position - run.first} * run.length * cell / run.count;
  return run.offset * cell + static_cast<int>(within);
}

std::vector<int> PlanAxis::wholeCells(int first, int last) const {
  std::vector<int> positions;
  for (const Run& run : runs) {
    if (run.length != run.count) continue;
    for (int p = std::max(run.first, first); p < run.first + run.count && p <= last; ++p) positions.push_back(p);
  }
  return positions;
}

}  // namespace BP::tool
