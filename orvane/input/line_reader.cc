#include "orvane/input/line_reader.h"

#include <algorithm>
#include <cstddef>
#include <type_traits>

#include "orvane/input/pad_redirector.h"
#include "orvane/lanes/conversions.h"

namespace BP {

template <class UT>
void LineReader<UT>::resize(int maxLength) {
  columns.resize(static_cast<std::size_t>(maxLength));
  allPad.resize(static_cast<std::size_t>(maxLength));
}

template <class UT>
void LineReader<UT>::beginSector(const LineSource<UT>& lines, bool crosses) {
  source = lines;
  allPadIsFilled = false;
  crossesEdge = crosses;
}

template <class UT>
void LineReader<UT>::beginStretch(int first, int length) {
  start = first;
  count = length;
  firstInside = 0;
  endInside = length;
  if (!crossesEdge) return;
  const int n = source.dims[0];
  firstInside = std::clamp(-first, 0, length);
  endInside = std::clamp(n - first, firstInside, length);
  for (int k = 0; k < length; ++k) {
    if (k == firstInside) k = endInside;
    if (k == length) break;
    columns[static_cast<std::size_t>(k)] =
        source.padType == PadTypeConstant ? -1 : redirectedInto(n, source.padType, first + k);
  }
}

template <class UT>
const UT* LineReader<UT>::padLine() {
  if (!allPadIsFilled) std::fill(allPad.begin(), allPad.end(), *source.padValue);
  allPadIsFilled = true;
  return allPad.data();
}

/// Where the plane of dimensions 0 and 1 that `index` lies in begins; negative if that is beyond an edge, in a constant
/// pad.
template <class UT>
std::ptrdiff_t LineReader<UT>::planeAt(const int* index) const {
  std::ptrdiff_t plane = 0;
  for (int d = 2; d < source.rank; ++d) {
    const int n = source.dims[d];
    int i = index[d];
    if (i < 0 || i >= n) {
      if (source.padType == PadTypeConstant) return -1;
      i = redirectedInto(n, source.padType, i);
    }
    plane += std::ptrdiff_t{source.strides[d]} * i;
  }
  return plane;
}

template <class UT>
UT LineReader<UT>::valueAt(std::ptrdiff_t i) const {
  if constexpr (std::is_floating_point_v<UT>) {
    if (converts()) return loadStored(source.stored, source.data, i);
  }
  return source.data[i];
}

/// Elements that follow each other in the input.
template <class UT>
void LineReader<UT>::copyStretch(std::ptrdiff_t from, int length, UT* to) const {
  if constexpr (std::is_floating_point_v<UT>) {
    if (converts()) {
      const auto* const bytes = reinterpret_cast<const std::byte*>(source.data);
      const auto size = static_cast<std::ptrdiff_t>(storedBytes<UT>(source.stored));
      return lanes::convertLine(source.stored, bytes + from * size, length, to);
    }
  }
  std::copy_n(source.data + from, length, to);
}

template <class UT>
const UT* LineReader<UT>::read(const int* index, UT* room) {
  const std::ptrdiff_t plane = planeAt(index);
  if (plane < 0) return padLine();
  int row = index[1];
  if (row < 0 || row >= source.dims[1]) {
    if (source.padType == PadTypeConstant) return padLine();
    row = redirectedInto(source.dims[1], source.padType, row);
  }
  const std::ptrdiff_t line = plane + std::ptrdiff_t{source.strides[1]} * row;
  if (!gathers()) return source.data + line + start;
  const int* const column = columns.data();
  const auto take = [&](int from, int end) {
    for (int k = from; k < end; ++k) room[k] = column[k] < 0 ? *source.padValue : valueAt(line + column[k]);
  };
  take(0, firstInside);
  copyStretch(line + start + firstInside, endInside - firstInside, room + firstInside);
  take(endInside, count);
  return room;
}

/// Elements of a column, from line `row` on; those beyond the edge are redirected, or the pad value.
template <class UT>
void LineReader<UT>::readColumn(std::ptrdiff_t plane, int column, int row, int rows, UT* to) const {
  const std::ptrdiff_t pitch = source.strides[1], first = plane + column;
  const int n = source.dims[1], begin = std::clamp(-row, 0, rows), end = std::clamp(n - row, begin, rows);
  const auto beyond = [&](int i) {
    return source.padType == PadTypeConstant ? *source.padValue
                                             : valueAt(first + pitch * redirectedInto(n, source.padType, i));
  };
  for (int t = 0; t < begin; ++t) to[t] = beyond(row + t);
  for (int t = begin; t < end; ++t) to[t] = valueAt(first + pitch * (row + t));
  for (int t = end; t < rows; ++t) to[t] = beyond(row + t);
}

template <class UT>
void LineReader<UT>::readTurned(const int* index, int lineCount, UT* to) {
  constexpr int near = 32;  // so few lines stay in the nearest cache until all their elements are read
  const std::ptrdiff_t plane = planeAt(index);
  for (int t = 0; t < lineCount; t += near) {
    const int lines = std::min(near, lineCount - t);
    for (int k = 0; k < count; ++k) {
      const bool isInside = k >= firstInside && k < endInside;
      const int column = isInside ? start + k : columns[static_cast<std::size_t>(k)];
      UT* const out = to + std::ptrdiff_t{k} * lineCount + t;
      if (plane < 0 || column < 0) {
        std::fill_n(out, lines, *source.padValue);
      } else {
        readColumn(plane, column, index[1] + t, lines, out);
      }
    }
  }
}

template class LineReader<float>;
template class LineReader<double>;
template class LineReader<std::complex<float>>;
template class LineReader<std::complex<double>>;
template class LineReader<std::int8_t>;
template class LineReader<std::uint8_t>;
template class LineReader<std::int16_t>;
template class LineReader<std::uint16_t>;
template class LineReader<std::uint32_t>;
template class LineReader<std::uint64_t>;

}  // namespace BP
