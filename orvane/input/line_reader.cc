#include "orvane/input/line_reader.h"

#include <algorithm>
#include <cstddef>

#include "orvane/input/pad_redirector.h"

namespace BP {

template <class UT>
void LineReader<UT>::resize(int maxLength) {
  columns.resize(static_cast<std::size_t>(maxLength));
  allPad.resize(static_cast<std::size_t>(maxLength));
}

template <class UT>
void LineReader<UT>::beginSector(const LineSource<UT>& lines, bool gather) {
  source = lines;
  allPadIsFilled = false;
  gathersLines = gather;
}

template <class UT>
void LineReader<UT>::beginStretch(int first, int length) {
  start = first;
  count = length;
  firstInside = 0;
  endInside = length;
  if (!gathersLines) return;
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

/// The plane of dimensions 0 and 1 that `index` lies in; null if that is beyond an edge, in a constant pad.
template <class UT>
const UT* LineReader<UT>::planeAt(const int* index) const {
  const UT* plane = source.data;
  std::ptrdiff_t stride = std::ptrdiff_t{source.dims[0]} * source.dims[1];
  for (int d = 2; d < source.rank; ++d) {
    const int n = source.dims[d];
    int i = index[d];
    if (i < 0 || i >= n) {
      if (source.padType == PadTypeConstant) return nullptr;
      i = redirectedInto(n, source.padType, i);
    }
    plane += stride * i;
    stride *= n;
  }
  return plane;
}

template <class UT>
const UT* LineReader<UT>::read(const int* index, UT* room) {
  const UT* const plane = planeAt(index);
  if (plane == nullptr) return padLine();
  int row = index[1];
  if (row < 0 || row >= source.dims[1]) {
    if (source.padType == PadTypeConstant) return padLine();
    row = redirectedInto(source.dims[1], source.padType, row);
  }
  const UT* const line = plane + std::ptrdiff_t{source.dims[0]} * row;
  if (!gathersLines) return line + start;
  const int* const column = columns.data();
  const auto take = [&](int from, int end) {
    for (int k = from; k < end; ++k) room[k] = column[k] < 0 ? *source.padValue : line[column[k]];
  };
  take(0, firstInside);
  std::copy_n(line + start + firstInside, endInside - firstInside, room + firstInside);
  take(endInside, count);
  return room;
}

/// Elements of a column, from line `row` on; those beyond the edge are redirected, or the pad value.
template <class UT>
void LineReader<UT>::readColumn(const UT* plane, int column, int row, int rows, UT* to) const {
  const std::ptrdiff_t pitch = source.dims[0];
  const int n = source.dims[1], begin = std::clamp(-row, 0, rows), end = std::clamp(n - row, begin, rows);
  const UT* const first = plane + column;
  const auto beyond = [&](int i) {
    return source.padType == PadTypeConstant ? *source.padValue : first[pitch * redirectedInto(n, source.padType, i)];
  };
  for (int t = 0; t < begin; ++t) to[t] = beyond(row + t);
  for (int t = begin; t < end; ++t) to[t] = first[pitch * (row + t)];
  for (int t = end; t < rows; ++t) to[t] = beyond(row + t);
}

template <class UT>
void LineReader<UT>::readTurned(const int* index, int lineCount, UT* to) {
  constexpr int near = 32;  // so few lines stay in the nearest cache until all their elements are read
  const UT* const plane = planeAt(index);
  for (int t = 0; t < lineCount; t += near) {
    const int lines = std::min(near, lineCount - t);
    for (int k = 0; k < count; ++k) {
      const bool isInside = k >= firstInside && k < endInside;
      const int column = isInside ? start + k : columns[static_cast<std::size_t>(k)];
      UT* const out = to + std::ptrdiff_t{k} * lineCount + t;
      if (plane == nullptr || column < 0) {
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
