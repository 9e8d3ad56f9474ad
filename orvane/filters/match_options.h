#pragma once

#include <array>
#include <cstdint>
#include <optional>

#include "orvane/filters/array.h"
#include "orvane/filters/options.h"
#include "orvane/filters/rectangle.h"

/// Finding a template in an image.
///
/// Words used here:
///
/// - The *window* is the part of the image under the template.
/// - The *position* of a window is the position of the template's middle element. An even extent has two middle
/// elements,
///   and the lower one counts.
/// - The *score* of a position measures how window and template differ or agree.
namespace BP::filters {

/// The formula of a score. a is an element of the window, t the template's element at the same place, and sums run row
/// by row. For complex elements, |a - t| means a - t if |a| > |t|, and t - a otherwise. It stays complex, so terms can
/// cancel.
enum class Metric {
  sad,      ///< sum of |a - t|
  ssd,      ///< sum of (a - t)^2, for complex elements the complex square
  maxad,    ///< the greatest |a - t|, for complex elements the one of greatest magnitude
  product,  ///< sum of a * t with the template turned by 180 degrees, a convolution; the least sum is the best match
  /// sum of a * t / (sqrt(sum of a^2) * sqrt(sum of t^2)), or 0 where that divisor is 0. It is 1 where the window is a
  /// positive multiple of the template, up to rounding. The greatest score is the best match. Elements are `float` or
  /// `double`.
  cosine,
  /// The same of a - mean(window) and t - mean(template) in place of a and t, where a mean is the sum of the elements
  /// divided by their number. It is 1 where brightness and contrast alone differ, up to rounding.
  correlationCoefficient,
};

/// Whether the best match by a metric is the greatest score, and not the least.
inline bool greatestIsBest(Metric metric) {
  return metric == Metric::cosine || metric == Metric::correlationCoefficient;
}

/// The positions that the search for the best match visits.
enum class Search {
  exhaustive,  ///< all of them
  threeStep,   ///< patterns of 3 by 3 that become narrower; fast, but exact only if scores fall smoothly to the best
};

/// The choices of a match. Each has a default.
///
/// The mode selects the positions. With `valid` the template lies wholly inside the image, and every score is computed.
/// The other modes add positions where the template crosses an edge. Their score is 0 for every metric, and this is
/// often the best one.
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
  /// Whether to estimate where between positions the best match lies (see `BasicMatch::refined`). Scores must be real,
  /// and the neighbourhood 0 or at least 3.
  bool refine = false;
  int threads = 1;  ///< the most threads of a run; 0 for as many as there are cores
  Progress progress =
      nullptr;  ///< told while a run goes on, which it can cancel; a three-step search only tells the end
};

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
  /// The location, refined if the options select it. In each dimension a parabola through the score at the location and
  /// the two beside it gives the place of its extremum, at most half a position away: with the scores b, s and a
  /// before, at and after the location
  ///
  ///     location + (b - a) / (2 * (b - 2 * s + a))      in double
  ///
  /// It is the location where a neighbour has no score or the parabola has no extremum.
  std::array<double, 2> refined{};
  /// Whether the whole region of interest consists of positions. True without a region, false for an empty one.
  bool regionValid = false;
  /// The block of scores. In each dimension it starts (neighbourhood - 1) / 2 positions, rounded down, before the
  /// location. A score outside the positions is computed if the template lies inside the image, and 0 otherwise.
  Scores neighbourhood{};
  bool neighbourhoodValid = false;  ///< whether the whole block lies in the region of interest and has positions only
  Scores map{};                     ///< the score of each position in `positions`
  Rectangle positions{};            ///< the positions in the region of interest; empty if there are none
  Metric metric = Metric::sad;      ///< of the scores
  Rectangle originWindow{};         ///< the window of position (0, 0)
};
template <class Score>
using Match = BasicMatch<Score, Array<Score>>;

}  // namespace BP::filters
