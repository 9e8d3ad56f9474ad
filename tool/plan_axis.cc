#include "tool/plan_axis.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <iterator>

namespace BP::tool {

namespace {

/// The length of a run in cells. A long run is one cell longer for each factor of four in its count.
int shownLength(int count) {
  constexpr int maxCells = 12;
  if (count <= maxCells) return count;
  return maxCells + static_cast<int>(std::bit_width(static_cast<unsigned>(count / maxCells)) + 1) / 2;
}

}  // namespace

PlanAxis::PlanAxis(const std::set<int>& breaks) {
  int offset = 0;
  for (auto end = std::next(breaks.begin()); end != breaks.end(); ++end) {
    const int first = *std::prev(end);
    const int count = *end - first;
    runs.push_back({first, count, offset, shownLength(count)});
    offset += runs.back().length;
  }
}

int PlanAxis::cells() const { return runs.back().offset + runs.back().length; }

bool PlanAxis::isShortened() const {
  return std::ranges::any_of(runs, [](const Run& run) { return run.length < run.count; });
}

int PlanAxis::at(int position) const {
  const auto next = std::ranges::upper_bound(runs, position, {}, &Run::first);
  const Run& run = *std::prev(next);
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
