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
  /// The type of differences and sums, after every operation. The first element of a difference is cast into it before
  /// the second is subtracted, so it must hold the elements too: of real ones the differences of `sad` and `maxad` are
  /// then never negative. `Metric::ssd` takes signed types only, for it squares differences with their sign.
  FixedType accumulator;
  FixedType output;  ///< of scores
  /// The type into which products are cast: for `Metric::ssd` the squares of differences, signed if the accumulator is;
  /// for `Metric::product` those of image and template, signed if one of them is. Without it they are exact. The other
  /// metrics take none.
  std::optional<FixedType> product = {};
  FixedModes modes = {};
};

/// `Match` in fixed point. The score is the nearest `double` of the output's value at the location; arrays hold the
/// values themselves.
using FixedMatch = BasicMatch<std::complex<double>, FixedArray>;

/// Finds a template in fixed-point images of one size.
///
/// Metrics, positions, searches, limits and errors are those of `TemplateMatcher`. Elements are compared exactly in
/// `sad`, in `maxad` as the accumulator's type has them; differences, sums and products are cast after every operation.
/// The best match is the least score as it stands in the accumulator; then scores are cast into the output's type.
/// Indices count the parts of complex values, so arrays of these have at most 2^30 elements.
class ORVANE_API FixedTemplateMatcher {
 public:
  FixedTemplateMatcher(const FixedView& pattern, const Extents& imageExtents, const FixedMatchTypes& types,
                       const MatchOptions& options = {});

  /// Matches an image of the extents and the type given at construction.
  FixedMatch run(const FixedView& image);

  /// Takes another template of the same type and extents for the runs to come.
  void setTemplate(const FixedView& pattern);
  /// Takes another region of interest, or none, for the runs to come.
  void setRegion(const std::optional<Region>& region);

  /// The positions in the region of interest; of size 0 if there are none.
  const Region& positions() const;

  /// What happened to values in all runs so far, in the order of labels: "output" for all scores that were written,
  /// those of map, neighbourhood and best match; with `Metric::product` also "accumulator", "product" and of complex
  /// products "product sum" (their partial sums), for search and map. Differences and sums of the other metrics are not
  /// counted. Within one run, counts of a label are kept modulo 2^32.
  std::vector<FixedStatistics> statistics();

 private:
  detail::JobHandle<detail::MatchJob<detail::FixedMatchElements>> job;
};

}  // namespace BP::filters
