#include "orvane/exec/fixed_sum_walk.h"

#include <algorithm>
#include <functional>
#include <type_traits>

#include "orvane/lanes/target.h"

namespace BP {
namespace {

using KarnDSPFixpt::Fixpt;
using Range = KarnDSPFixpt::detail::Range<std::int64_t>;

std::size_t sizeOf(std::ptrdiff_t count) { return static_cast<std::size_t>(count); }

/// Values from one line, or output row, of `count` values to the next.
constexpr std::ptrdiff_t pitchOf(std::ptrdiff_t count) { return count + lanes::FixedDotTask::slack; }

/// Stored integers as integers of the lanes: the bits of the word, its sign, and the bias.
template <class L, class C>
void convertLine(const C* from, std::ptrdiff_t count, const Range& range, int bias, L* to) {
  using U = std::make_unsigned_t<L>;  // whose arithmetic wraps
  const U mask = static_cast<U>(range.mask), sign = static_cast<U>(range.sign);
  const U offset = static_cast<U>(static_cast<U>(bias) - sign);
  for (std::ptrdiff_t i = 0; i < count; ++i) {
    to[i] = static_cast<L>(static_cast<U>(((static_cast<U>(from[i]) & mask) ^ sign) + offset));
  }
}

/// Whether components lie where the compiler may expect them; a host's memory can have any alignment.
bool isAligned(const Fixpt& array) {
  return reinterpret_cast<std::uintptr_t>(array.data()) % (static_cast<unsigned>(array.containerBits()) / 8) == 0;
}

template <class T>
T shiftedTap(std::int64_t tap, int shift) {
  return static_cast<T>(shift < 0 ? tap >> -shift : tap << shift);
}

}  // namespace

template <class L>
void FixedSumWalk::Ring<L>::resize(const lanes::FilterExtents& filter, int width) {
  pitch = pitchOf(std::ptrdiff_t{width} + filter.columns - 1);
  count = tileRows + filter.rows - 1;
  values.resize(sizeOf(pitch * count));
  places.resize(sizeOf(count));
  pointers.resize(sizeOf(count));
}

template <class T>
void FixedSumWalk::Rows<T>::resize(int width) {
  values.resize(sizeOf(pitchOf(width) * tileRows));
  pointers.resize(tileRows);
  for (int r = 0; r < tileRows; ++r) pointers[sizeOf(r)] = values.data() + pitchOf(width) * r;
}

template <class T>
void FixedSumWalk::Store<T>::resize(const lanes::FilterExtents& filter) {
  ring.resize(filter, stripWidth);
  out.resize(byteStripWidth);
  taps.resize(sizeOf(std::ptrdiff_t{filter.columns} * filter.rows));
  markPitch = pitchOf(std::ptrdiff_t{byteStripWidth} + filter.columns - 1);
  marks.assign(sizeOf(markPitch * 2), 0);
  markPointers.resize(sizeOf(ring.count));
}

void FixedSumWalk::DotStore::resize(const lanes::FilterExtents& filter) {
  bytes.resize(filter, byteStripWidth);
  words.resize(filter, stripWidth);
  lines.resize(sizeOf(bytes.count));
  taps.resize(sizeOf(std::ptrdiff_t{filter.columns} * filter.rows));
  packed.resize(lanes::packedDotsFor(filter.columns, filter.rows));
  packedHigh.resize(packed.size());
  high.resize(stripWidth);
}

void FixedSumWalk::resize(const Block& /*filter*/, const Block& /*input*/, int /*walkedRank*/) {
  constexpr std::int64_t maxElements = std::int64_t{1} << 21;
  static_assert(stripWidth <= byteStripWidth && byteStripWidth <= lanes::maxFixedWidth);
  extents = sums->getExtents();
  if (extents.rows < 1 || extents.columns < 1) return;
  const int length = byteStripWidth + extents.columns - 1;
  if (std::int64_t{pitchOf(length)} * (tileRows + extents.rows) > maxElements) {
    extents = {1, 0, 0};
    return;
  }
  narrow.resize(extents);
  wide.resize(extents);
  dots.resize(extents);
  products.resize(extents, narrow.ring.count);
  productTaps.resize(narrow.taps.size());
  output.resize(byteStripWidth, tileRows);
  room.resize(sizeOf(length));
  std::apply([&](auto&... reader) { (reader.resize(length), ...); }, readers);
}

bool FixedSumWalk::run(const LineSource<Fixpt>& source, const Sector& sector, const OuterSector* edges,
                       const Block& filter, const Block& input, const Block& outputBlock,
                       const LineTarget<Fixpt>& target) {
  Fixpt* const y = target.data;
  if (!lanes::areInUse() || extents.rows < 1 || extents.columns < 1 || scratch == nullptr || !isAligned(*source.data)) {
    return false;
  }
  plan = &sums->planFor(*y);
  const bool isPadded = edges != nullptr && source.padType == PadTypeConstant;
  if (plan->laneBits == 0 || formatOf(*scratch) != formatOf(sums->getAccumulator()) ||
      (isPadded && !sums->isLikeInput(*source.padValue)))
    return false;
  const int *const start = sector.getStart().ptr, *const end = sector.getEnd().ptr;
  const auto outOffset = [&](int d) { return input.getOrigin().ptr[d] - outputBlock.getOrigin().ptr[d]; };
  const Area area{end[0] - start[0] + 1,
                  end[1] - start[1] + 1,
                  start[0] + filter.getLoc().ptr[0],
                  start[1] + filter.getLoc().ptr[1],
                  start[0] + outOffset(0),
                  start[1] + outOffset(1),
                  target.strides[1]};
  const bool gathersLines = edges != nullptr && edges->getIsListed(0);
  met = {};
  output.begin(*plan, *scratch, *y);
  const auto runWith = [&](auto container) {
    using C = decltype(container);
    const int padType = edges == nullptr ? 0 : source.padType;
    const C* const pad = isPadded ? static_cast<const C*>(source.padValue->data()) : nullptr;
    runFrom<C>({static_cast<const C*>(source.data->data()), source.dims, source.strides, 2, padType, pad}, area,
               gathersLines);
  };
  switch (source.data->containerBits()) {
    case 8: runWith(std::uint8_t()); break;
    case 16: runWith(std::uint16_t()); break;
    case 32: runWith(std::uint32_t()); break;
    default: runWith(std::uint64_t()); break;
  }
  addCastCounts(sums->getProduct(), met.product);
  addCastCounts(sums->getAccumulator(), met.sum);
  output.addCounts();
  return true;
}

bool FixedSumWalk::countsCasts() const {
  return sums->getProduct().statistics() || sums->getAccumulator().statistics();
}

bool FixedSumWalk::wantsRanges() const { return wantsRange(sums->getProduct()) || wantsRange(sums->getAccumulator()); }

template <class C>
void FixedSumWalk::runFrom(const LineSource<C>& source, const Area& area, bool gathersLines) {
  if (plan->dots != lanes::DotOperands::none && !wantsRanges()) {
    packDots();
    if (plan->dots == lanes::DotOperands::words) return runDots(dots.words, source, area, gathersLines);
    return runDots(dots.bytes, source, area, gathersLines);
  }
  if (plan->laneBits == 32) return runSingly(narrow, source, area, gathersLines);
  runSingly(wide, source, area, gathersLines);
}

/// Calls `take` with each tile, whose lines lie in the ring's pointers.
template <class L, class C, class TakeT>
void FixedSumWalk::forEachTile(Ring<L>& ring, const LineSource<C>& source, const Area& area, bool gathersLines,
                               TakeT&& take) {
  LineReader<C>& reader = std::get<LineReader<C>>(readers);
  reader.beginSector(source, gathersLines);
  constexpr int strip = sizeof(L) == 1 ? byteStripWidth : stripWidth, most = sizeof(L) == 2 ? wordTileRows : tileRows;
  for (int x = 0; x < area.width; x += strip) {
    const int width = std::min(strip, area.width - x), length = width + extents.columns - 1;
    const int column = area.column + x,
              lastColumn = source.padType == PadTypeConstant ? source.dims[0] : column + length;
    reader.beginStretch(column, length);
    products.beginStrip(width, source.padType == PadTypeConstant ? -column : 0, lastColumn - column);
    int ready = 0;
    for (int row = 0; row < area.height; row += most) {
      const int rows = std::min(most, area.height - row), needed = rows + extents.rows - 1;
      readLines(ring, reader, source, area.row, ready, row + needed, length);
      ready = row + needed;
      for (int k = 0; k < needed; ++k) ring.pointers[sizeOf(k)] = ring.place(row + k);
      const std::ptrdiff_t first = std::ptrdiff_t{area.outPitch} * (area.outRow + row) + area.outColumn + x;
      take(Tile{width, rows, first, column, area.row + row, row});
    }
  }
}

/// Reads lines `from` to before `to` of a strip, whose line 0 is row `firstRow` of the input.
template <class L, class C>
void FixedSumWalk::readLines(Ring<L>& ring, LineReader<C>& reader, const LineSource<C>& source, int firstRow, int from,
                             int to, int length) {
  const Range range =
      KarnDSPFixpt::detail::makeRange<std::int64_t>(sums->getInput().attributes().type(), fxpOverflowWrap);
  const int bias = sizeof(L) < 4 ? plan->bias : 0;
  const C* const end = source.data + std::ptrdiff_t{source.dims[0]} * source.dims[1];
  const bool isDense = source.strides[1] == source.dims[0];  // so what follows a line is in the array
  const bool isSame =
      sizeof(L) == sizeof(C) && static_cast<C>(range.mask) == static_cast<C>(-1) && bias == 0 && isDense;
  for (int k = from; k < to; ++k) {
    const int index[2] = {0, firstRow + k};
    const C* const line = reader.read(index, reinterpret_cast<C*>(room.data()));
    const bool isInInput = !std::less<>()(line, source.data) && std::less<>()(line, end);
    if (isSame && isInInput && end - line >= pitchOf(length)) {
      ring.place(k) = reinterpret_cast<const L*>(line);
    } else {
      convertLine(line, length, range, bias, ring.line(k));
      ring.place(k) = ring.line(k);
    }
    if constexpr (sizeof(L) >= 4) {
      const bool isInside = source.padType != PadTypeConstant || (index[1] >= 0 && index[1] < source.dims[1]);
      if (products.isInUse()) products.addLine(k, ring.line(k), isInside);
    }
  }
}

/// Begins to look at the input for what is counted about products, unless the kernel does that.
void FixedSumWalk::beginProducts() {
  const bool isAny = plan->form == lanes::FixedForm::any;
  std::transform(sums->getTaps().begin(), sums->getTaps().end(), productTaps.begin(),
                 [&](std::int64_t tap) { return shiftedTap<std::int64_t>(tap, plan->tapShift); });
  products.begin(*plan, productTaps, countsCasts() && !isAny, wantsRanges() && !isAny);
}

/// Sums whose taps are added one by one.
template <class T, class C>
void FixedSumWalk::runSingly(Store<T>& store, const LineSource<C>& source, const Area& area, bool gathersLines) {
  const std::vector<std::int64_t>& taps = sums->getTaps();
  std::transform(taps.begin(), taps.end(), store.taps.begin(),
                 [&](std::int64_t tap) { return shiftedTap<T>(tap, plan->tapShift); });
  lanes::FixedSumTask<T> task = makeTask(store);
  beginProducts();
  forEachTile(store.ring, source, area, gathersLines, [&](const Tile& tile) {
    task.rows = tile.rows;
    task.width = tile.width;
    if (source.padType == PadTypeConstant) setMarks(store, task, source, tile);
    lanes::sumFixed(task, met);
    if (products.isInUse()) products.addTile(tile.line, tile.rows, met.product);
    if (countsCasts() && !(task.gathers && plan->form == lanes::FixedForm::any)) lanes::countCasts(task, met);
    output.put(store.out.pointers.data(), {tile.width, tile.rows, tile.first, area.outPitch});
  });
}

/// The task of a tile, without its rows and width.
template <class T>
lanes::FixedSumTask<T> FixedSumWalk::makeTask(Store<T>& store) const {
  lanes::FixedSumTask<T> task;
  task.form = plan->form;
  const bool cutsSums = plan->path == FixedSumPath::checkedSums || plan->form == lanes::FixedForm::any;
  task.gathers = (cutsSums && countsCasts()) || wantsRanges();
  task.ranges = wantsRanges();
  task.columns = extents.columns;
  task.filterRows = extents.rows;
  task.taps = store.taps.data();
  task.append = plan->append;
  task.ownAppend = plan->ownAppend;
  task.otherAppend = plan->otherAppend;
  task.product = plan->product;
  task.sum = plan->sum;
  task.lines = store.ring.pointers.data();
  task.out = store.out.pointers.data();
  return task;
}

/// Marks the values of a tile's lines that lie in the input.
template <class T, class C>
void FixedSumWalk::setMarks(Store<T>& store, lanes::FixedSumTask<T>& task, const LineSource<C>& source,
                            const Tile& tile) const {
  for (int k = 0; k < tile.width + extents.columns - 1; ++k) {
    store.marks[sizeOf(k)] = static_cast<T>(tile.column + k >= 0 && tile.column + k < source.dims[0] ? -1 : 0);
  }
  for (int k = 0; k < tile.rows + extents.rows - 1; ++k) {
    const bool isInside = tile.row + k >= 0 && tile.row + k < source.dims[1];
    store.markPointers[sizeOf(k)] = store.marks.data() + (isInside ? 0 : store.markPitch);
  }
  task.counted = store.markPointers.data();
}

/// Packs the taps for exact sums of narrow operands; with a bias b, the sum begins with -b times the sum of the taps.
void FixedSumWalk::packDots() {
  const auto pack = [&](auto&& part, std::vector<std::int32_t>& packed) {
    std::transform(sums->getTaps().begin(), sums->getTaps().end(), dots.taps.begin(), [&](std::int64_t tap) {
      return static_cast<std::int32_t>(part(shiftedTap<std::int64_t>(tap, plan->tapShift)));
    });
    lanes::packDots(plan->dots, dots.taps.data(), extents.columns, extents.rows, packed.data());
  };
  dots.start = 0;
  for (const std::int64_t tap : sums->getTaps()) {
    dots.start -= plan->bias * shiftedTap<std::int64_t>(tap, plan->tapShift);
  }
  if (plan->dotsInTwo) {
    pack([](std::int64_t tap) { return lanes::DotHalves::of(tap).low; }, dots.packed);
    pack([](std::int64_t tap) { return lanes::DotHalves::of(tap).high; }, dots.packedHigh);
  } else {
    pack([](std::int64_t tap) { return tap; }, dots.packed);
  }
}

template <class L, class C>
void FixedSumWalk::runDots(Ring<L>& ring, const LineSource<C>& source, const Area& area, bool gathersLines) {
  lanes::FixedSumTask<std::int32_t> counted = makeTask(narrow);
  forEachTile(ring, source, area, gathersLines, [&](const Tile& tile) {
    std::copy(ring.pointers.begin(), ring.pointers.end(), dots.lines.begin());
    if (plan->dotsInTwo) {
      sumDotsInTwo(tile, area.outPitch);
    } else {
      sumDots(tile, area.outPitch);
    }
    if (!countsCasts()) return;
    counted.rows = tile.rows;
    counted.width = tile.width;
    if (source.padType == PadTypeConstant) setMarks(narrow, counted, source, tile);
    lanes::countCasts(counted, met);
  });
}

lanes::FixedDotTask FixedSumWalk::makeDotTask(const Tile& tile) const {
  return {plan->dots,        extents.columns, extents.rows, dots.packed.data(),        0,
          dots.lines.data(), tile.rows,       tile.width,   narrow.out.pointers.data()};
}

void FixedSumWalk::sumDots(const Tile& tile, std::ptrdiff_t outPitch) {
  lanes::FixedDotTask task = makeDotTask(tile);
  task.start = static_cast<std::int32_t>(dots.start);  // modulo 2^32, as the sums
  std::vector<const void*>& lines = dots.lines;
  const std::ptrdiff_t done = output.takesBytes() ? output.putBytes(task, tile.first, outPitch) : 0;
  if (done == tile.width) return;
  const std::ptrdiff_t bytes = plan->dots == lanes::DotOperands::words ? 2 : 1;
  for (const void*& line : lines) line = static_cast<const std::byte*>(line) + done * bytes;
  task.width -= done;
  lanes::sumDots(task);
  output.put(narrow.out.pointers.data(), {task.width, tile.rows, tile.first + done, outPitch});
}

void FixedSumWalk::sumDotsInTwo(const Tile& tile, std::ptrdiff_t outPitch) {
  lanes::FixedDotTask task = makeDotTask(tile);
  lanes::sumDots(task);
  task.taps = dots.packedHigh.data();
  task.out = dots.high.pointers.data();
  lanes::sumDots(task);
  for (int r = 0; r < tile.rows; ++r) {
    std::int64_t* const sum = wide.out.pointers[sizeOf(r)];
    lanes::joinDots(dots.high.pointers[sizeOf(r)], narrow.out.pointers[sizeOf(r)], dots.start, tile.width, sum);
  }
  output.put(wide.out.pointers.data(), {tile.width, tile.rows, tile.first, outPitch});
}

}  // namespace BP
