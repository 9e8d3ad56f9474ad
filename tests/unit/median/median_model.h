#pragma once

#include <algorithm>
#include <utility>
#include <vector>

#include "tests/support/conv_corr_model.h"

/// What a median filter means, in two plain ways: by a sort of each window, and by the selection in its own words on a
/// vector whose every access is checked; that one also says which of two zeros comes out, and what NaN leads to.
namespace BP::test {

/// The values under the window at output (x, y), in the order of gathering.
template <class T>
std::vector<T> windowAt(const Problem<T, T, T>& p, int x, int y) {
  std::vector<T> values;
  for (int j = 0; j < p.hDims[1]; ++j) {
    for (int i = 0; i < p.hDims[0]; ++i) values.push_back(tapAt(p, x + p.firstTap(0) + i, y + p.firstTap(1) + j));
  }
  return values;
}

/// The middle value, or `mean(lower, upper)` of the two in the middle; `rank(values, k)` gives the value of rank k.
template <class T, class RankT, class MeanT>
T medianOf(std::vector<T> values, RankT rank, MeanT mean) {
  const std::size_t n = values.size();
  if (n % 2 == 1) return rank(values, n / 2);
  const T lower = rank(values, n / 2 - 1);
  return mean(lower, rank(values, n / 2));
}

template <class T>
T rankBySort(std::vector<T>& values, std::size_t k) {
  std::sort(values.begin(), values.end());
  return values[k];
}

template <class T>
std::size_t partitioned(std::vector<T>& a, std::size_t lo, std::size_t hi) {
  const auto exchangeIfGreater = [&a](std::size_t i, std::size_t j) {
    if (a.at(i) > a.at(j)) std::swap(a[i], a[j]);
  };
  const std::size_t middle = (lo + hi) / 2;
  exchangeIfGreater(lo, middle);
  exchangeIfGreater(lo, hi);
  exchangeIfGreater(middle, hi);
  std::swap(a.at(middle), a.at(hi - 1));
  const T pivot = a[hi - 1];
  std::size_t i = lo + 1, j = hi - 2;
  while (true) {
    while (pivot > a.at(i)) ++i;
    while (a.at(j) > pivot) --j;
    if (i >= j) break;
    std::swap(a[i++], a[j--]);
  }
  std::swap(a.at(i), a.at(hi - 1));
  return i;
}

template <class T>
T rankBySelection(std::vector<T>& a, std::size_t k) {
  std::size_t lo = 0, hi = a.size() - 1;  // what is left to look at, never past the place of rank k
  while (hi >= lo + 2) {
    const std::size_t p = partitioned(a, lo, hi);
    if (p == k) return a[k];
    (k < p ? hi : lo) = k < p ? p - 1 : p + 1;
  }
  if (hi == lo + 1 && a.at(lo) > a.at(hi)) std::swap(a[lo], a[hi]);
  return a.at(k);
}

}  // namespace BP::test
