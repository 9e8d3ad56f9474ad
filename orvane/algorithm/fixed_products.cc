#include "orvane/algorithm/fixed_products.h"

#include <algorithm>
#include <bit>

namespace BP {
namespace {

std::size_t sizeOf(std::ptrdiff_t count) { return static_cast<std::size_t>(count); }

}  // namespace

void FixedProducts::resize(const lanes::FilterExtents& newExtents, int lineCount) {
  columns = newExtents.columns;
  filterRows = newExtents.rows;
  lines = lineCount;
  extremes.resize(sizeOf(std::ptrdiff_t{lines} * columns));
  all.resize(sizeOf(columns));
  running.resize(sizeOf(columns));
  maskOf.resize(sizeOf(std::ptrdiff_t{columns} * filterRows));
}

void FixedProducts::begin(const FixedSumPlan& plan, const std::vector<std::int64_t>& taps, bool countsLossy,
                          bool looksForRange) {
  form = plan.form;
  append = plan.append;
  rounder = plan.product.rounder;
  filter = &taps;
  ranges = looksForRange;
  masks.clear();
  if (!countsLossy || form == lanes::FixedForm::exact || rounder.right == 0) return;
  for (std::size_t n = 0; n < taps.size(); ++n) {
    const int zeros = taps[n] == 0 ? rounder.right : std::countr_zero(static_cast<std::uint64_t>(taps[n]));
    const std::int64_t mask = rounder.dropped >> std::min(zeros, rounder.right);
    if (mask == 0) {
      maskOf[n] = -1;
      continue;
    }
    const auto at = std::find(masks.begin(), masks.end(), mask);
    maskOf[n] = static_cast<int>(at - masks.begin());
    if (at == masks.end()) masks.push_back(mask);
  }
  if (lossy.size() < masks.size()) lossy.resize(masks.size());
  for (std::size_t m = 0; m < masks.size(); ++m) lossy[m].resize(extremes.size());
}

void FixedProducts::beginStrip(int newWidth, int first, int last) {
  width = newWidth;
  firstCounted = first;
  endCounted = last;
}

template <class T>
void FixedProducts::addLine(int k, const T* line, bool isInside) {
  // Values from columns - 1 to before width are common to all columns.
  const int first = std::max(columns - 1, firstCounted), last = isInside ? std::min(width, endCounted) : first;
  if (ranges) {
    Extremes common;
    if (first < last) {
      T least, greatest;
      lanes::findRange(line + first, last - first, least, greatest);
      common = {least, greatest};
    }
    slide(
        line, isInside, common,
        [](T v) {
          return Extremes{v, v};
        },
        extremes.data() + place(k));
  }
  for (std::size_t m = 0; m < masks.size(); ++m) {
    const T mask = static_cast<T>(masks[m]);
    Number common;
    if (first < last) common.count = lanes::countWith(line + first, last - first, mask);
    slide(
        line, isInside, common, [mask](T v) { return Number{(v & mask) != 0}; }, lossy[m].data() + place(k));
  }
}

template void FixedProducts::addLine(int, const std::int32_t*, bool);
template void FixedProducts::addLine(int, const std::int64_t*, bool);

/// Sums up what each column meets: values c to before c + width.
template <class T, class S, class OfT>
void FixedProducts::slide(const T* line, bool isInside, const S& common, OfT&& of, S* to) const {
  const auto at = [&](int i) { return isInside && i >= firstCounted && i < endCounted ? of(line[i]) : S(); };
  if (width < columns) {
    for (int c = 0; c < columns; ++c) {
      to[c] = S();
      for (int i = c; i < c + width; ++i) to[c] += at(i);
    }
    return;
  }
  S before = common, after;
  to[columns - 1] = before;
  for (int c = columns - 2; c >= 0; --c) to[c] = before += at(c);
  for (int c = 1; c < columns; ++c) to[c] += after += at(width + c - 1);
}

void FixedProducts::addTile(int k, int rows, lanes::FixedCounts& met) {
  if (ranges) addRange(k, rows, met);
  if (!masks.empty()) addLossy(k, rows, met);
}

void FixedProducts::addRange(int k, int rows, lanes::FixedCounts& met) {
  const std::int64_t* tap = filter->data();
  for (int j = 0; j < filterRows; ++j) {
    std::fill(all.begin(), all.end(), Extremes());
    for (int r = 0; r < rows; ++r) {
      const Extremes* const line = extremes.data() + place(k + j + r);
      for (int c = 0; c < columns; ++c) all[sizeOf(c)] += line[c];
    }
    for (const Extremes& e : all) {
      const std::int64_t h = *tap++;
      if (e.least > e.greatest) continue;  // nothing counts
      const std::int64_t a = productOf(e.least, h), b = productOf(e.greatest, h);
      met.least = std::min({met.least, a, b});
      met.greatest = std::max({met.greatest, a, b});
    }
  }
}

std::int64_t FixedProducts::productOf(std::int64_t value, std::int64_t tap) const {
  const std::int64_t exact = value * tap;
  if (form == lanes::FixedForm::exact) return append < 0 ? exact >> -append : exact << append;
  return roundBy(rounder, exact);
}

void FixedProducts::addLossy(int k, int rows, lanes::FixedCounts& met) {
  for (std::size_t m = 0; m < masks.size(); ++m) {
    std::fill(running.begin(), running.end(), 0);
    const auto add = [&](int line, int sign) {
      const Number* const number = lossy[m].data() + place(line);
      for (int c = 0; c < columns; ++c) running[sizeOf(c)] += sign * std::int64_t{number[c].count};
    };
    for (int r = 0; r < rows; ++r) add(k + r, 1);
    for (int j = 0; j < filterRows; ++j) {
      for (int c = 0; c < columns; ++c) {
        if (maskOf[sizeOf(j * columns + c)] == static_cast<int>(m)) {
          met.lossy += static_cast<std::uint64_t>(running[sizeOf(c)]);
        }
      }
      if (j + 1 < filterRows) add(k + j, -1), add(k + j + rows, 1);
    }
  }
}

}  // namespace BP
