#pragma once

#include <algorithm>
#include <cstddef>
#include <type_traits>
#include <vector>

#include "orvane/core/element.h"
#include "orvane/core/enums.h"
#include "orvane/input/line_reader.h"
#include "orvane/lanes/conversions.h"
#include "orvane/lanes/separable.h"
#include "orvane/lanes/target.h"

namespace BP {

/// Where the two passes of a separable filter read and write.
struct SeparableGeometry {
  int outputDims[2];
  int first[2];       ///< coordinates of the first tap of output (0, 0): in the input, and in the array between
  int columns, rows;  ///< taps of the first filter, along dimension 0, and of the second, along dimension 1
};

/// Computes both passes of a separable filter in one walk, with the bits of two passes: lines of the array between are
/// filtered as they are needed, and few of them are kept.
///
///     input line -> along dimension 0 -> a ring of lines between -> along dimension 1 -> output row
///
/// The output is cut into strips along dimension 0. Lines of the narrow strips at the input's edges are gathered
/// through the pad. Between them strips are wide, and their lines are pointers into the input. HT, UT and YT are the
/// plain element types of filters, input and output.
template <class HT, class UT, class YT>
class SeparableWalk {
 public:
  /// Makes all room, for filters of these many taps.
  void resize(int columns, int rows);

  /// Whether lanes are in use and take the filters.
  bool canRun() const { return isReady && lanes::areInUse(); }
  /// Filters all lines that `lines` reads, of rank 2, into `target`. `beyond` is what the array between yields beyond
  /// its edge under a constant pad. Returns false and does nothing if lanes are not in use, the filters are too long
  /// for them, or there is nothing to compute.
  bool run(const LineSource<UT>& lines, const YT* beyond, const HT* first, const HT* second, bool reversed,
           const SeparableGeometry& geometry, const LineTarget<YT>& target);

 private:
  using Real = decltype(std::real(YT()));
  template <class A>
  static constexpr bool isComplex = !std::is_same_v<A, Real>;
  template <class In>
  static constexpr lanes::Elements kindOf = isComplex<In> ? (isComplex<HT> ? lanes::Elements::complexComplex
                                                                           : lanes::Elements::complexReal)
                                                          : (isComplex<HT> ? lanes::Elements::realComplex
                                                                           : lanes::Elements::realReal);

  static constexpr int stripWidth = 4096;
  static constexpr int copiedWidth = 256;      ///< of a strip whose lines are gathered
  static constexpr int convertedWidth = 1024;  ///< of a strip whose lines or outputs are converted
  static constexpr int edgeWidth = 16;         ///< strips at an edge are multiples of this, where there is room
  static constexpr int maxRows = 512;          ///< in a run
  static constexpr int maxCopiedRows = 128;    ///< in a run whose lines are gathered

  void runStrips(const SeparableGeometry& g, int begin, int end, int maxWidth, const LineTarget<YT>& target);
  void runStrip(const SeparableGeometry& g, int x, int width, const LineTarget<YT>& target);
  const UT* lineAt(int row, int length, int number);
  void storeRows(const LineTarget<YT>& target, int x, int row, int width, int count);
  void makeConvertedRoom(const SeparableGeometry& g);

  static constexpr int maxTaps = 1024;  ///< of each filter

