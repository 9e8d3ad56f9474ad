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
bool LineReader<UT>::isListed(const CleverPtr<int>& edges, int edgeCount, int d) const {
  return std::find(edges.ptr, edges.ptr + edgeCount, d) != edges.ptr + edgeCount;
}

template <class UT>
void LineReader<UT>::beginSector(const LineSource<UT>& lines, const OuterSector* edges) {
  source = lines;
  sector = edges;
  allPadIsFilled = false;
  gathersLines = sector != nullptr && (isListed(sector->getPreEdge(), sector->getPreEdgeCount(), 0) ||
                                       isListed(sector->getPostEdge(), sector->getPostEdgeCount(), 0));
}

template <class UT>
void LineReader<UT>::beginStretch(int first, int length) {
  start = first;
  count = length;
  if (!gathersLines) return;
  const int n = source.dims[0];
  for (int k = 0; k < length; ++k) {
    const int i = first + k;
    const bool isBeyond = i < 0 || i >= n;
    columns[static_cast<std::size_t>(k)] = !isBeyond                           ? i
                                           : source.padType == PadTypeConstant ? -1
                                                                               : redirectedInto(n, source.padType, i);
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
  const int* column = columns.data();
  for (int k = 0; k < count; ++k) room[k] = column[k] < 0 ? *source.padValue : line[column[k]];
  return room;
}

template class LineReader<float>;
template class LineReader<double>;
template class LineReader<std::complex<float>>;
template class LineReader<std::complex<double>>;

}  // namespace BP
