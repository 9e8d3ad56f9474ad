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
/// Words used here: the *window* is the stretch of image that lies under the template; its *position* is where the
/// template's middle lies, of an even extent the lower one of the two; the *score* of a position says how much window
/// and template differ.
namespace BP::filters {

/// How a score comes from the window's elements a and the template's t, summed row by row. Of complex elements |x| is
/// replaced by x or -x: a - t if |a| > |t|, else t - a; it stays complex, so terms can cancel.
enum class Metric {
  sad,      ///< sum of |a - t|
  ssd,      ///< sum of (a - t)^2, of complex elements the complex square
  maxad,    ///< the greatest |a - t|, of complex elements the one of greatest magnitude
  product,  ///< sum of a * t, the template turned by 180 degrees, as a convolution; the least sum is the best match
};

/// Which positions the search for the best match looks at.
enum class Search {
  exhaustive,  ///< all of them
  threeStep,   ///< patterns of 3 by 3, each narrower than the one before: fast, finds the best of a smooth hollow only
};

/// A rectangle of positions, or of elements of an image: its first corner, its extents.
struct Region {
  std::array<std::int64_t, 2> start{};
  std::array<std::int64_t, 2> size{};
  bool operator==(const Region&) const = default;
};

/// The choices of a match; each has a default.
///
/// The mode says which positions there are. With `valid` the template lies wholly in the image, and every score is
/// real. The other modes add positions where it does not: these score 0, whatever the metric, which often is the best.
struct MatchOptions {
  Metric metric = Metric::sad;
  OutputMode mode = OutputMode::valid;
  Search search = Search::exhaustive;
  /// Restricts the positions. It may reach beyond them, miss them, and be empty.
  std::optional<Region> region = std::nullopt;
  /// Edge of the block of scores around the best match, which has that many rows and columns; 0 for none.
  std::int64_t neighbourhood = 0;
  bool best = true;  ///< whether the best match is wanted
  bool map = false;  ///< whether the scores of all positions are wanted
};

/// The element type of scores for images of UT and templates of HT: complex if either is; counts of differing elements
/// (of `Metric::product`, of common ones) if they are `bool`.
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

/// What one run found, with scores of type Score and arrays of them of type Scores. Arrays that were not asked for have
/// no elements.
template <class Score, class Scores>
struct BasicMatch {
  /// Whether there is a best match: it was asked for, and the region of interest holds a position. Otherwise location,
  /// window and score are all 0.
  bool found = false;
  std::array<std::int64_t, 2> location{};  ///< position of the best match
  Region window{};                         ///< the elements of the image under the template there
  Score score{};                           ///< the score there
  /// Whether all of the region of interest are positions; true without one, false for an empty one.
  bool regionValid = false;
  /// The block of scores: (neighbourhood - 1) / 2 positions before the location in each dimension, rounded down, and
  /// the others from there on. Beyond the positions too scores are real where the template fits and 0 elsewhere.
  Scores neighbourhood{};
  bool neighbourhoodValid = false;  ///< whether all of the block are positions in the region of interest
  Scores map{};                     ///< a score for each position in `positions`
  Region positions{};               ///< the positions in the region of interest; of size 0 if there are none
};
template <class Score>
using Match = BasicMatch<Score, Array<Score>>;

namespace detail {
template <class Elements>
class MatchJob;
template <class UT, class HT>
class PlainMatchElements;
}  // namespace detail

/// The best match is the position of the least score, whatever the metric; complex scores compare by squared magnitude.
/// Of equal scores the one visited first stays: positions where the template fits before others, then row by row. A
/// score that is NaN is passed over, unless it is that of the very first position, where it stays.
///
/// Scores are summed in their own type, element by element in the order of the template, each operation rounded once:
/// the same bits on every machine, unless the application has named a vendor's library (see `ZdLoader`). A three-step
/// search with a mode other than `valid` can end at a position that is none of the mode; the score is then that of the
/// position where it ended, 0 if the template does not fit there.
///
/// UT and HT, the element types of image and template, are `float` or `double` or their complex types, of one
/// precision, or both `bool`. Rank is 2: a line is an image of height 1. Indices are signed 32-bit numbers inside, so
/// there are at most 2^31 - 1 elements in each array, for a three-step search with a mode other than `valid` 2^29; in
/// each dimension the extent of the image and twice those of template and neighbourhood are no more than 2^31 - 1
/// together.
///
/// One object is one job: make it once, run it for each image. It keeps a copy of the template. One thread at a time;
/// different objects share nothing. It can be moved; one that was moved from throws `std::logic_error` when it is used,
/// until something is assigned to it. Bad arguments throw `std::invalid_argument` that names the argument, its value
/// and what is allowed, and change nothing. Errors of a vendor's functions throw `std::runtime_error`.
template <class UT, class HT = UT>
class ORVANE_API TemplateMatcher {
 public:
  using Score = MatchScore<UT, HT>;

  TemplateMatcher(ArrayView<const HT> pattern, const Extents& imageExtents, const MatchOptions& options = {});

  /// Matches an image of the extents given at construction. What one run finds does not depend on those before.
  Match<Score> run(ArrayView<const UT> image);

  /// Takes another template of the same extents for the runs to come.
  void setTemplate(ArrayView<const HT> pattern);
  /// Takes another region of interest, or none, for the runs to come.
  void setRegion(const std::optional<Region>& region);

  /// The positions in the region of interest; of size 0 if there are none.
  const Region& positions() const;

 private:
  detail::JobHandle<detail::MatchJob<detail::PlainMatchElements<UT, HT>>> job;
};

/// Finds `pattern` in `image`, once: see `TemplateMatcher`. Both are an `Array` or an `ArrayView`.
template <class Image, class Pattern>
auto matchTemplate(const Image& image, const Pattern& pattern, const MatchOptions& options = {}) {
  const ArrayView<const ElementOf<Image>> in = image.view();
  return TemplateMatcher<ElementOf<Image>, ElementOf<Pattern>>(pattern.view(), in.extents(), options).run(in);
}

/// Declares, or with `template` in front defines, something for the pairs of image and template elements.
#define ORVANE_FOR_MATCH_PAIRS(APPLY) \
  ORVANE_FOR_CONVOLUTION_PAIRS(APPLY) \
  APPLY(bool, bool)

#define ORVANE_DECLARE(UT, HT) extern template class TemplateMatcher<UT, HT>;
ORVANE_FOR_MATCH_PAIRS(ORVANE_DECLARE)
#undef ORVANE_DECLARE

}  // namespace BP::filters
