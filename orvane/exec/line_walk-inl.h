#pragma once

// Bodies of line_walk.h, which includes this file.

namespace BP {

template <class SumsT>
void LineWalk<SumsT>::Geometry::resize(int dimensions) {
  const auto size = static_cast<std::size_t>(dimensions);
  for (auto* table : {&position, &first, &last, &windowLoc, &windowDims, &inputDims, &inputStrides, &outputOffset}) {
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
void LineWalk<SumsT>::readGeometry(const LineSource<UT>& source, const Sector& sector, const Block& filter,
                                   const Block& input, const Block& output, const int* outputStrides) {
  for (int i = 0; i < rank; ++i) {
    const auto d = static_cast<std::size_t>(i);
    const bool isThere = i < hostRank;
    g.first[d] = isThere ? sector.getStart().ptr[i] : 0;
    g.last[d] = isThere ? sector.getEnd().ptr[i] : 0;
    g.windowLoc[d] = isThere ? filter.getLoc().ptr[i] : 0;
    g.windowDims[d] = isThere ? filter.getDims().ptr[i] : 1;
    g.inputDims[d] = isThere ? input.getDims().ptr[i] : 1;
    g.inputStrides[d] = isThere ? source.strides[i] : 0;
    g.outputOffset[d] = isThere ? input.getOrigin().ptr[i] - output.getOrigin().ptr[i] : 0;
    g.outputStride[d] = isThere ? outputStrides[i] : 0;
    tapEnd[d] = g.windowDims[d] - 1;
  }
  g.position = g.first;
}

template <class SumsT>
bool LineWalk<SumsT>::run(const LineSource<UT>& source, const Sector& sector, const OuterSector* edges,
                          const Block& filter, const Block& input, const Block& output, const LineTarget<YT>& target) {
  if (!lanes::areInUse() || !sums->isReady()) return false;
  readGeometry(source, sector, filter, input, output, target.strides);
  beginLines(source, edges != nullptr && edges->getIsListed(0));
  const int width = g.last[0] - g.first[0] + 1, height = g.last[1] - g.first[1] + 1;
  const auto hasRoom = [&](Size elements) { return elements <= static_cast<Size>(copied.size()); };
  if (width <= capacity.turnedWidth && width < height &&
      hasRoom(turnedElements(width, std::min(height, capacity.turnedHeight)))) {
    runTurned(target);
    return true;
  }
  const int runRows = std::min(height, capacity.rows);
  int runWidth = std::min(width, reader.gathers() ? capacity.copiedWidth : capacity.width);
  if (reader.converts() || target.stored != Stored::asComputed) {
    runWidth = std::min(width, Limits::convertedWidth);
    if (!makeConvertedRoom(runWidth, runRows)) return false;
  } else if (reader.gathers() && !hasRoom(uprightElements(runWidth, runRows))) {
    return false;
  }
  if (reader.converts() && sums->getExtents().planes == 1) {
    runColumns(target, runWidth, runRows);
  } else {
    runUpright(target, runWidth, runRows);
  }
  return true;
}

/// Makes room for runs of converted lines and rounded outputs, once; false if that would be too much.
template <class SumsT>
bool LineWalk<SumsT>::makeConvertedRoom(int width, int rows) {
  const Size elements = uprightElements(width, rows);
  if (!canCopy(elements)) return false;
  const auto grow = [](auto& room, Size size) { room.resize(std::max(room.size(), static_cast<std::size_t>(size))); };
  grow(copied, elements);
  grow(kept, rows + sums->getExtents().rows - 1);
  grow(storedRows, Size{width} * rows);
  return true;
}

template <class SumsT>
void LineWalk<SumsT>::beginLines(const LineSource<UT>& source, bool gathers) {
  LineSource<UT> lineSource = source;
  lineSource.dims = g.inputDims.data();
  lineSource.strides = g.inputStrides.data();
  lineSource.rank = rank;
  reader.beginSector(lineSource, gathers);
}

/// The geometry is that of an output as wide as the sector, which begins with the strip.
template <class SumsT>
template <class TakeT>
bool LineWalk<SumsT>::runInStrips(const LineSource<UT>& source, const Sector& sector, const Block& filter,
                                  const Block& input, TakeT&& take) {
  if (!lanes::areInUse() || !sums->isReady()) return false;
  readGeometry(source, sector, filter, input, input, source.strides);
  const int width = g.last[0] - g.first[0] + 1, height = g.last[1] - g.first[1] + 1, firstRow = g.first[1];
  if (Size{width} * stripRows > static_cast<Size>(strip.size())) return false;
  beginLines(source, false);
  const int runWidth = std::min(width, reader.converts() ? Limits::convertedWidth : capacity.width);
  if (reader.converts() && !makeConvertedRoom(runWidth, std::min(height, stripRows))) return false;
  g.outputStride[1] = width;
  g.outputOffset[0] = -g.first[0];
  for (int row = 0; row < height; row += stripRows) {
    const int rows = std::min(stripRows, height - row);
    g.first[1] = firstRow + row;
    g.last[1] = g.first[1] + rows - 1;
    g.outputOffset[1] = -g.first[1];
    runUpright({strip.data(), nullptr}, runWidth, rows);
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
void LineWalk<SumsT>::runUpright(const LineTarget<YT>& target, int maxWidth, int maxRows) {
  const int columns = sums->getExtents().columns;
  do {
    for (int row = g.first[1]; row <= g.last[1]; row += maxRows) {
      g.position[1] = row;
      const int rows = std::min(maxRows, g.last[1] - row + 1);
      for (int x = g.first[0]; x <= g.last[0]; x += maxWidth) {
        g.position[0] = x;
        const int width = std::min(maxWidth, g.last[0] - x + 1);
        reader.beginStretch(x + g.windowLoc[0], width + columns - 1);
        computeUpright(target, width, rows);
      }
    }
  } while (nextPosition(g.position, g.first, g.last));
}

/// The same of converted lines, which are kept from one run to the one below.
template <class SumsT>
void LineWalk<SumsT>::runColumns(const LineTarget<YT>& target, int maxWidth, int maxRows) {
  const auto extents = sums->getExtents();
  do {
    for (int x = g.first[0]; x <= g.last[0]; x += maxWidth) {
      g.position[0] = x;
      const int width = std::min(maxWidth, g.last[0] - x + 1);
      reader.beginStretch(x + g.windowLoc[0], width + extents.columns - 1);
      keptLines = maxRows + extents.rows - 1;
      readyRow = g.first[1];
      for (int row = g.first[1]; row <= g.last[1]; row += maxRows) {
        g.position[1] = row;
        computeUpright(target, width, std::min(maxRows, g.last[1] - row + 1));
      }
    }
  } while (nextPosition(g.position, g.first, g.last));
  keptLines = 0;
}

/// The line of the index; `number` counts lines of a run, and those that are kept lie in turns.
template <class SumsT>
const typename LineWalk<SumsT>::UT* LineWalk<SumsT>::readLine(int number, int length) {
  if (keptLines == 0) {
    return reader.read(index.data(), reader.gathers() ? copied.data() + Size{number} * length : nullptr);
  }
  const int row = g.position[1] + number, place = (row - g.first[1]) % keptLines;
  const UT*& line = kept[static_cast<std::size_t>(place)];
  if (row >= readyRow) {
    line = reader.read(index.data(), copied.data() + Size{place} * length);
    readyRow = row + 1;
  }
  return line;
}

template <class SumsT>
void LineWalk<SumsT>::computeUpright(const LineTarget<YT>& target, int width, int rows) {
  const auto extents = sums->getExtents();
  const Size perPlane = rows + extents.rows - 1;
  const int length = width + extents.columns - 1;
  forEachPlane([&](int plane) {
    for (Size k = 0; k < perPlane; ++k) {
      index[1] = g.position[1] + g.windowLoc[1] + static_cast<int>(k);
      const Size number = plane * perPlane + k;
      lines[static_cast<std::size_t>(number)] =
          reinterpret_cast<const Real*>(readLine(static_cast<int>(number), length));
    }
  });
  const bool isRounded = target.stored != Stored::asComputed;
  YT* const first = isRounded ? storedRows.data() : target.data + outputIndex();
  for (int r = 0; r < rows; ++r) {
    out[static_cast<std::size_t>(r)] = reinterpret_cast<Real*>(first + (isRounded ? width : g.outputStride[1]) * r);
  }
  sums->compute(false, {lines.data(), perPlane, rows, width, out.data()});
  if (isRounded) storeRows(target, width, rows);
}

/// Rounds the rows of a run to the type in which outputs are stored.
template <class SumsT>
void LineWalk<SumsT>::storeRows(const LineTarget<YT>& target, int width, int rows) {
  if constexpr (std::is_floating_point_v<YT>) {
    auto* const bytes = reinterpret_cast<std::byte*>(target.data);
    const auto size = static_cast<Size>(storedBytes<YT>(target.stored));
    for (int r = 0; r < rows; ++r) {
      *target.clipped += lanes::roundLine(target.stored, storedRows.data() + Size{width} * r, width,
                                          bytes + (outputIndex() + g.outputStride[1] * r) * size);
    }
  }
}

template <class SumsT>
void LineWalk<SumsT>::runTurned(const LineTarget<YT>& target) {
  const int width = g.last[0] - g.first[0] + 1;
  do {
    reader.beginStretch(g.first[0] + g.windowLoc[0], width + sums->getExtents().columns - 1);
    for (int row = g.first[1]; row <= g.last[1]; row += capacity.turnedHeight) {
      g.position[1] = row;
      computeTurned(target, width, std::min(capacity.turnedHeight, g.last[1] - row + 1));
    }
  } while (nextPosition(g.position, g.first, g.last));
}

/// An area of `width` by `rows` outputs: line k of plane and filter row j is column k of the input, from element j on.
template <class SumsT>
void LineWalk<SumsT>::computeTurned(const LineTarget<YT>& target, int width, int rows) {
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
  for (int r = 0; r < rows; ++r) {
    const Size first = outputIndex() + g.outputStride[1] * r;
    for (int c = 0; c < width; ++c) {
      const YT value = turnedOutput[static_cast<std::size_t>(c * rows + r)];
      if constexpr (std::is_floating_point_v<YT>) {
        if (target.stored != Stored::asComputed) {
          putStored(target.stored, target.data, first + c, value, *target.clipped);
          continue;
        }
      }
      target.data[first + c] = value;
    }
  }
}

}  // namespace BP
