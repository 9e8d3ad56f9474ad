#include "orvane/matching/normalised_scores.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>

#include "orvane/algorithm/run_limits.h"
#include "orvane/lanes/conversions.h"
#include "orvane/lanes/target.h"

namespace BP {

namespace {

template <class T>
T sumOf(const std::vector<T>& values) {
  T sum = 0;
  for (const T value : values) sum = sum + value;
  return sum;
}

/// Calls `take(a, n)` for each element of a window and its number, row by row.
template <class T, class TakeT>
void forEachElement(const StoredImage<T>& image, std::ptrdiff_t first, int columns, int rows, TakeT&& take) {
  std::size_t n = 0;
  for (int j = 0; j < rows; ++j) {
    for (int i = 0; i < columns; ++i) take(image.at(first + i + image.pitch * j), n++);
  }
}

}  // namespace

template <class T>
NormalisedScores<T>::NormalisedScores(int templateColumns, int templateRows, bool coefficient)
    : columns(templateColumns),
      rows(templateRows),
      isCoefficient(coefficient),
      count(static_cast<T>(std::int64_t{columns} * rows)),
      pattern(static_cast<std::size_t>(columns) * static_cast<std::size_t>(rows)),
      fitsLanes(std::int64_t{columns} * rows <= RunLimits::taps) {
  if (!fitsLanes) return;
  const lanes::FilterExtents extents{1, rows, columns};
  const std::size_t size = lanes::PackedFilter<T>::sizeFor(lanes::Elements::realReal, extents);
  taps.resize(size);
  products = {lanes::Elements::realReal, extents, taps.data()};
  lines.resize(static_cast<std::size_t>(maxRows + rows - 1));
  outRows.resize(maxRows);
  if (!isCoefficient) return;
  ones.resize(size);
  sums = {lanes::Elements::realReal, extents, ones.data()};
  sums.pack(std::vector<T>(pattern.size(), T(1)).data(), false);
  means.resize(std::size_t{maxRows} * maxWidth);
  for (int r = 0; r < maxRows; ++r) meanRows.push_back(means.data() + std::ptrdiff_t{r} * maxWidth);
}

template <class T>
void NormalisedScores<T>::setTemplate(const T* elements) {
  std::copy_n(elements, pattern.size(), pattern.begin());
  if (isCoefficient) {
    const T mean = sumOf(pattern) / count;
    for (T& t : pattern) t = t - mean;
  }
  T energy = 0;
  for (const T t : pattern) energy = energy + t * t;
  norm = std::sqrt(energy);
  if (fitsLanes) products.pack(pattern.data(), false);
}

template <class T>
void NormalisedScores<T>::compute(const StoredImage<T>& image, std::ptrdiff_t first, int width, int height, T* out,
                                  std::ptrdiff_t outPitch) {
  if (!fitsLanes || !lanes::areInUse()) return computePlain(image, first, width, height, out, outPitch);
  for (int y = 0; y < height; y += maxRows) {
    for (int x = 0; x < width; x += maxWidth) {
      computeRun(image, first + x + image.pitch * y, std::min(maxWidth, width - x), std::min(maxRows, height - y),
                 out + x + outPitch * y, outPitch);
    }
  }
}

/// The lines of a run: pointers into the image, or converted copies.
template <class T>
void NormalisedScores<T>::readLines(const StoredImage<T>& image, std::ptrdiff_t first, int width, int lineCount) {
  const std::ptrdiff_t length = std::ptrdiff_t{width} + columns - 1;
  const auto needed = static_cast<std::size_t>(length * lineCount);
  if (image.stored != Stored::asComputed && convertedLines.size() < needed) convertedLines.resize(needed);
  for (int k = 0; k < lineCount; ++k) {
    const std::ptrdiff_t at = first + image.pitch * k;
    const T*& line = lines[static_cast<std::size_t>(k)];
    if (image.stored == Stored::asComputed) {
      line = static_cast<const T*>(image.data) + at;
      continue;
    }
    T* const converted = convertedLines.data() + length * k;
    const auto size = static_cast<std::ptrdiff_t>(storedBytes<T>(image.stored));
    lanes::convertLine(image.stored, static_cast<const std::byte*>(image.data) + at * size, length, converted);
    line = converted;
  }
}

/// Up to `maxRows` rows of up to `maxWidth` scores.
template <class T>
void NormalisedScores<T>::computeRun(const StoredImage<T>& image, std::ptrdiff_t first, int width, int height, T* out,
                                     std::ptrdiff_t outPitch) {
  readLines(image, first, width, height + rows - 1);
  for (int r = 0; r < height; ++r) outRows[static_cast<std::size_t>(r)] = out + outPitch * r;
  const lanes::Run<T> run{lines.data(), 0, height, width, outRows.data()};
  if (!isCoefficient) return products.sumNormalised(run, norm);
  sums.sumProducts({lines.data(), 0, height, width, meanRows.data()});
  for (int r = 0; r < height; ++r) {
    T* const row = meanRows[static_cast<std::size_t>(r)];
    for (int x = 0; x < width; ++x) row[x] = row[x] / count;
  }
  products.sumCentred(run, meanRows.data(), norm);
}

template <class T>
void NormalisedScores<T>::computePlain(const StoredImage<T>& image, std::ptrdiff_t first, int width, int height, T* out,
                                       std::ptrdiff_t outPitch) {
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      const std::ptrdiff_t window = first + x + image.pitch * y;
      T mean = 0, sum = 0, energy = 0;
      if (isCoefficient) {
        forEachElement(image, window, columns, rows, [&](T a, std::size_t) { mean = mean + a; });
        mean = mean / count;
      }
      forEachElement(image, window, columns, rows, [&](T a, std::size_t n) {
        const T value = isCoefficient ? a - mean : a;
        sum = sum + value * pattern[n];
        energy = energy + value * value;
      });
      const T divisor = std::sqrt(energy) * norm;
      out[x + outPitch * y] = divisor == 0 ? T(0) : sum / divisor;
    }
  }
}

template class NormalisedScores<float>;
template class NormalisedScores<double>;

}  // namespace BP
