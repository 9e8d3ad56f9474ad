#include "orvane/exec/fixed_output.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "orvane/lanes/fixed_casts.h"

namespace BP {

using KarnDSPFixpt::Fixpt;

void addCastCounts(Fixpt& array, const lanes::FixedCounts& counts) {
  if (counts.casts == 0 || !array.statistics()) return;
  const int fraction = array.attributes().type().fraction;
  const auto scaled = [&](std::int64_t v) { return std::ldexp(static_cast<double>(v), -fraction); };
  fxpLogStruct_tag record{static_cast<unsigned>(counts.overflows), static_cast<unsigned>(counts.casts),
                          static_cast<unsigned>(counts.lossy)};
  if (counts.least <= counts.greatest) {
    record.minimum = scaled(counts.least);
    record.maximum = scaled(counts.greatest);
  }
  array.addStatistics(record);
}

bool wantsRange(const Fixpt& array) {
  return array.statistics() && array.attributes().gathering() == KarnDSPFixpt::FixptGathering::ranges;
}

void FixedOutput::resize(int width, int mostRows) {
  constexpr std::ptrdiff_t slack = lanes::FixedSumTask<std::int64_t>::slack;
  wide.resize(static_cast<std::size_t>(std::max(std::ptrdiff_t{width}, narrow * mostRows) + slack));
  std::apply([&](auto&... sums) { (sums.resize(static_cast<std::size_t>(narrow * mostRows + slack)), ...); }, joined);
  stored.resize(static_cast<std::size_t>(narrow * mostRows) * sizeof(std::int64_t));
  rows.resize(static_cast<std::size_t>(mostRows));
}

void FixedOutput::begin(const FixedSumPlan& newPlan, Fixpt& newScratch, Fixpt& newOutput) {
  plan = &newPlan;
  scratch = &newScratch;
  output = &newOutput;
  counts = scratch->statistics() || output->statistics();
  ranges = wantsRange(*scratch) || wantsRange(*output);
  metScratch = metOutput = {};
}

std::byte* FixedOutput::address(std::ptrdiff_t element) const {
  return static_cast<std::byte*>(output->data()) + element * (output->containerBits() / 8);
}

template <class T>
void FixedOutput::cast(const T* sums, std::ptrdiff_t count, std::byte* to) {
  if constexpr (sizeof(T) == 4) {
    if (plan->outputLaneBits == 64) {
      std::copy_n(sums, count, wide.data());
      return cast(wide.data(), count, to);
    }
  }
  lanes::castFixed<T>({plan->outputAppend, plan->output, sums, count, to, output->containerBits() / 8, counts, ranges},
                      metScratch, metOutput);
}

template <class T>
void FixedOutput::put(const T* const* sums, const Place& place) {
  if (place.width < narrow) return putNarrow(sums, place);
  for (int r = 0; r < place.rows; ++r) cast(sums[r], place.width, address(place.first + place.pitch * r));
}

template <class T>
void FixedOutput::putNarrow(const T* const* sums, const Place& place) {
  T* const all = std::get<std::vector<T>>(joined).data();
  for (int r = 0; r < place.rows; ++r) std::copy_n(sums[r], place.width, all + r * place.width);
  cast(all, place.width * place.rows, stored.data());
  const std::ptrdiff_t bytes = place.width * (output->containerBits() / 8);
  for (int r = 0; r < place.rows; ++r) {
    std::memcpy(address(place.first + place.pitch * r), stored.data() + bytes * r, static_cast<std::size_t>(bytes));
  }
}

template void FixedOutput::put(const std::int32_t* const*, const Place&);
template void FixedOutput::put(const std::int64_t* const*, const Place&);

bool FixedOutput::takesBytes() const {
  return output->containerBits() == 8 && plan->outputLaneBits == 32 && plan->outputAppend == 0 &&
         lanes::clamps(plan->output) && !ranges;
}

std::ptrdiff_t FixedOutput::putBytes(const lanes::FixedDotTask& task, std::ptrdiff_t first, std::ptrdiff_t pitch) {
  for (int r = 0; r < task.rows; ++r) {
    rows[static_cast<std::size_t>(r)] = reinterpret_cast<std::uint8_t*>(address(first + pitch * r));
  }
  const lanes::DotCast cast{plan->output, output->attributes().type().isSigned, counts, rows.data()};
  lanes::FixedCounts met;
  const std::ptrdiff_t done = lanes::sumDotsIntoBytes(task, cast, met);
  metOutput.add(met);
  metScratch.casts += met.casts;
  return done;
}

void FixedOutput::addCounts() {
  addCastCounts(*scratch, metScratch);
  addCastCounts(*output, metOutput);
}

}  // namespace BP
