#include "orvane/filters/bands.h"

#include <algorithm>
#include <atomic>

namespace BP::filters::detail {

namespace {

/// Less takes a thread about as long as its call.
std::atomic<std::int64_t> leastWorkOfThreads{std::int64_t{1} << 21};
/// Of a band: some milliseconds, so that threads end together and progress is seen.
constexpr std::int64_t workOfBand = std::int64_t{1} << 25;
/// Lanes compute rows in groups, and medians sort the columns of all rows that a band reads.
constexpr int leastRows = 128;
constexpr int bandsPerThread = 4;

}  // namespace

std::int64_t setLeastWorkOfThreads(std::int64_t taps) { return leastWorkOfThreads.exchange(taps); }

BoxTables::BoxTables(const Box& box) {
  dims.fill(1);
  for (std::size_t d = 0; d < box.extents.rank(); ++d) {
    loc[d] = static_cast<int>(box.start[d]);
    dims[d] = static_cast<int>(box.extents[d]);
  }
}

Bands::Bands(const BoxTables& box, std::size_t rank, std::int64_t taps, const Crew& crew, bool inOrder) : whole(box) {
  const int threads = crew.getThreads();
  double work = static_cast<double>(taps);
  for (std::size_t d = 0; d < rank; ++d) {
    if (box.dims[d] < 1) return;
    work *= box.dims[d];
  }
  count = 1;
  const std::int64_t least = leastWorkOfThreads;
  const bool isSmall = work < static_cast<double>(least);
  if (isSmall || (threads == 1 && !crew.reports())) return;
  const int wanted =
      std::max(threads * bandsPerThread, static_cast<int>(std::min(work / static_cast<double>(workOfBand), 4096.0)));
  along = rank - 1;
  while (!inOrder && along > 0 && box.dims[along] < 2 * threads) --along;
  if (!inOrder && box.dims[along] < 2 * threads) {
    along = static_cast<std::size_t>(
        std::max_element(box.dims.begin(), box.dims.begin() + static_cast<std::ptrdiff_t>(rank)) - box.dims.begin());
  }
  const int extent = box.dims[along];
  const int most = along == 1 && least > 0 ? std::max(extent / leastRows, std::min(threads, extent)) : extent;
  count = std::clamp(wanted, 1, most);
}

BoxTables Bands::operator[](int k) const {
  BoxTables band = whole;
  const auto placeOf = [&](int number) { return static_cast<int>(std::int64_t{whole.dims[along]} * number / count); };
  band.loc[along] += placeOf(k);
  band.dims[along] = placeOf(k + 1) - placeOf(k);
  return band;
}

}  // namespace BP::filters::detail
