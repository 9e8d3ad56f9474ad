#pragma once

#include <complex>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "orvane/core/stored.h"

namespace BP {

/// What lines are read from: an input and what it yields beyond its edge.
template <class UT>
struct LineSource {
  const UT* data;
  const int* dims;     ///< extents, dimension 0 first
  const int* strides;  ///< elements from one to the next in each dimension; 1 in dimension 0
  int rank;            ///< at least 2
  int padType;         ///< a `PadTypeEnum`, or 0: nothing is read beyond an edge
  const UT* padValue;  ///< of a constant pad
  Stored stored = Stored::asComputed;
};

template <class UT>
LineSource(UT*, const int*, const int*, int, int, UT*) -> LineSource<UT>;

/// What outputs are written to: the element of index 0 in each dimension, and strides as those of `LineSource`.
template <class YT>
struct LineTarget {
  YT* data;
  const int* strides;
  Stored stored = Stored::asComputed;
  std::int64_t* clipped = nullptr;  ///< counts the values that are clipped to the stored type
};

template <class YT>
LineTarget(YT*, const int*, Stored, std::int64_t*) -> LineTarget<YT>;

/// Reads *lines*: stretches of input along dimension 0, as neighbouring outputs need them, also beyond the edge.
///
///     stretch      |<------- length ------->|
///     line 7   a a a | a b c d e f g h i j k       gathered: dimension 0 crosses an edge
///     line 8         | l m n o p q r               a pointer into the input, as dimension 0 does not
///
/// A line is a pointer into the input wherever no line crosses an edge of dimension 0; redirection in the slower
/// dimensions only moves it. Otherwise the line is gathered into room of the caller's. So is a line of an input whose
/// elements are stored in another type; it is converted on the way. A line that lies in a constant pad altogether is
/// one that all such lines share. Values are those that `readBoundary` of the pads gives for each coordinate.
template <class UT>
class LineReader {
 public:
  /// Makes room for stretches of up to `maxLength` elements; a reader allocates nothing else.
  void resize(int maxLength);

  /// Begins the lines of an area of outputs; `crosses` if they can cross an edge of dimension 0.
  void beginSector(const LineSource<UT>& lines, bool crosses);
  /// Whether lines of this sector are gathered.
  bool gathers() const { return crossesEdge || converts(); }
  /// Whether they are converted.
  bool converts() const { return source.stored != Stored::asComputed; }
  /// Begins the lines of the stretch from coordinate `first` on.
  void beginStretch(int first, int length);

  /// The line at `index`, whose entry 0 is not looked at; `room` has space for a stretch, and is used if lines are
  /// gathered. Good until the next sector begins.
  const UT* read(const int* index, UT* room);

  /// The stretch of `lineCount` lines that follow each other along dimension 1 from `index` on, turned: element k of
  /// line t goes to `to[k * lineCount + t]`.
  void readTurned(const int* index, int lineCount, UT* to);

 private:
  const UT* padLine();
  std::ptrdiff_t planeAt(const int* index) const;
  UT valueAt(std::ptrdiff_t i) const;
  void copyStretch(std::ptrdiff_t from, int length, UT* to) const;
  void readColumn(std::ptrdiff_t plane, int column, int row, int rows, UT* to) const;

  LineSource<UT> source{};
  bool crossesEdge = false;
  int start = 0;
  int count = 0;
  int firstInside = 0;       ///< the elements of a stretch that lie in the input are
  int endInside = 0;         ///< those from `firstInside` to before `endInside`
  std::vector<int> columns;  ///< for each other element its column in the input, -1 for the pad value
  std::vector<UT> allPad;
  bool allPadIsFilled = false;
};

extern template class LineReader<float>;
extern template class LineReader<double>;
extern template class LineReader<std::complex<float>>;
extern template class LineReader<std::complex<double>>;
extern template class LineReader<std::int8_t>;
extern template class LineReader<std::uint8_t>;
extern template class LineReader<std::int16_t>;
extern template class LineReader<std::uint16_t>;
extern template class LineReader<std::uint32_t>;
extern template class LineReader<std::uint64_t>;

}  // namespace BP
