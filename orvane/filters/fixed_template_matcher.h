#pragma once

#include <complex>
#include <optional>
#include <vector>

#include "orvane/filters/extents.h"
#include "orvane/filters/fixed_array.h"
#include "orvane/filters/job_handle.h"
#include "orvane/filters/template_matcher.h"
#include "orvane/platform/export.h"

namespace BP::filters {

namespace detail {
class FixedMatchElements;
}

/// The types of a fixed-point match; that of the template comes with its values. Made for designated initialisers:
///
///     FixedMatchTypes{.input = fixedType("u8.0"), .accumulator = fixedType("s20.0"), .output = fixedType("u16.0")}
///
/// Accumulator and output are complex if image or template is.
struct FixedMatchTypes {
  FixedType input;  ///< of the image
  bool inputIsComplex = false;
  /// The type of differences and sums, after every operation. It must also hold the elements, because the first element
  /// of a difference is cast into it before the subtraction. Real differences of `sad` and `maxad` are then never
  /// negative. `Metric::ssd` needs a signed type, because it squares signed differences.
  FixedType accumulator;
  FixedType output;  ///< of scores
  /// The type of products. For `Metric::ssd` these are squares of differences, and the type must be signed. For
  /// `Metric::product` they are products of image and template, and the type must be signed if one of these is. Without
  /// a type, products are exact. The other metrics allow none.
  std::optional<FixedType> product = {};
  FixedModes modes = {};
};

/// `Match` in fixed point. The score is the `double` nearest to the output's value at the location. Arrays hold
/// fixed-point values.
using FixedMatch = BasicMatch<std::complex<double>, FixedArray>;

/// Finds a template in fixed-point images of one size.
///
/// Metrics, positions, searches, limits and errors are those of `TemplateMatcher`. `sad` compares elements exactly;
/// `maxad` compares them after a cast into the accumulator's type. Differences, sums and products are cast after every
/// operation. The best match is the least score in the accumulator's type. Scores are then cast into the output's type.
/// Complex arrays have at most 2^30 elements, because indices count the two parts of each value.
class ORVANE_API FixedTemplateMatcher {
 public:
  FixedTemplateMatcher(const FixedView& pattern, const Extents& imageExtents, const FixedMatchTypes& types,
                       const MatchOptions& options = {});

  /// Matches an image of the extents and the type given at construction.
  FixedMatch run(const FixedView& image);

  /// Copies another template of the same type and extents for later runs.
  void setTemplate(const FixedView& pattern);
  /// Sets another region of interest, or none, for later runs.
  void setRegion(const std::optional<Rectangle>& region);

  /// The positions in the region of interest. Width and height are 0 if there are none.
  const Rectangle& positions() const;
  /// The extents of the template.
  const Extents& windowExtents() const;

  /// The statistics of all runs so far, sorted by label. "output" counts all scores that were written: those of map,
  /// neighbourhood and best match. `Metric::product` adds "accumulator", "product", and for complex products "product
  /// sum" (their partial sums), for search and map. Differences and sums of the other metrics are not counted. Within
  /// one run, counts are modulo 2^32.
  std::vector<FixedStatistics> statistics();

 private:
  detail::JobHandle<detail::MatchJob<detail::FixedMatchElements>> job;
};

}  // namespace BP::filters
