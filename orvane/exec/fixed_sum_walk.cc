#include "orvane/exec/fixed_sum_walk.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <type_traits>

#include "orvane/lanes/target.h"

namespace BP {
namespace {

using KarnDSPFixpt::Fixpt;
using Range = KarnDSPFixpt::detail::Range<std::int64_t>;

std::size_t sizeOf(std::ptrdiff_t count) { return static_cast<std::size_t>(count); }

/// Values from one line, or output row, of `count` values to the next.
constexpr std::ptrdiff_t pitchOf(std::ptrdiff_t count) { return count + lanes::FixedPairTask::slack; }

/// Stored integers as integers of the lanes: the bits of the word, and its sign.
template <class T, class C>
void convertLine(const C* from, std::ptrdiff_t count, const Range& range, T* to) {
  using U = std::make_unsigned_t<T>;  // whose arithmetic wraps
  const U mask = static_cast<U>(range.mask), sign = static_cast<U>(range.sign);
  for (std::ptrdiff_t i = 0; i < count; ++i) {
    to[i] = static_cast<T>(static_cast<U>(((static_cast<U>(from[i]) & mask) ^ sign) - sign));
  }
}

/// Whether components lie where the compiler may expect them; a host's memory can have any alignment.
bool isAligned(const Fixpt& array) {
  return reinterpret_cast<std::uintptr_t>(array.data()) % (static_cast<unsigned>(array.containerBits()) / 8) == 0;
}

template <class C, class T>
void storeRow(const T* from, std::ptrdiff_t count, std::byte* to) {
  for (std::ptrdiff_t i = 0; i < count; ++i) {
    const C value = static_cast<C>(from[i]);
    std::memcpy(to + i * std::ptrdiff_t{sizeof value}, &value, sizeof value);
  }
}

void addTo(Fixpt& array, const lanes::FixedCounts& counts) {
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

/// Whether an array wants to know the least and greatest of its values.
bool wantsRange(const Fixpt& array) {
  return array.statistics() && array.attributes().gathering() == KarnDSPFixpt::FixptGathering::ranges;
}

}  // namespace

template <class L>
void FixedSumWalk::Ring<L>::resize(const lanes::FilterExtents& filter) {
  pitch = pitchOf(std::ptrdiff_t{stripWidth} + filter.columns - 1);
  count = tileRows + filter.rows - 1;
  values.resize(sizeOf(pitch * count));
  pointers.resize(sizeOf(count));
}

template <class T>
void FixedSumWalk::Store<T>::resize(const lanes::FilterExtents& filter) {
  ring.resize(filter);
  taps.resize(sizeOf(std::ptrdiff_t{filter.columns} * filter.rows));
  marks.assign(sizeOf(ring.pitch * 2), 0);
  markPointers.resize(sizeOf(ring.count));
  out.resize(sizeOf(pitchOf(stripWidth) * tileRows));
  outPointers.resize(tileRows);
  for (int r = 0; r < tileRows; ++r) outPointers[sizeOf(r)] = out.data() + pitchOf(stripWidth) * r;
}

void FixedSumWalk::resize(const Block& /*filter*/, const Block& /*input*/, int /*walkedRank*/) {
  constexpr std::int64_t maxElements = std::int64_t{1} << 21;
  static_assert(stripWidth <= lanes::maxFixedWidth);
  extents = sums->getExtents();
  if (extents.rows < 1 || extents.columns < 1) return;
  const int length = stripWidth + extents.columns - 1;
  if (std::int64_t{pitchOf(length)} * (tileRows + extents.rows) > maxElements) {
    extents = {1, 0, 0};
    return;
  }
  shortRing.resize(extents);
  pairs.resize(lanes::FixedPairTask::sizeFor(extents.columns, extents.rows));
  narrow.resize(extents);
  wide.resize(extents);
  room.resize(sizeOf(length));
  std::apply([&](auto&... reader) { (reader.resize(length), ...); }, readers);
}

bool FixedSumWalk::run(const LineSource<Fixpt>& source, const Sector& sector, const OuterSector* edges,
                       const Block& filter, const Block& input, const Block& output, Fixpt* y) {
  if (!lanes::areInUse() || extents.rows < 1 || extents.columns < 1 || scratch == nullptr || !isAligned(*source.data)) {
    return false;
  }
  const FixedSumPlan& plan = sums->planFor(*y);
  const bool isPadded = edges != nullptr && source.padType == PadTypeConstant;
  if (plan.laneBits == 0 || formatOf(*scratch) != formatOf(sums->getAccumulator()) ||
      (isPadded && !sums->isLikeInput(*source.padValue)))
    return false;
  const int *const start = sector.getStart().ptr, *const end = sector.getEnd().ptr;
  const auto outOffset = [&](int d) { return input.getOrigin().ptr[d] - output.getOrigin().ptr[d]; };
  const Area area{end[0] - start[0] + 1,
                  end[1] - start[1] + 1,
                  start[0] + filter.getLoc().ptr[0],
                  start[1] + filter.getLoc().ptr[1],
                  start[0] + outOffset(0),
                  start[1] + outOffset(1),
                  output.getDims().ptr[0]};
  const bool gathersLines = edges != nullptr && edges->getIsListed(0);
  LineSource<Fixpt> plane = source;
  plane.rank = 2;
  if (edges == nullptr) plane.padType = 0;
  met = {};
  metScratch = metOutput = {};
  if (plan.laneBits == 32) {
    runIn(narrow, plan, plane, area, *y, gathersLines);
  } else {
    runIn(wide, plan, plane, area, *y, gathersLines);
  }
  addCounts(*y);
  return true;
}

bool FixedSumWalk::countsCasts() const {
  return sums->getProduct().statistics() || sums->getAccumulator().statistics();
}

/// The task of a tile, without its rows and width.
template <class T>
lanes::FixedSumTask<T> FixedSumWalk::makeTask(Store<T>& store, const FixedSumPlan& plan, bool hasMarks) const {
  const bool wantsRanges = wantsRange(sums->getProduct()) || wantsRange(sums->getAccumulator());
  lanes::FixedSumTask<T> task;
  task.form = plan.form;
  task.gathers = plan.form == lanes::FixedForm::exact ? wantsRanges : countsCasts();
  task.columns = extents.columns;
  task.filterRows = extents.rows;
  task.taps = store.taps.data();
  task.append = plan.append;
  task.ownAppend = plan.ownAppend;
  task.otherAppend = plan.otherAppend;
  task.product = plan.product;
  task.sum = plan.sum;
  task.lines = store.ring.pointers.data();
  task.counted = hasMarks ? store.markPointers.data() : nullptr;
  task.out = store.outPointers.data();
  return task;
}

template <class T>
void FixedSumWalk::runIn(Store<T>& store, const FixedSumPlan& plan, const LineSource<Fixpt>& source, const Area& area,
                         Fixpt& y, bool gathersLines) {
  const std::vector<std::int64_t>& taps = sums->getTaps();
  for (std::size_t n = 0; n < taps.size(); ++n) {
    store.taps[n] = static_cast<T>(plan.tapShift < 0 ? taps[n] >> -plan.tapShift : taps[n] << plan.tapShift);
  }
  const auto runWith = [&](auto container) {
    using C = decltype(container);
    const auto* const data = static_cast<const C*>(source.data->data());
    const C* const pad = source.padType == PadTypeConstant ? static_cast<const C*>(source.padValue->data()) : nullptr;
    const LineSource<C> lines{data, source.dims, source.rank, source.padType, pad};
    if constexpr (sizeof(T) == 4) {
      if (plan.takesPairs && !makeTask(store, plan, false).gathers) {
        lanes::FixedPairTask::pack(store.taps.data(), extents.columns, extents.rows, pairs.data());
        return runFrom(store, shortRing, plan, lines, area, y, gathersLines);
      }
    }
    runFrom(store, store.ring, plan, lines, area, y, gathersLines);
  };
  switch (source.data->containerBits()) {
    case 8: return runWith(std::uint8_t());
    case 16: return runWith(std::uint16_t());
    case 32: return runWith(std::uint32_t());
    default: return runWith(std::uint64_t());
  }
}

template <class T, class L, class C>
void FixedSumWalk::runFrom(Store<T>& store, Ring<L>& ring, const FixedSumPlan& plan, const LineSource<C>& source,
                           const Area& area, Fixpt& y, bool gathersLines) {
  const bool hasMarks = source.padType == PadTypeConstant;
  LineReader<C>& reader = std::get<LineReader<C>>(readers);
  reader.beginSector(source, gathersLines);
  lanes::FixedSumTask<T> task = makeTask(store, plan, hasMarks);
  for (int x = 0; x < area.width; x += stripWidth) {
    task.width = std::min(stripWidth, area.width - x);
    const int length = static_cast<int>(task.width) + extents.columns - 1, column = area.column + x;
    reader.beginStretch(column, length);
    for (int k = 0; k < length && hasMarks; ++k) {
      store.marks[sizeOf(k)] = static_cast<T>(column + k >= 0 && column + k < source.dims[0] ? -1 : 0);
    }
    int ready = 0;
    for (int row = 0; row < area.height; row += tileRows) {
      task.rows = std::min(tileRows, area.height - row);
      const int needed = task.rows + extents.rows - 1;
      readLines(ring, reader, area.row, ready, row + needed, length);
      ready = row + needed;
      for (int k = 0; k < needed; ++k) {
        const int inputRow = area.row + row + k;
        const bool isInside = inputRow >= 0 && inputRow < source.dims[1];
        ring.pointers[sizeOf(k)] = ring.line(row + k);
        store.markPointers[sizeOf(k)] = store.marks.data() + (isInside ? 0 : ring.pitch);
      }
      sumTile(store, task, sizeof(L) < sizeof(T));
      for (int r = 0; r < task.rows; ++r) {
        const std::ptrdiff_t first = std::ptrdiff_t{area.outPitch} * (area.outRow + row + r) + area.outColumn + x;
        putRow(store.outPointers[sizeOf(r)], static_cast<int>(task.width), plan, first, y);
      }
    }
  }
}

/// Reads lines `from` to before `to` of a strip, whose line 0 is row `firstRow` of the input.
template <class L, class C>
void FixedSumWalk::readLines(Ring<L>& ring, LineReader<C>& reader, int firstRow, int from, int to, int length) {
  const Range range =
      KarnDSPFixpt::detail::makeRange<std::int64_t>(sums->getInput().attributes().type(), fxpOverflowWrap);
  for (int k = from; k < to; ++k) {
    const int index[2] = {0, firstRow + k};
    convertLine(reader.read(index, reinterpret_cast<C*>(room.data())), length, range, ring.line(k));
  }
}

template <class T>
void FixedSumWalk::sumTile(const Store<T>& store, const lanes::FixedSumTask<T>& task, bool inPairs) {
  if constexpr (sizeof(T) == 4) {
    if (inPairs) {
      lanes::sumFixedPairs({task.columns, task.filterRows, pairs.data(), shortRing.pointers.data(), task.rows,
                            task.width, store.outPointers.data()});
    }
  }
  if (!inPairs) lanes::sumFixed(task, met);
  if (!task.gathers && countsCasts()) lanes::countCasts(task, met);
}

/// Casts a row of sums into the output's type, and stores it from element `first` on.
template <class T>
void FixedSumWalk::putRow(T* values, int count, const FixedSumPlan& plan, std::ptrdiff_t first, Fixpt& y) {
  if constexpr (sizeof(T) == 4) {
    if (plan.outputLaneBits == 64) {
      std::copy_n(values, count, wide.out.data());
      castRow(wide.out.data(), count, plan, first, y);
      return;
    }
  }
  castRow(values, count, plan, first, y);
}

template <class T>
void FixedSumWalk::castRow(T* values, int count, const FixedSumPlan& plan, std::ptrdiff_t first, Fixpt& y) {
  lanes::castFixed<T>({plan.outputAppend, plan.output, values, count}, metScratch, metOutput);
  const int bytes = y.containerBits() / 8;
  std::byte* const to = static_cast<std::byte*>(y.data()) + first * bytes;
  switch (bytes) {
    case 1: return storeRow<std::int8_t>(values, count, to);
    case 2: return storeRow<std::int16_t>(values, count, to);
    case 4: return storeRow<std::int32_t>(values, count, to);
    default: return storeRow<std::int64_t>(values, count, to);
  }
}

/// Each output is cast twice, as in the plain walk: into the scratch output, which has the accumulator's type, and from
/// there into the output.
void FixedSumWalk::addCounts(Fixpt& y) const {
  addTo(sums->getProduct(), met.product);
  addTo(sums->getAccumulator(), met.sum);
  addTo(*scratch, metScratch);
  addTo(y, metOutput);
}

}  // namespace BP
