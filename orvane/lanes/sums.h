#pragma once

#include <cstddef>

#include "orvane/platform/export.h"

/// Sums of products, of squares and of differences for a run of neighbouring outputs in several rows at once.
///
/// Vocabulary:
///   output row  neighbouring outputs along dimension 0
///   run         the same stretch of one or more output rows that follow each other along dimension 1
///   line        a stretch of input along dimension 0, as long as a run needs: its width and the filter's columns - 1
///   plane       the part of a filter of more than two dimensions that has columns and rows alone
///
///   filter 3 columns x 2 rows         lines[0]  a b c d e f        output row 0 uses lines 0 and 1
///   run of width 4, 2 rows            lines[1]  g h i j k l        output row 1 uses lines 1 and 2
///                                     lines[2]  m n o p q r
///
///   output row 0:  x0 = a h0 + b h1 + c h2 + g h3 + h h4 + i h5,   x1 = b h0 + ...
///
/// Each output is one sum that starts at +0 and adds its taps one by one: plane by plane, row by row, column by column,
/// with one rounding for each multiplication and each addition. Vector lanes are neighbouring outputs, never taps, so
/// every target gives the bits of the plain loop; only which NaN comes out is left open. No tap is added or left out.
///
/// Nothing is read or written but the lines and output rows themselves. Lines may overlap or coincide. Output must not
/// overlap the input. All calls are thread-safe, allocate nothing and refuse nothing: extents are at least 1.
namespace BP::lanes {

/// What input and filter are made of, in this order. A complex element is its real and its imaginary part in two
/// neighbouring values of `T`; pointers to it are pointers to its real part. The sum is complex if either is.
enum class Elements { realReal, complexReal, realComplex, complexComplex };

inline bool isComplexInput(Elements elements) {
  return elements == Elements::complexReal || elements == Elements::complexComplex;
}
inline bool isComplexFilter(Elements elements) {
  return elements == Elements::realComplex || elements == Elements::complexComplex;
}

/// What a tap adds to its output: its product with the input, or, of a filter that is a template, a measure of their
/// difference.
enum class Term { product, absoluteDifference, squaredDifference, greatestDifference };

/// Extents of a filter. A window of more than three dimensions has the product of the further ones as its planes.
struct FilterExtents {
  int planes = 1;
  int rows = 1;
  int columns = 1;
};

/// Where a run is read and written.
template <class T>
struct Run {
  /// Line k of plane p is `lines[p * planeStride + k]`: the first input element of the first output's tap in column 0.
  /// Output row r takes filter row j from line r + j, so a plane has rows + filter rows - 1 lines.
  const T* const* lines;
  /// Number of pointers from one plane to the next.
  std::ptrdiff_t planeStride;
  /// Number of output rows. 24 rows at a time, or a multiple, divide best among the vector registers of all targets.
  int rows;
  /// Number of outputs in each row.
  std::ptrdiff_t width;
  /// The first output of each row.
  T* const* out;
};

/// A filter with its taps in the order in which the kernels use them: for each input line and column, side by side
/// those of the neighbouring output rows that share the line. Pack once for many runs; a run only reads. Any
/// target can use what was packed, and any number of threads.
///
/// Narrow runs are slow, as their vectors are not filled. A narrow, high area of outputs is summed fast by turning it:
/// copy its input so that columns become lines, take filter rows as planes and filter columns as rows,
/// `{planes * rows, columns, 1}`, which leaves the order of the taps as it is, and let line k of plane j be column k
/// from its element j on. Each output row is then a column of the area.
template <class T>
class ORVANE_API PackedFilter {
 public:
  /// Number of values of `T` that the packed taps take.
  static std::size_t sizeFor(Elements elements, FilterExtents extents, Term term = Term::product);

  PackedFilter() = default;
  /// `storage` has `sizeFor(elements, extents, term)` values and stays the caller's, who keeps it while the filter is
  /// in use.
  PackedFilter(Elements elements, FilterExtents extents, T* storage, Term term = Term::product);

  /// Packs taps that lie in the order of the sum, or, if `reversed`, in the opposite order.
  void pack(const T* taps, bool reversed);

  /// out[r][i] := sum over planes p, filter rows j, columns c of lines[p][r + j][i + c] * tap[p][j][c]
  ///
  /// Products with a complex operand are the stated ones: the real part is (a.re h.re - a.im h.im) + sum.re, the
  /// imaginary part sum.im + (a.re h.im + h.re a.im); a real input counts as complex with imaginary part 0, a real
  /// filter scales both parts of a complex input.
  void sumProducts(const Run<T>& run) const;

  /// The same sum, divided by the norms of filter and window: out := sum / (sqrt(energy) * filterNorm), or 0 where the
  /// divisor is 0 (a divisor that is NaN gives NaN). The energy of a window is energy := energy + |x|^2 over its taps
  /// in the same order, with |x|^2 = x.re^2 + x.im^2 for complex input. A complex sum is divided as by `divideByNorms`.
  void sumNormalised(const Run<T>& run, T filterNorm) const;

  /// The normalised sum of windows less their means, of real elements:
  ///
  ///   sum := sum + (x - m) * h,  energy := energy + (x - m)^2,  out := sum / (sqrt(energy) * filterNorm)
  ///
  /// `means[r][i]` is the m of output i in row r. It must not be an output. A divisor of 0 gives 0.
  void sumCentred(const Run<T>& run, const T* const* means, T filterNorm) const;

  /// The same walk with differences d = a - t of input and tap. Only for filters of such a term:
  ///
  ///   absoluteDifference  out := out + (a > t ? a - t : t - a)
  ///   squaredDifference   out := d * d + out
  ///   greatestDifference  out := the greatest (a > t ? a - t : t - a), the first of equals
  ///
  /// Complex elements compare by re^2 + im^2, and a real operand beside a complex one counts as complex. Differences
  /// stay complex, and squares are complex ones, without a conjugate. A greatest difference that is NaN at the first
  /// tap stays NaN; a later NaN is ignored.
  void sumDifferences(const Run<T>& run) const;

  Elements getElements() const { return elements; }
  FilterExtents getExtents() const { return extents; }

 private:
  Elements elements = Elements::realReal;
  FilterExtents extents;
  T* storage = nullptr;
  Term term = Term::product;
};

extern template class PackedFilter<float>;
extern template class PackedFilter<double>;

}  // namespace BP::lanes
