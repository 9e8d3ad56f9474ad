#include "orvane/lanes/medians.h"

#include <algorithm>
#include <type_traits>
#include <vector>

#include "orvane/lanes/median_kernels.h"

namespace BP::lanes {
namespace {

/// Values that begin at a multiple of the widest vector.
template <class V>
class Aligned {
 public:
  explicit Aligned(std::size_t count) : values(count + 2 * widestVector / sizeof(V)) {}
  V* get() {
    const auto address = reinterpret_cast<std::uintptr_t>(values.data());
    return values.data() + (widestVector - address % widestVector) % widestVector / sizeof(V);
  }

 private:
  std::vector<V> values;
};

}  // namespace

template <class T>
struct LaneMedian<T>::Room {
  using Key = MedianKey<T>;

  TilePlan plan;
  StripLayout layout;
  int ringRows;
  Aligned<Key> rows, columns, outputs, arena;
  Aligned<T> inputEdge, outputEdge;
  std::vector<unsigned> flags;

  explicit Room(const TileShape& shape)
      : plan(shape),
        layout(shape, sizeof(T), plan.rows.lines),
        ringRows(2 * (shape.rows + shape.tileHeight)),
        rows(static_cast<std::size_t>(layout.row) * static_cast<std::size_t>(ringRows)),
        columns(static_cast<std::size_t>(layout.line) * static_cast<std::size_t>(plan.columns.lines)),
        outputs(static_cast<std::size_t>(layout.tiles) *
                static_cast<std::size_t>(shape.tileWidth * shape.tileHeight * shape.middles())),
        arena(plan.arena * widestVector / sizeof(T)),
        inputEdge(static_cast<std::size_t>(layout.line) * static_cast<std::size_t>(shape.tileWidth)),
        outputEdge(std::max<std::size_t>(stripOf3x3, widestVector / sizeof(T) * maxTile)),
        flags(static_cast<std::size_t>(ringRows)) {}
};

template <class T>
LaneMedian<T>::LaneMedian() = default;
template <class T>
LaneMedian<T>::~LaneMedian() = default;

template <class T>
bool LaneMedian<T>::resize(int columns, int rows) {
  room.reset();
  if (columns < 1 || rows < 1 || std::ptrdiff_t{columns} * rows > mostElements) return false;
  if (std::is_integral_v<T> && columns * rows % 2 == 0) return false;
  room = std::make_unique<Room>(tileShapeFor(columns, rows));
  return true;
}

template <class T>
void LaneMedian<T>::compute(const MedianRun<T>& run, const OneByOne<T>& plain) const {
  medianKernel<T>()({run, plain, &room->plan, room->layout, room->rows.get(), room->ringRows, room->flags.data(),
                     room->columns.get(), room->outputs.get(), room->arena.get(), room->inputEdge.get(),
                     room->outputEdge.get()});
}

template <class T>
int LaneMedian<T>::getPreferredWidth() const {
  return 8 * room->plan.shape.tileWidth;
}

#define ORVANE_DEFINE(T) template class LaneMedian<T>;
ORVANE_FOR_MEDIAN_ELEMENTS(ORVANE_DEFINE)
#undef ORVANE_DEFINE

}  // namespace BP::lanes
