#pragma once

#include <cstdint>
#include <functional>
#include <memory>

#include "orvane/filters/array.h"
#include "orvane/filters/rectangle.h"
#include "tool/bands.h"
#include "tool/picture.h"
#include "tool/sample_conversion.h"

namespace BP::tool {

/// Filters bands of a picture, several at a time.
class BandFilter {
 public:
  virtual ~BandFilter() = default;
  /// Filters the input rows of `band` at `in` into its output rows at `out`, as the headers say what rows are.
  virtual SampleCounts filter(const Band& band, const std::uint8_t* in, std::uint8_t* out) = 0;
  /// Bytes that a band needs for each column of each row, beside the samples themselves.
  virtual std::size_t bytesPerColumn() const = 0;
};

/// The headers of a picture and of what becomes of it, and the window between them.
struct BandShape {
  PictureHeader in;
  PictureHeader out;
  Window window;
  bool isWhole = false;  ///< a page must be filtered in one piece
};

/// The part of a plane that a band filters.
struct PlanePart {
  filters::Extents extents;   ///< of its rows
  filters::Rectangle region;  ///< positions of its outputs
  std::int64_t firstOwn = 0;  ///< of its rows, the first that does not belong to another band too
  std::int64_t ownRows = 0;   ///< the number of such rows; each row of a page is some band's own

  bool operator==(const PlanePart&) const = default;
};

/// A function that filters a plane of elements T into another, of the outputs' extents.
template <class T>
using PlaneRun = std::function<void(filters::ArrayView<const T> in, filters::ArrayView<T> out)>;

/// Makes such a function for a part; several threads may call it.
template <class T>
using PlaneMaker = std::function<PlaneRun<T>(const PlanePart& part)>;

/// Makes samples of `count` elements of T: one of every pixel, at `to` and from there each pixel's.
template <class T>
using PlaneStore = std::function<void(const T* from, std::size_t count, std::uint8_t* to, SampleCounts& counts)>;

/// A filter of each channel as a plane of elements T: `float`, `double`, their complex types, `bool`, or
/// whole numbers of up to 32 bits, which the samples then must be. Alpha is not filtered: an output has that of the
/// pixel under its window's centre, of an even side the one further left or up; beyond the edge by the rule of the pad,
/// 0 for a constant one.
/// A filter needs `ownBytes` for each element beside both planes.
template <class T>
std::unique_ptr<BandFilter> makeBandFilter(const BandShape& shape, PlaneMaker<T> make, PlaneStore<T> store,
                                           std::size_t ownBytes = 0);

}  // namespace BP::tool
