#pragma once

#include <array>
#include <complex>
#include <concepts>
#include <cstdint>
#include <optional>
#include <type_traits>

#include "orvane/filters/array.h"
#include "orvane/filters/convolution.h"
#include "orvane/filters/extents.h"
#include "orvane/filters/job_handle.h"
#include "orvane/filters/options.h"
#include "orvane/platform/export.h"

/// Finding a template in an image.
///
/// Words used here:
///
/// - The *window* is the part of the image under the template.
/// - The *position* of a window is the position of the template's middle element. An even extent has two middle
/// elements,
///   and the lower one counts.
/// - The *score* of a position measures the difference of window and template.
namespace BP::filters {

/// The formula of a score. a is an element of the window, t the template's element at the same place, and sums run row
/// by row. For complex elements, |a - t| means a - t if |a| > |t|, and t - a otherwise. It stays complex, so terms can
/// cancel.
enum class Metric {
  sad,      ///< sum of |a - t|
  ssd,      ///< sum of (a - t)^2, for complex elements the complex square
  maxad,    ///< the greatest |a - t|, for complex elements the one of greatest magnitude
  product,  ///< sum of a * t with the template turned by 180 degrees, a convolution; the least sum is the best match
};

/// The positions that the search for the best match visits.
enum class Search {
  exhaustive,  ///< all of them
  threeStep,   ///< patterns of 3 by 3 that become narrower; fast, but exact only if scores fall smoothly to the best
};

/// A rectangle of positions or of elements of an image: its first corner and its extents.
struct Rectangle {
  std::array<std::int64_t, 2> start{};
  std::array<std::int64_t, 2> size{};
  bool operator==(const Rectangle&) const = default;
};

/// The choices of a match. Each has a default.
///
/// The mode selects the positions. With `valid` the template lies wholly inside the image, and every score is computed.
/// The other modes add positions where the template crosses an edge. Their score is 0 for every metric, and this is
/// often the least one.
struct MatchOptions {
  Metric metric = Metric::sad;
  OutputMode mode = OutputMode::valid;
  Search search = Search::exhaustive;
  /// The region of interest, which restricts the positions. It may exceed them, miss them, or be empty.
  std::optional<Rectangle> region = std::nullopt;
  /// The number of rows and columns of the block of scores around the best match, or 0 for no block.
  std::int64_t neighbourhood = 0;
  bool best = true;  ///< whether to search the best match
  bool map = false;  ///< whether to return the scores of all positions
};

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

/// The result of one run. Score is the type of a score, and Scores the type of an array of scores. Arrays that the
/// options do not select have no elements.
template <class Score, class Scores>
struct BasicMatch {
  /// Whether there is a best match: the options select it, and the region of interest has a position. Otherwise
  /// location, window and score are 0.
  bool found = false;
  std::array<std::int64_t, 2> location{};  ///< position of the best match
  Rectangle window{};                      ///< elements of the image under the template at the location
  Score score{};                           ///< score at the location
  /// Whether the whole region of interest consists of positions. True without a region, false for an empty one.
  bool regionValid = false;
  /// The block of scores. In each dimension it starts (neighbourhood - 1) / 2 positions, rounded down, before the
  /// location. A score outside the positions is computed if the template lies inside the image, and 0 otherwise.
  Scores neighbourhood{};
  bool neighbourhoodValid = false;  ///< whether the whole block lies in the region of interest and has positions only
  Scores map{};                     ///< the score of each position in `positions`
  Rectangle positions{};            ///< the positions in the region of interest; of size 0 if there are none
};
template <class Score>
using Match = BasicMatch<Score, Array<Score>>;

namespace detail {
template <class Elements>
class MatchJob;
template <class UT, class HT>
class PlainMatchElements;
}  // namespace detail

/// The best match is the position with the least score, for every metric. Complex scores compare by squared magnitude.
/// Of equal scores the one visited first wins. Positions where the template lies inside the image come before the
/// others. Each of these groups is visited row by row. A score of NaN is ignored, except at the very first position,
/// where it wins.
///
/// A score is summed in its own type, element by element in the order of the template, and every operation rounds once.
/// The result has the same bits on every machine, unless the application has named a vendor's library (see `ZdLoader`).
/// With a mode other than `valid`, a three-step search can end at a position outside the mode. The result is then the
/// score of this position: 0 if the template crosses an edge there.
///
/// UT and HT, the element types of image and template, are `float` or `double` or their complex types, of one
/// precision, or both are `bool`. The rank is 2, and a line is an image of height 1. Each array has at most 2^31 - 1
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
 public:
  using Score = MatchScore<UT, HT>;

  TemplateMatcher(ArrayView<const HT> pattern, const Extents& imageExtents, const MatchOptions& options = {});

  /// Matches an image of the extents given at construction. The result does not depend on earlier runs.
  Match<Score> run(ArrayView<const UT> image);

  /// Copies another template of the same extents for later runs.
  void setTemplate(ArrayView<const HT> pattern);
  /// Sets another region of interest, or none, for later runs.
  void setRegion(const std::optional<Rectangle>& region);

  /// The positions in the region of interest. The size is 0 if there are none.
  const Rectangle& positions() const;

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

#define ORVANE_DECLARE(UT, HT) extern template class TemplateMatcher<UT, HT>;
ORVANE_FOR_MATCH_PAIRS(ORVANE_DECLARE)
#undef ORVANE_DECLARE

}  // namespace BP::filters
