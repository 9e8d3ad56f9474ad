#pragma once

#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "orvane/lanes/median_tile.h"
#include "orvane/lanes/medians.h"

// What the source of medians and the kernels of each target share.

namespace BP::lanes {

/// What medians of elements of type T are sorted by: unsigned integers for all integers.
template <class T>
struct MedianKeyOf {
  using type = std::make_unsigned_t<T>;
};
template <>
struct MedianKeyOf<float> {
  using type = std::int32_t;
};
template <>
struct MedianKeyOf<double> {
  using type = double;
};
template <class T>
using MedianKey = typename MedianKeyOf<T>::type;

/// What lines hold whose order by keys is not the order of the plain loop.
struct MedianFlags {
  static constexpr unsigned nan = 1, negativeZero = 2;
};

/// One run as kernels see it, with the scratch for it.
template <class T>
struct MedianTask {
  using Key = MedianKey<T>;
  MedianRun<T> run;
  OneByOne<T> plain;
  const TilePlan* plan;
  StripLayout layout;
  Key* rows;  ///< prepared input rows, `ringRows` of them
  int ringRows;
  unsigned* flags;  ///< of each prepared row
  Key* columns;
  Key* outputs;
  Key* arena;
  T* inputEdge;   ///< a piece of line, where the vectors of a strip reach beyond its end
  T* outputEdge;  ///< outputs of one vector of tiles
};

/// Elements of an output strip for 3 x 3 windows, which have no tiles.
constexpr std::ptrdiff_t stripOf3x3 = 2048;

template <class T>
using MedianKernel = void(const MedianTask<T>&);

/// The kernel of the target in use.
template <class T>
MedianKernel<T>* medianKernel();

}  // namespace BP::lanes
