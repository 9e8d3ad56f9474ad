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

template <class UT>
const UT* LineReader<UT>::read(const int* index, UT* room) {
  const UT* line = source.data;
  std::ptrdiff_t stride = source.dims[0];
  for (int d = 1; d < source.rank; ++d) {
    const int n = source.dims[d];
    int i = index[d];
    if (i < 0 || i >= n) {
      if (source.padType == PadTypeConstant) return padLine();
      i = redirectedInto(n, source.padType, i);
    }
    line += stride * i;
    stride *= n;
  }
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

template class LineReader<float>;
template class LineReader<double>;
template class LineReader<std::complex<float>>;
template class LineReader<std::complex<double>>;
template class LineReader<std::int8_t>;
template class LineReader<std::uint8_t>;
template class LineReader<std::int16_t>;
template class LineReader<std::uint16_t>;

}  // namespace BP
