#include "orvane/lanes/separable.h"

#include <algorithm>

namespace BP::lanes {
namespace {

/// Output rows of one pass; all targets take it whole.
constexpr int passRows = 12;
/// Bytes of the lines that are kept, for the second-level cache of a core, which holds input and output as well.
constexpr std::ptrdiff_t keptBytes = 384 * 1024;
constexpr std::ptrdiff_t lineBytes = 64;

constexpr int partsOf(bool isComplex) { return isComplex ? 2 : 1; }

template <class T>
int keptLines(const PackedFilter<T>& across) {
  return across.getExtents().rows - 1 + passRows;
}

/// Columns of a strip: whole cache lines, and enough of them that the memory is read in long stretches.
template <class T>
std::ptrdiff_t stripWidth(const PackedFilter<T>& across, std::ptrdiff_t width) {
  const std::ptrdiff_t element = std::ptrdiff_t(sizeof(T)) * partsOf(isComplexInput(across.getElements()));
  const std::ptrdiff_t fitting = keptBytes / (keptLines(across) * element);
  const std::ptrdiff_t strip = std::min(std::max<std::ptrdiff_t>(fitting, 256), width);
  return (strip * element + lineBytes - 1) / lineBytes * lineBytes / element;
}

/// Values from one kept line to the next; not a power of two, so that lines do not share places in the cache.
template <class T>
std::ptrdiff_t linePitch(const PackedFilter<T>& across, std::ptrdiff_t width) {
  return stripWidth(across, width) * partsOf(isComplexInput(across.getElements())) +
         lineBytes / std::ptrdiff_t(sizeof(T));
}

}  // namespace

template <class T>
typename SeparableSums<T>::Scratch SeparableSums<T>::scratchFor(const PackedFilter<T>& across, std::ptrdiff_t width) {
  const auto lines = std::size_t(keptLines(across));
  return {lines * std::size_t(linePitch(across, width)), lines};
}

template <class T>
SeparableSums<T>::SeparableSums(const PackedFilter<T>& first, const PackedFilter<T>& second, T* store,
                                const T** pointerStore)
    : along(&first), across(&second), values(store), pointers(pointerStore) {}

/// One strip of columns; line k of the run is kept in place k modulo their number.
template <class T>
class SeparableSums<T>::Strip {
 public:
  Strip(const SeparableSums& separable, const Run<T>& whole, const T* line, std::ptrdiff_t from, std::ptrdiff_t to)
      : sums(separable),
        run(whole),
        beyond(line),
        begin(from),
        width(to - from),
        pitch(linePitch(*separable.across, whole.width)),
        count(keptLines(*separable.across)) {}

  void sumProducts() {
    const std::ptrdiff_t at = begin * partsOf(isComplexInput(sums.across->getElements()));
    const int further = sums.across->getExtents().rows - 1;
    for (int row = 0; row < run.rows; row += passRows) {
      const int rows = std::min(passRows, run.rows - row);
      while (ready < row + rows + further) filterSome(row + rows + further);
      for (int k = 0; k < rows + further; ++k) {
        sums.pointers[k] = run.lines[row + k] == nullptr ? beyond + at : kept(row + k);
      }
      T* out[passRows];
      for (int r = 0; r < rows; ++r) {
        out[r] = run.out[row + r] + begin * partsOf(sums.across->getElements() != Elements::realReal);
      }
      sums.across->sumProducts({sums.pointers, 0, rows, width, out});
    }
  }

 private:
  T* kept(int k) const { return sums.values + k % count * pitch; }

  /// Filters the next lines, as many as a pass takes, before line `end`.
  void filterSome(int end) {
    const std::ptrdiff_t at = begin * partsOf(isComplexInput(sums.along->getElements()));
    const T* in[passRows];
    T* out[passRows];
    int lines = 0;
    for (; ready < end && lines < passRows; ++ready) {
      if (run.lines[ready] == nullptr) continue;
      in[lines] = run.lines[ready] + at;
      out[lines++] = kept(ready);
    }
    if (lines > 0) sums.along->sumProducts({in, 0, lines, width, out});
  }

  const SeparableSums& sums;
  const Run<T>& run;
  const T* beyond;
  std::ptrdiff_t begin, width, pitch;
  int count;
  int ready = 0;  ///< lines that have been filtered
};

template <class T>
void SeparableSums<T>::sumProducts(const Run<T>& run, const T* beyond) const {
  const std::ptrdiff_t step = stripWidth(*across, run.width);
  for (std::ptrdiff_t at = 0; at < run.width; at += step) {
    Strip(*this, run, beyond, at, std::min(at + step, run.width)).sumProducts();
  }
}

template class SeparableSums<float>;
template class SeparableSums<double>;

}  // namespace BP::lanes
