#include <algorithm>
#include <cstring>

#include "orvane/platform/karn_fixpt_3.h"

namespace KarnDSPFixpt {

namespace {

template <class Container>
void readContainers(const std::byte* from, int count, const detail::Range<std::int64_t>& range, std::int32_t* to) {
  const auto mask = static_cast<std::uint32_t>(range.mask), sign = static_cast<std::uint32_t>(range.sign);
  for (int i = 0; i < count; ++i) {
    Container bits;
    std::memcpy(&bits, from + static_cast<std::ptrdiff_t>(i) * static_cast<std::ptrdiff_t>(sizeof bits), sizeof bits);
    to[i] = static_cast<std::int32_t>(((std::uint32_t{bits} & mask) ^ sign) - sign);
  }
}

template <class Container>
void writeContainers(const std::int32_t* from, int count, std::byte* to) {
  for (int i = 0; i < count; ++i) {
    const auto value = static_cast<Container>(from[i]);
    std::memcpy(to + static_cast<std::ptrdiff_t>(i) * static_cast<std::ptrdiff_t>(sizeof value), &value, sizeof value);
  }
}

void writeRow(const std::int32_t* from, int count, int bytesLog, std::byte* to) {
  switch (bytesLog) {
    case 0: return writeContainers<std::int8_t>(from, count, to);
    case 1: return writeContainers<std::int16_t>(from, count, to);
    case 2: return writeContainers<std::int32_t>(from, count, to);
    default: return writeContainers<std::int64_t>(from, count, to);
  }
}

}  // namespace

bool Fixpt::canReadRow() const { return isNarrow_ && !isComplex_ && bytesLog_ <= 1; }

void Fixpt::readRow(int first, int count, std::int32_t* to) const {
  if (bytesLog_ == 0) {
    readContainers<std::uint8_t>(address(first), count, range_, to);
  } else {
    readContainers<std::uint16_t>(address(first), count, range_, to);
  }
}

bool Fixpt::canAssignRow(const Fixpt& like) { return isNarrow_ && !isComplex_ && !like.isComplex_ && planAssign(like); }

void Fixpt::assignRow(const Fixpt& like, int first, const std::int32_t* stored, int count) {
  if (count < 1) return;
  planAssign(like);
  detail::CountingCast<std::int64_t> cast;
  cast.start(assignPlan_.rounder, range_);
  std::int32_t least = stored[0], greatest = stored[0];
  for (int i = 1; i < count; ++i) least = std::min(least, stored[i]), greatest = std::max(greatest, stored[i]);
  const bool isUnchanged = assignPlan_.append == 0 && assignPlan_.rounder.right == 0;
  if (isUnchanged && range_.holds(least) && range_.holds(greatest)) {
    writeRow(stored, count, bytesLog_, address(first));
    cast.least = least, cast.greatest = greatest;
  } else {
    for (int i = 0; i < count; ++i) storeNarrow(first + i, cast(std::int64_t{stored[i]} << assignPlan_.append));
  }
  cursor_ = first + count - 1;
  if (!counting_) return;
  counters_.casts += static_cast<unsigned>(count);
  counters_.overflows += cast.overflows;
  counters_.lossy += cast.lossy;
  counters_.least = std::min(counters_.least, cast.least);
  counters_.greatest = std::max(counters_.greatest, cast.greatest);
}

}  // namespace KarnDSPFixpt
