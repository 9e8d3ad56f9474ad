#pragma once

#include <cmath>
#include <complex>
#include <ostream>
#include <vector>

#include "orvane/core/enums.h"
#include "tests/support/pad_walk.h"
#include "tests/support/random_values.h"

/// What convolution and correlation mean, written down once more and in the plainest way: one output at a time, an edge
/// rule that walks, and a trip through memory after every operation, so that no compiler can fuse, widen or reorder.
namespace BP::test {

template <class T>
struct IsComplex : std::false_type {};
template <class T>
struct IsComplex<std::complex<T>> : std::true_type {};

template <class T>
T rounded(T v) {
  volatile T stored = v;
  return stored;
}
template <class T>
T product(T a, T b) {
  return rounded<T>(a * b);
}
template <class T>
T sum(T a, T b) {
  return rounded<T>(a + b);
}

/// Products of a tap and a filter element, each with the type of sum that it asks for.
template <class T>
void addProduct(T& acc, T tap, T h) {
  acc = sum(acc, product(tap, h));
}
template <class T>
void addProduct(std::complex<T>& acc, std::complex<T> tap, T h) {
  acc = {sum(product(tap.real(), h), acc.real()), sum(product(tap.imag(), h), acc.imag())};
}
template <class T>
std::complex<T> complexProduct(std::complex<T> a, std::complex<T> b) {
  return {sum(product(a.real(), b.real()), -product(a.imag(), b.imag())),
          sum(product(a.real(), b.imag()), product(b.real(), a.imag()))};
}
template <class T>
void addProduct(std::complex<T>& acc, std::complex<T> tap, std::complex<T> h) {
  const std::complex<T> p = complexProduct(tap, h);
  acc = {sum(p.real(), acc.real()), sum(acc.imag(), p.imag())};
}
template <class T>
void addProduct(std::complex<T>& acc, T tap, std::complex<T> h) {
  const std::complex<T> p(sum(product(tap, h.real()), -product(h.imag(), T(0))),
                          sum(product(tap, h.imag()), product(h.real(), T(0))));
  acc = {sum(p.real(), acc.real()), sum(acc.imag(), p.imag())};
}

template <class T>
void addSquare(T& energy, T x) {
  energy = sum(product(x, x), energy);
}
template <class T>
void addSquare(std::complex<T>& energy, T x) {
  energy = {sum(energy.real(), product(x, x)), energy.imag()};
}
template <class T>
void addSquare(std::complex<T>& energy, std::complex<T> x) {
  const std::complex<T> p(sum(product(x.real(), x.real()), product(x.imag(), x.imag())),
                          sum(product(x.imag(), x.real()), -product(x.real(), x.imag())));
  energy = {sum(energy.real(), p.real()), sum(energy.imag(), p.imag())};
}

/// A filter problem in two dimensions; element (i0, i1) of an array stands at i0 + i1 * dims[0].
template <class HT, class UT, class YT>
struct Problem {
  int hDims[2], uDims[2];
  std::vector<HT> h;
  std::vector<UT> u;
  UT padValue{};
  OutputModeEnum outputMode = OutputModeValid;
  AlgorithmModeEnum algorithmMode = AlgorithmModeConvolution;
  NormEnum norm = NormNone;
  PadTypeEnum padType = PadTypeConstant;