  bool isReady = false;
  LineReader<UT> reader;
  LineSource<UT> source{};
  std::vector<Real> alongTaps, acrossTaps;
  lanes::PackedFilter<Real> along, across;
  std::vector<Real> scratch;
  std::vector<const Real*> scratchLines;
  std::vector<const Real*> linePointers;
  std::vector<Real*> outPointers;
  std::vector<UT> copied;
  std::vector<YT> rounded;  ///< outputs of a run before they are rounded to the type in which they are stored
  std::vector<YT> beyondLine;
};

template <class HT, class UT, class YT>
void SeparableWalk<HT, UT, YT>::resize(int columns, int rows) {
  isReady = columns > 0 && rows > 0 && std::max(columns, rows) <= maxTaps;
  if (!isReady) return;
  const lanes::FilterExtents alongExtents{1, 1, columns}, acrossExtents{1, rows, 1};
  alongTaps.resize(lanes::PackedFilter<Real>::sizeFor(kindOf<UT>, alongExtents));
  acrossTaps.resize(lanes::PackedFilter<Real>::sizeFor(kindOf<YT>, acrossExtents));
  along = {kindOf<UT>, alongExtents, alongTaps.data()};
  across = {kindOf<YT>, acrossExtents, acrossTaps.data()};
  const auto room = lanes::SeparableSums<Real>::scratchFor(across, stripWidth);
  scratch.resize(room.values);
  scratchLines.resize(room.pointers);
  const auto size = [](int count) { return static_cast<std::size_t>(count); };
  linePointers.resize(size(maxRows) + size(rows) - 1);
  outPointers.resize(size(maxRows));
  copied.resize((size(maxCopiedRows) + size(rows) - 1) * (size(copiedWidth) + size(columns) - 1));
  beyondLine.resize(size(stripWidth));
  reader.resize(stripWidth + columns - 1);
}

template <class HT, class UT, class YT>
bool SeparableWalk<HT, UT, YT>::run(const LineSource<UT>& lines, const YT* beyond, const HT* first, const HT* second,
                                    bool reversed, const SeparableGeometry& g, const LineTarget<YT>& target) {
  const int width = g.outputDims[0];
  if (!canRun() || width < 1 || g.outputDims[1] < 1 || lines.dims[0] < 1 || lines.dims[1] < 1) return false;
  source = lines;
  along.pack(reinterpret_cast<const Real*>(first), reversed);
  across.pack(reinterpret_cast<const Real*>(second), reversed);
  if (source.padType == PadTypeConstant) std::fill(beyondLine.begin(), beyondLine.end(), *beyond);
  const auto roundedUp = [](int count) { return (count + edgeWidth - 1) / edgeWidth * edgeWidth; };
  const int left = std::min(roundedUp(std::max(-g.first[0], 0)), width);
  const int beyondRight = g.first[0] + width + g.columns - 1 - lines.dims[0];  // outputs that cross the right edge
  const int right = std::max(width - roundedUp(std::max(beyondRight, 0)), left);
  const bool isPlain = lines.stored == Stored::asComputed && target.stored == Stored::asComputed;
  if (!isPlain) makeConvertedRoom(g);
  runStrips(g, 0, left, copiedWidth, target);
  runStrips(g, left, right, isPlain ? stripWidth : convertedWidth, target);
  runStrips(g, right, width, copiedWidth, target);
  return true;
}

/// The columns from `begin` to before `end`. All of one call cross an edge, or none does.
template <class HT, class UT, class YT>
void SeparableWalk<HT, UT, YT>::runStrips(const SeparableGeometry& g, int begin, int end, int maxWidth,
                                          const LineTarget<YT>& target) {
  for (int x = begin; x < end; x += maxWidth) runStrip(g, x, std::min(maxWidth, end - x), target);
}

/// The line of a row between, which its first pass takes from the input's row; null for a row of the constant pad.
template <class HT, class UT, class YT>
const UT* SeparableWalk<HT, UT, YT>::lineAt(int row, int length, int number) {
  const bool isBeyond = row < 0 || row >= source.dims[1];
  if (isBeyond && source.padType == PadTypeConstant) return nullptr;
  const int index[2] = {0, row};
  UT* const room = reader.gathers() ? copied.data() + std::ptrdiff_t{number} * length : nullptr;
  return reader.read(index, room);
}

template <class HT, class UT, class YT>
void SeparableWalk<HT, UT, YT>::runStrip(const SeparableGeometry& g, int x, int width, const LineTarget<YT>& target) {
  const int start = g.first[0] + x, length = width + g.columns - 1;
  reader.beginSector(source, start < 0 || start + length > source.dims[0]);
  reader.beginStretch(start, length);
  const lanes::SeparableSums<Real> sums(along, across, scratch.data(), scratchLines.data());
  const bool isRounded = target.stored != Stored::asComputed;
  const int runRows = reader.gathers() || isRounded ? maxCopiedRows : maxRows;
  for (int row = 0; row < g.outputDims[1]; row += runRows) {
    const int count = std::min(runRows, g.outputDims[1] - row);
    for (int k = 0; k < count + g.rows - 1; ++k) {
      linePointers[static_cast<std::size_t>(k)] =
          reinterpret_cast<const Real*>(lineAt(g.first[1] + row + k, length, k));
    }
    for (int r = 0; r < count; ++r) {
      YT* const out = isRounded ? rounded.data() + std::ptrdiff_t{width} * r
                                : target.data + x + std::ptrdiff_t{target.strides[1]} * (row + r);
      outPointers[static_cast<std::size_t>(r)] = reinterpret_cast<Real*>(out);
    }
    sums.sumProducts({linePointers.data(), count + g.rows - 1, count, width, outPointers.data()},
                     reinterpret_cast<const Real*>(beyondLine.data()));
    if (isRounded) storeRows(target, x, row, width, count);
  }
}

/// Rounds the rows of a run to the type in which outputs are stored.
template <class HT, class UT, class YT>
void SeparableWalk<HT, UT, YT>::storeRows(const LineTarget<YT>& target, int x, int row, int width, int count) {
  if constexpr (std::is_floating_point_v<YT>) {
    auto* const bytes = reinterpret_cast<std::byte*>(target.data);
    const auto size = static_cast<std::ptrdiff_t>(storedBytes<YT>(target.stored));
    for (int r = 0; r < count; ++r) {
      *target.clipped += lanes::roundLine(target.stored, rounded.data() + std::ptrdiff_t{width} * r, width,
                                          bytes + (x + std::ptrdiff_t{target.strides[1]} * (row + r)) * size);
    }
  }
}

/// Makes room for arrays that are stored in another type, once.
template <class HT, class UT, class YT>
void SeparableWalk<HT, UT, YT>::makeConvertedRoom(const SeparableGeometry& g) {
  const std::size_t lineLength = std::size_t{convertedWidth} + static_cast<std::size_t>(g.columns) - 1;
  copied.resize((std::size_t{maxCopiedRows} + static_cast<std::size_t>(g.rows) - 1) * lineLength);
  rounded.resize(std::size_t{maxCopiedRows} * convertedWidth);
}

}  // namespace BP
