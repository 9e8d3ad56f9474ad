#include "orvane/lanes/sums.h"

#include <algorithm>
#include <cmath>
#include <complex>
#include <limits>

#include "orvane/core/element.h"
#include "orvane/lanes/difference_kernels.h"
#include "orvane/lanes/sum_kernels.h"

namespace BP::lanes {
namespace {

int packedRowsFor(FilterExtents extents) { return std::min(extents.rows, maxPackedRows); }

/// Values of one packed tap: of complex input and filter re, -im, im, of complex differences re, im, energy.
std::ptrdiff_t packedTapSize(Elements elements, Term term) {
  if (term != Term::product) return elements == Elements::realReal ? 1 : 3;
  return elements == Elements::complexComplex ? 3 : elements == Elements::realComplex ? 2 : 1;
}

template <class T>
void packTap(Elements elements, const T* tap, T* to) {
  const T notNumber = std::numeric_limits<T>::quiet_NaN();
  switch (elements) {
    case Elements::realReal:
    case Elements::complexReal: to[0] = tap[0]; break;
    case Elements::realComplex:  // the imaginary part 0 of the input times a part that is not finite is NaN
      to[0] = std::isfinite(tap[1]) ? tap[0] : notNumber;
      to[1] = std::isfinite(tap[0]) ? tap[1] : notNumber;
      break;
    case Elements::complexComplex: to[0] = tap[0], to[1] = -tap[1], to[2] = tap[1]; break;
  }
}

template <class T>
void packTemplateTap(Elements elements, const T* tap, T* to) {
  to[0] = tap[0];
  if (elements == Elements::realReal) return;
  to[1] = isComplexFilter(elements) ? tap[1] : T(0);
  to[2] = to[0] * to[0] + to[1] * to[1];
}

/// What every kernel needs to know; complex input counts as twice as many values, two apart.
template <class T>
SumTask<T> makeTask(bool complexInput, FilterExtents extents, const Run<T>& run) {
  const int partsPerInput = complexInput ? 2 : 1;
  SumTask<T> task;
  task.packedRows = packedRowsFor(extents);
  task.planes = extents.planes;
  task.filterRows = extents.rows;
  task.columns = extents.columns;
  task.step = partsPerInput;
  task.lines = run.lines;
  task.planeStride = run.planeStride;
  task.rows = run.rows;
  task.width = run.width * partsPerInput;
  task.out = run.out;
  return task;
}

/// A complex sum divided by its norms, in any case; the vectors leave to it what is out of their bounds.
template <class T>
void divideComplex(T* parts, T squares, T filterNorm) {
  std::complex<T> sum(parts[0], parts[1]), energy(squares), root, norm(filterNorm);
  divideByNorms(sum, energy, root, norm);
  parts[0] = sum.real(), parts[1] = sum.imag();
}

}  // namespace

template <class T>
std::size_t PackedFilter<T>::sizeFor(Elements elements, FilterExtents extents, Term term) {
  const int packedRows = packedRowsFor(extents);
  return std::size_t(extents.planes) * std::size_t(extents.rows + packedRows - 1) * std::size_t(extents.columns) *
         std::size_t(packedRows) * std::size_t(packedTapSize(elements, term));
}

template <class T>
PackedFilter<T>::PackedFilter(Elements kind, FilterExtents size, T* store, Term packedTerm)
    : elements(kind), extents(size), storage(store), term(packedTerm) {}

template <class T>
void PackedFilter<T>::pack(const T* taps, bool reversed) {
  const int packedRows = packedRowsFor(extents);
  const std::ptrdiff_t last = std::ptrdiff_t(extents.planes) * extents.rows * extents.columns - 1;
  T* to = storage;
  for (int p = 0; p < extents.planes; ++p) {
    for (int line = 0; line < extents.rows + packedRows - 1; ++line) {
      for (int c = 0; c < extents.columns; ++c) {
        for (int r = 0; r < packedRows; ++r, to += packedTapSize(elements, term)) {
          const int j = line - r;
          if (j < 0 || j >= extents.rows) continue;  // output row r does not use this line
          const std::ptrdiff_t n = (std::ptrdiff_t(p) * extents.rows + j) * extents.columns + c;
          const T* const tap = taps + (reversed ? last - n : n) * (isComplexFilter(elements) ? 2 : 1);
          term == Term::product ? packTap(elements, tap, to) : packTemplateTap(elements, tap, to);
        }
      }
    }
  }
}

template <class T>
void PackedFilter<T>::sumProducts(const Run<T>& run) const {
  SumTask<T> task = makeTask(isComplexInput(elements), extents, run);
  task.taps = storage;
  const SumKernels<T>& kernels = sumKernels<T>();
  switch (elements) {
    case Elements::realReal:
    case Elements::complexReal: return kernels.realReal(task);
    case Elements::realComplex: return kernels.realComplex(task);
    case Elements::complexComplex: return kernels.complexComplex(task);
  }
}

template <class T>
void PackedFilter<T>::sumNormalised(const Run<T>& run, T filterNorm) const {
  SumTask<T> task = makeTask(isComplexInput(elements), extents, run);
  task.taps = storage;
  task.filterNorm = filterNorm;
  task.divide = divideComplex<T>;
  const SumKernels<T>& kernels = sumKernels<T>();
  switch (elements) {
    case Elements::realReal: return kernels.normalised(task);
    case Elements::complexReal: return kernels.complexRealNormalised(task);
    case Elements::realComplex: return kernels.realComplexNormalised(task);
    case Elements::complexComplex: return kernels.complexComplexNormalised(task);
  }
}

template <class T>
void PackedFilter<T>::sumCentred(const Run<T>& run, const T* const* means, T filterNorm) const {
  SumTask<T> task = makeTask(false, extents, run);
  task.taps = storage;
  task.filterNorm = filterNorm;
  task.means = means;
  sumKernels<T>().centred(task);
}

template <class T>
void PackedFilter<T>::sumDifferences(const Run<T>& run) const {
  SumTask<T> task = makeTask(isComplexInput(elements), extents, run);
  task.taps = storage;
  const DifferenceKernels<T>& kernels = differenceKernels<T>()[differenceIndex(term)];
  if (elements == Elements::realReal) return kernels.real(task);
  return isComplexInput(elements) ? kernels.complexInput(task) : kernels.realComplex(task);
}

template class PackedFilter<float>;
template class PackedFilter<double>;

}  // namespace BP::lanes
