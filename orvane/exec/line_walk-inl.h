#pragma once

// Bodies of line_walk.h, which includes this file.

namespace BP {

template <class SumsT>
void LineWalk<SumsT>::Geometry::resize(int dimensions) {
  const auto size = static_cast<std::size_t>(dimensions);
  for (auto* table : {&position, &first, &last, &windowLoc, &windowDims, &inputDims, &outputOffset}) {
    table->assign(size, 0);
  }
  outputStride.assign(size, 0);
}

template <class SumsT>
typename LineWalk<SumsT>::Size LineWalk<SumsT>::uprightElements(int width, int rows) const {
  const auto extents = sums->getExtents();
  return Size{extents.planes} * (rows + extents.rows - 1) * (width + extents.columns - 1);
}

template <class SumsT>
typename LineWalk<SumsT>::Size LineWalk<SumsT>::turnedElements(int width, int rows) const {
  const auto extents = sums->getExtents();
  return Size{extents.planes} * (width + extents.columns - 1) * (rows + extents.rows - 1);
}

template <class SumsT>
void LineWalk<SumsT>::resize(const Block& filter, const Block& input, int walkedRank, bool searches) {
  hostRank = walkedRank;
  rank = std::max(walkedRank, 2);
  if (!sums->isReady()) return;
  const auto size = static_cast<std::size_t>(rank);
  g.resize(rank);
  for (auto* table : {&index, &tap, &tapEnd, &zeros}) table->assign(size, 0);
  const auto [planes, rows, columns] = sums->getExtents();
  const auto bounded = [&](int limit, int d) {  // no more than the outputs that there can be, with any mode
    const Size reach = d < hostRank ? Size{input.getDims().ptr[d]} + filter.getDims().ptr[d] - 1 : 1;
    return static_cast<int>(std::clamp(reach, Size{1}, Size{limit}));
  };
  capacity = {bounded(Limits::rows, 1), bounded(SumsT::maxWidth, 0), bounded(Limits::copiedWidth, 0),
              bounded(sums->getNarrow() - 1, 0), bounded(Limits::copiedWidth, 1)};
  const Size upright = uprightElements(capacity.copiedWidth, capacity.rows);
  if (!sums->getCanTurn()) capacity.turnedWidth = 0;
  const Size turned = capacity.turnedWidth == 0 ? 0 : turnedElements(capacity.turnedWidth, capacity.turnedHeight);
  copied.resize(static_cast<std::size_t>(std::max(canCopy(upright) ? upright : 0, canCopy(turned) ? turned : 0)));
  const Size turnedLines = capacity.turnedWidth == 0 ? 0 : Size{planes} * rows * (capacity.turnedWidth + columns - 1);
  lines.resize(static_cast<std::size_t>(std::max(Size{planes} * (capacity.rows + rows - 1), turnedLines)));
  out.resize(static_cast<std::size_t>(std::max(capacity.rows, capacity.turnedWidth)));
  turnedOutput.resize(static_cast<std::size_t>(capacity.turnedWidth) * static_cast<std::size_t>(capacity.turnedHeight));
  reader.resize(capacity.width + columns - 1);
  if (searches) strip.resize(static_cast<std::size_t>(std::max(0, input.getDims().ptr[0])) * stripRows);
}

template <class SumsT>
void LineWalk<SumsT>::readGeometry(const Sector& sector, const Block& filter, const Block& input, const Block& output) {
  Size stride = 1;
  for (int i = 0; i < rank; ++i) {
    const auto d = static_cast<std::size_t>(i);
    const bool isThere = i < hostRank;
    g.first[d] = isThere ? sector.getStart().ptr[i] : 0;
    g.last[d] = isThere ? sector.getEnd().ptr[i] : 0;
    g.windowLoc[d] = isThere ? filter.getLoc().ptr[i] : 0;
    g.windowDims[d] = isThere ? filter.getDims().ptr[i] : 1;
    g.inputDims[d] = isThere ? input.getDims().ptr[i] : 1;
    g.outputOffset[d] = isThere ? input.getOrigin().ptr[i] - output.getOrigin().ptr[i] : 0;
    g.outputStride[d] = stride;
    stride *= isThere ? output.getDims().ptr[i] : 1;
    tapEnd[d] = g.windowDims[d] - 1;
  }
  g.position = g.first;
}

template <class SumsT>
bool LineWalk<SumsT>::run(const LineSource<UT>& source, const Sector& sector, const OuterSector* edges,
                          const Block& filter, const Block& input, const Block& output, YT* y) {
  if (!lanes::areInUse() || !sums->isReady()) return false;
  readGeometry(sector, filter, input, output);
  beginLines(source, edges != nullptr && edges->getIsListed(0));
  const int width = g.last[0] - g.first[0] + 1, height = g.last[1] - g.first[1] + 1;
  const auto hasRoom = [&](Size elements) { return elements <= static_cast<Size>(copied.size()); };
  if (width <= capacity.turnedWidth && width < height &&
      hasRoom(turnedElements(width, std::min(height, capacity.turnedHeight)))) {
    runTurned(y);
    return true;
  }
  const int runWidth = std::min(width, reader.gathers() ? capacity.copiedWidth : capacity.width);
  const int runRows = std::min(height, capacity.rows);
  if (reader.gathers() && !hasRoom(uprightElements(runWidth, runRows))) return false;
  runUpright(y, runWidth, runRows);
  return true;
}

template <class SumsT>
void LineWalk<SumsT>::beginLines(const LineSource<UT>& source, bool gathers) {
  LineSource<UT> lineSource = source;
  lineSource.dims = g.inputDims.data();
  lineSource.rank = rank;
  reader.beginSector(lineSource, gathers);
}

/// The geometry is that of an output as wide as the sector, which begins with the strip.
template <class SumsT>
template <class TakeT>
bool LineWalk<SumsT>::runInStrips(const LineSource<UT>& source, const Sector& sector, const Block& filter,
                                  const Block& input, TakeT&& take) {
  if (!lanes::areInUse() || !sums->isReady()) return false;
  readGeometry(sector, filter, input, input);
  const int width = g.last[0] - g.first[0] + 1, height = g.last[1] - g.first[1] + 1, firstRow = g.first[1];
  if (Size{width} * stripRows > static_cast<Size>(strip.size())) return false;
  beginLines(source, false);
  g.outputStride[1] = width;
  g.outputOffset[0] = -g.first[0];
  for (int row = 0; row < height; row += stripRows) {
    const int rows = std::min(stripRows, height - row);
    g.first[1] = firstRow + row;
    g.last[1] = g.first[1] + rows - 1;
    g.outputOffset[1] = -g.first[1];
    runUpright(strip.data(), std::min(width, capacity.width), rows);
    take(strip.data(), row, rows, width);
  }
  return true;
}

/// Goes to the next position in dimensions 2 and up, the lower ones faster; false, and at the first again, after all.
template <class SumsT>
bool LineWalk<SumsT>::nextPosition(std::vector<int>& at, const std::vector<int>& low,
                                   const std::vector<int>& high) const {
  for (std::size_t d = 2; d < at.size(); ++d) {
    if (++at[d] <= high[d]) return true;
    at[d] = low[d];
  }
  return false;
}

/// Calls `take(plane)` for each plane of the filter, with `index` at its place in dimensions 2 and up.
template <class SumsT>
template <class TakeT>
void LineWalk<SumsT>::forEachPlane(TakeT&& take) {
  int plane = 0;
  do {
    for (std::size_t d = 2; d < index.size(); ++d) index[d] = g.position[d] + g.windowLoc[d] + tap[d];
    take(plane++);
  } while (nextPosition(tap, zeros, tapEnd));
}

template <class SumsT>
typename LineWalk<SumsT>::Size LineWalk<SumsT>::outputIndex() const {
  Size linear = 0;
  for (std::size_t d = 0; d < g.position.size(); ++d) {
    linear += g.outputStride[d] * (g.position[d] + g.outputOffset[d]);
  }
  return linear;
}

template <class SumsT>
void LineWalk<SumsT>::runUpright(YT* y, int maxWidth, int maxRows) {
  const int columns = sums->getExtents().columns;
  do {
    for (int row = g.first[1]; row <= g.last[1]; row += maxRows) {
      g.position[1] = row;
      const int rows = std::min(maxRows, g.last[1] - row + 1);
      for (int x = g.first[0]; x <= g.last[0]; x += maxWidth) {
        g.position[0] = x;
        const int width = std::min(maxWidth, g.last[0] - x + 1);
        reader.beginStretch(x + g.windowLoc[0], width + columns - 1);
        computeUpright(y, width, rows);
      }
    }
  } while (nextPosition(g.position, g.first, g.last));
}

template <class SumsT>
void LineWalk<SumsT>::computeUpright(YT* y, int width, int rows) {
  const auto extents = sums->getExtents();
  const Size perPlane = rows + extents.rows - 1, length = width + extents.columns - 1;
  forEachPlane([&](int plane) {
    for (Size k = 0; k < perPlane; ++k) {
      index[1] = g.position[1] + g.windowLoc[1] + static_cast<int>(k);
      const Size number = plane * perPlane + k;
      UT* const room = reader.gathers() ? copied.data() + number * length : nullptr;
      lines[static_cast<std::size_t>(number)] = reinterpret_cast<const Real*>(reader.read(index.data(), room));
    }
  });
  YT* const target = y + outputIndex();
  for (int r = 0; r < rows; ++r) {
    out[static_cast<std::size_t>(r)] = reinterpret_cast<Real*>(target + g.outputStride[1] * r);
  }
  sums->compute(false, {lines.data(), perPlane, rows, width, out.data()});
}

template <class SumsT>
void LineWalk<SumsT>::runTurned(YT* y) {
  const int width = g.last[0] - g.first[0] + 1;
  do {
    reader.beginStretch(g.first[0] + g.windowLoc[0], width + sums->getExtents().columns - 1);
    for (int row = g.first[1]; row <= g.last[1]; row += capacity.turnedHeight) {
      g.position[1] = row;
      computeTurned(y, width, std::min(capacity.turnedHeight, g.last[1] - row + 1));
    }
  } while (nextPosition(g.position, g.first, g.last));
}

/// An area of `width` by `rows` outputs: line k of plane and filter row j is column k of the input, from element j on.
template <class SumsT>
void LineWalk<SumsT>::computeTurned(YT* y, int width, int rows) {
  const auto extents = sums->getExtents();
  const Size columns = width + extents.columns - 1, length = rows + extents.rows - 1;
  forEachPlane([&](int plane) {
    UT* const turned = copied.data() + plane * columns * length;
    index[1] = g.position[1] + g.windowLoc[1];
    reader.readTurned(index.data(), static_cast<int>(length), turned);
    for (Size j = 0; j < extents.rows; ++j) {
      const Real** const row = lines.data() + (plane * extents.rows + j) * columns;
      for (Size c = 0; c < columns; ++c) row[c] = reinterpret_cast<const Real*>(turned + c * length + j);
    }
  });
  for (int c = 0; c < width; ++c) {
    out[static_cast<std::size_t>(c)] = reinterpret_cast<Real*>(turnedOutput.data() + Size{c} * rows);
  }
  sums->compute(true, {lines.data(), columns, width, rows, out.data()});
  YT* const target = y + outputIndex();
  for (int r = 0; r < rows; ++r) {
    for (int c = 0; c < width; ++c)
      target[g.outputStride[1] * r + c] = turnedOutput[static_cast<std::size_t>(c * rows + r)];
  }
}

}  // namespace BP
