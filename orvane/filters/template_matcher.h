#pragma once

#include <complex>
#include <cstdint>
#include <optional>
#include <type_traits>

#include "orvane/filters/array.h"
#include "orvane/filters/convolution.h"
#include "orvane/filters/elements.h"
#include "orvane/filters/extents.h"
#include "orvane/filters/job_handle.h"
#include "orvane/filters/match_options.h"
#include "orvane/filters/rectangle.h"
#include "orvane/platform/export.h"

namespace BP::filters {

/// The element type of scores for images of UT and templates of HT. It is complex if either is. For `bool` it is an
/// integer: the number of elements that differ, or with `Metric::product` the number of common ones.
template <class UT, class HT>
struct MatchScoreOf {
  using type = ConvolutionOutput<UT, HT>;
};
template <>
struct MatchScoreOf<bool, bool> {
  using type = std::int32_t;
};
template <class UT, class HT>
using MatchScore = typename MatchScoreOf<UT, HT>::type;

namespace detail {
template <class Elements>
class MatchJob;
template <class UT, class HT>
class PlainMatchElements;
}  // namespace detail

/// The best match is the position with the least score; with `Metric::cosine` and `Metric::correlationCoefficient` it
/// is the one with the greatest. Complex scores compare by squared magnitude. Of equal scores the one visited first
/// wins. Positions where the template lies inside the image come first, row by row. The others follow sector by sector
/// of the plan, row by row in each. A score of NaN is ignored, except at the very first position, where it wins if the
/// least score is the best.
///
/// A score is summed in its own type, element by element in the order of the template, and every operation rounds once.
/// The result has the same bits on every machine, unless the application has named a vendor's library (see `ZdLoader`).
/// With a mode other than `valid`, a three-step search can end at a position outside the mode. The result is then the
/// score of this position: 0 if the template crosses an edge there.
///
/// UT and HT, the element types of image and template, are `float` or `double` or their complex types, of one
/// precision, or both are `bool`; or UT is an integer, which is converted exactly, and HT `float` or `double` (see
/// elements.h). The rank is 2, and a line is an image of height 1. Each array has at most 2^31 - 1
/// elements, because indices are signed 32-bit numbers inside. For a three-step search with a mode other than `valid`
/// the limit is 2^29. In each dimension, the extent of the image plus twice the extents of template and neighbourhood
/// is at most 2^31 - 1.
///
/// An object is made once and run for each image. It keeps a copy of the template. One thread at a time may use an
/// object; different objects share nothing. An object can be moved. Its use after that throws `std::logic_error`, until
/// another object is assigned to it.
///
/// A bad argument throws `std::invalid_argument` and changes nothing. The text has the argument, its value and the
/// allowed values. An error of a vendor's function throws `std::runtime_error`.
template <class UT, class HT = UT>
class ORVANE_API TemplateMatcher {
  static_assert(!StoredInteger<UT> || !detail::isFilterElement<HT> || std::is_floating_point_v<HT>,
                "orvane: templates for images of integers are real; use converted<float>() for the image");

 public:
  using Score = MatchScore<UT, HT>;

  TemplateMatcher(ArrayView<const HT> pattern, const Extents& imageExtents, const MatchOptions& options = {});

  /// Matches an image of the extents given at construction. The result does not depend on earlier runs.
  Match<Score> run(ArrayView<const UT> image);

  /// Copies another template of the same extents for later runs.
  void setTemplate(ArrayView<const HT> pattern);
  /// Sets another region of interest, or none, for later runs.
  void setRegion(const std::optional<Rectangle>& region);

  /// The positions in the region of interest. Width and height are 0 if there are none.
  const Rectangle& positions() const;
  /// The extents of the template.
  const Extents& windowExtents() const;

 private:
  detail::JobHandle<detail::MatchJob<detail::PlainMatchElements<UT, HT>>> job;
};

/// Finds `pattern` in `image` once (see `TemplateMatcher`). Each is an `Array` or an `ArrayView`.
template <class Image, class Pattern>
auto matchTemplate(const Image& image, const Pattern& pattern, const MatchOptions& options = {}) {
  const ArrayView<const ElementOf<Image>> in = image.view();
  return TemplateMatcher<ElementOf<Image>, ElementOf<Pattern>>(pattern.view(), in.extents(), options).run(in);
}

/// Applies a macro to the pairs of image and template elements. It declares or defines templates.
#define ORVANE_FOR_MATCH_PAIRS(APPLY) \
  ORVANE_FOR_CONVOLUTION_PAIRS(APPLY) \
  APPLY(bool, bool)

/// Applies a macro to the pairs with images of integers.
#define ORVANE_FOR_INTEGER_MATCH_PAIRS(APPLY) \
  ORVANE_FOR_SHORT_PAIRS(APPLY, float)        \
  ORVANE_FOR_SHORT_PAIRS(APPLY, double)       \
  APPLY(std::int32_t, double)                 \
  APPLY(std::uint32_t, double)

#define ORVANE_DECLARE(UT, HT) extern template class TemplateMatcher<UT, HT>;
ORVANE_FOR_MATCH_PAIRS(ORVANE_DECLARE)
ORVANE_FOR_INTEGER_MATCH_PAIRS(ORVANE_DECLARE)
#undef ORVANE_DECLARE

}  // namespace BP::filters