  int centre(int d) const { return hDims[d] % 2 == 1 ? hDims[d] / 2 : hDims[d] / 2 - 1; }
  int yDim(int d) const {
    const int grown = outputMode == OutputModeValid ? 1 - hDims[d] : outputMode == OutputModeFull ? hDims[d] - 1 : 0;
    return uDims[d] + grown > 0 ? uDims[d] + grown : 0;
  }
  std::size_t outputCount() const { return static_cast<std::size_t>(yDim(0)) * static_cast<std::size_t>(yDim(1)); }
  bool windowFits() const { return hDims[0] <= uDims[0] && hDims[1] <= uDims[1]; }
  /// Input coordinate under the filter's first element at output index 0.
  int firstTap(int d) const {
    return outputMode == OutputModeValid ? 0 : outputMode == OutputModeSame ? -centre(d) : 1 - hDims[d];
  }
};

/// A problem of random extents, in which the filter can exceed the input, and random values.
template <class HT, class UT, class YT>
Problem<HT, UT, YT> randomProblem(auto& random, int mostFilter, int mostInput, bool special = false) {
  Problem<HT, UT, YT> p{};
  for (int d = 0; d < 2; ++d) {
    p.hDims[d] = pick(random, 1, mostFilter);
    p.uDims[d] = pick(random, 1, mostInput);
  }
  p.h = randomValues<HT>(random, p.hDims[0] * p.hDims[1], special);
  p.u = randomValues<UT>(random, p.uDims[0] * p.uDims[1], special);
  p.padValue = RandomValue<UT>::of(random, false);
  return p;
}

template <class HT, class UT, class YT>
std::ostream& operator<<(std::ostream& text, const Problem<HT, UT, YT>& p) {
  return text << "filter " << p.hDims[0] << " x " << p.hDims[1] << ", input " << p.uDims[0] << " x " << p.uDims[1]
              << ", mode " << p.outputMode << ", algorithm " << p.algorithmMode << ", norm " << p.norm << ", pad "
              << p.padType;
}

/// The coordinate that one stands for; -1 for the value of a constant pad.
inline int readFrom(PadTypeEnum padType, int coordinate, int extent) {
  const bool isInRange = coordinate >= 0 && coordinate < extent;
  return padType == PadTypeConstant && !isInRange ? -1 : walkTo(padType, coordinate, extent);
}

template <class HT, class UT, class YT>
UT tapAt(const Problem<HT, UT, YT>& p, int x, int y) {
  const int i = readFrom(p.padType, x, p.uDims[0]), j = readFrom(p.padType, y, p.uDims[1]);
  return i < 0 || j < 0 ? p.padValue : p.u[static_cast<std::size_t>(i + p.uDims[0] * j)];
}

template <class YT>
YT normalised(YT y, YT filterEnergy, YT energy) {
  YT divisor;
  if constexpr (IsComplex<YT>::value) {
    const YT n(std::sqrt(filterEnergy.real()), 0), s(std::sqrt(energy.real()), 0);
    divisor = complexProduct(s, n);
  } else {
    divisor = product(std::sqrt(filterEnergy), std::sqrt(energy));
  }
  return divisor == YT(0) ? YT(0) : y / divisor;
}

template <class HT, class UT, class YT>
YT outputAt(const Problem<HT, UT, YT>& p, int x, int y) {
  const bool flips = p.algorithmMode == AlgorithmModeConvolution;
  YT acc{}, energy{}, filterEnergy{};
  for (int j = 0; j < p.hDims[1]; ++j) {
    for (int i = 0; i < p.hDims[0]; ++i) {
      const int k = i + p.hDims[0] * j;
      const UT tap = tapAt(p, x + p.firstTap(0) + i, y + p.firstTap(1) + j);
      const HT h = p.h[static_cast<std::size_t>(flips ? p.hDims[0] * p.hDims[1] - 1 - k : k)];
      addSquare(energy, tap);
      addProduct(acc, tap, h);
      addSquare(filterEnergy, p.h[static_cast<std::size_t>(k)]);
    }
  }
  return p.norm == NormNone ? acc : normalised(acc, filterEnergy, energy);
}

/// All outputs.
template <class HT, class UT, class YT>
std::vector<YT> solve(const Problem<HT, UT, YT>& p) {
  std::vector<YT> y;
  for (int j = 0; j < p.yDim(1); ++j) {
    for (int i = 0; i < p.yDim(0); ++i) y.push_back(outputAt(p, i, j));
  }
  return y;
}

/// The separable filter: `h` as a column, then `row`, with the constant pad that the first pass makes of the second's.
template <class HT, class UT, class YT>
std::vector<YT> solveSeparable(Problem<HT, UT, YT> first, const std::vector<HT>& row) {
  first.hDims[0] = static_cast<int>(first.h.size());
  first.hDims[1] = 1;
  Problem<HT, YT, YT> second{};
  second.u = solve(first);
  second.h = row;
  second.hDims[0] = 1;
  second.hDims[1] = static_cast<int>(row.size());
  for (int d = 0; d < 2; ++d) second.uDims[d] = first.yDim(d);
  second.outputMode = first.outputMode;
  second.algorithmMode = first.algorithmMode;
  second.padType = first.padType;
  YT pad = first.h[0];
  for (std::size_t k = 1; k < first.h.size(); ++k) pad += first.h[k];
  if constexpr (IsComplex<UT>::value) {
    second.padValue = complexProduct(pad, first.padValue);
  } else if constexpr (IsComplex<YT>::value) {
    second.padValue = {product(pad.real(), first.padValue), product(pad.imag(), first.padValue)};
  } else {
    second.padValue = product(pad, first.padValue);
  }
  return solve(second);
}

}  // namespace BP::test
