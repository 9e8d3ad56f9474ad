#pragma once

#include <cstddef>
#include <vector>

#include "orvane/core/stored.h"
#include "orvane/lanes/sums.h"
#include "orvane/platform/export.h"

namespace BP {

/// An image whose elements are computed in T, and may lie in memory as integers (see `Stored`).
template <class T>
struct StoredImage {
  const void* data;
  std::ptrdiff_t pitch;  ///< elements from one line to the next
  Stored stored = Stored::asComputed;

  T at(std::ptrdiff_t i) const {
    const T* const elements = static_cast<const T*>(data);
    return stored == Stored::asComputed ? elements[i] : loadStored(stored, elements, i);
  }
};

/// Scores of windows that lie wholly in an image: products of window and template, divided by both norms.
///
///     cosine       sum of a * t / (sqrt(sum of a^2) * sqrt(sum of t^2))
///     coefficient  the same of a - mean(window) and t - mean(template) in place of a and t
///
/// a and t are elements of window and template at the same place. All sums run over the template's elements in the
/// order of memory, in T, with one rounding for each operation. A mean is such a sum divided by the number of elements,
/// which is rounded to T. A divisor of 0 gives 0. Vector lanes give the bits of the plain loop. T is `float` or
/// `double`.
template <class T>
class ORVANE_API NormalisedScores {
 public:
  /// For templates of these extents; `isCoefficient` chooses the formula. All memory is made here.
  NormalisedScores(int columns, int rows, bool isCoefficient);

  /// Copies a template for later scores.
  void setTemplate(const T* elements);

  /// Scores of a rectangle of `width` by `rows` windows. The window of score (x, y) begins at element
  /// first + x + pitch * y of the image, and the score goes to out[x + outPitch * y].
  void compute(const StoredImage<T>& image, std::ptrdiff_t first, int width, int rows, T* out, std::ptrdiff_t outPitch);

 private:
  static constexpr int maxRows = 24;
  static constexpr int maxWidth = 2048;

  void computePlain(const StoredImage<T>& image, std::ptrdiff_t first, int width, int rows, T* out,
                    std::ptrdiff_t outPitch);
  void readLines(const StoredImage<T>& image, std::ptrdiff_t first, int width, int lineCount);
  void computeRun(const StoredImage<T>& image, std::ptrdiff_t first, int width, int rows, T* out,
                  std::ptrdiff_t outPitch);

  int columns;
  int rows;
  bool isCoefficient;
  T count;
  T norm = 0;
  std::vector<T> pattern;  ///< less its mean, for coefficients
  bool fitsLanes;
  std::vector<T> taps, ones;
  lanes::PackedFilter<T> products, sums;
  std::vector<const T*> lines;
  std::vector<T> convertedLines;  ///< of images of integers; the first one makes room
  std::vector<T*> outRows;
  std::vector<T> means;
  std::vector<T*> meanRows;
};

extern template class NormalisedScores<float>;
extern template class NormalisedScores<double>;

}  // namespace BP
