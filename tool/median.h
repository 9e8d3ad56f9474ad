#pragma once

#include <cstdint>
#include <memory>
#include <optional>

#include "orvane/filters/fixed_median.h"
#include "tool/band_filter.h"
#include "tool/filter_settings.h"
#include "tool/plane_filter.h"

namespace BP::tool {

/// What the operation `median` does to each plane of its input.
struct MedianSettings {
  int width = 1;  ///< of the window
  int height = 1;
  EdgeSettings edges;
  std::optional<filters::FixedMedianTypes> fixed = {};
};

/// The median of each colour channel; the type of the samples stays.
///
/// Grey of one bit is filtered as `bool` and stays bilevel: a tie gives white, and a pad value is 0 or 1. `float`,
/// `double` and `bool` are filtered in their own type, and so are whole numbers of up to 32 bits in windows of an odd
/// number of values. Other whole numbers are filtered as `float` (up to 16 bits) or `double`, which represent them and
/// the mean of two exactly. A mean that is no whole number is rounded once, ties to even, and counted as rounded.
///
/// Throws `std::runtime_error` for complex samples and a pad value that is no sample. The filter throws it for whole
/// numbers beyond -2^52 to 2^52.
std::unique_ptr<BandFilter> makeMedianFilter(const BandShape& shape, const MedianSettings& settings);

/// Makes medians in fixed point. Throws `std::runtime_error` for complex samples, for a pad value that is no value of
/// the input's type, and for types that do not fit.
FixedPlaneFilters::Maker fixedMedianMaker(const PictureHeader& in, const MedianSettings& settings);

}  // namespace BP::tool
