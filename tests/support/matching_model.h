#pragma once

#include <algorithm>
#include <complex>
#include <vector>

#include "orvane/matching/template_matching.h"
#include "tests/support/conv_corr_model.h"

/// What template matching means, written down once more: scores window by window, searches position by position.
namespace BP::test {

template <class YT>
auto magnitude(YT v) {
  if constexpr (IsComplex<YT>::value) {
    return sum(product(v.real(), v.real()), product(v.imag(), v.imag()));
  } else {
    return v;
  }
}

/// The score of a window whose first element has linear index `index`, in the type YT of scores itself.
struct PlainWindowScore {
  template <class YT>
  static YT term(YT a, YT t) {
    return magnitude(a) > magnitude(t) ? a - t : t - a;
  }

  template <class Model, class YT = typename Model::Score>
  YT operator()(const Model& m, int index) const {
    YT score{};
    bool any = false;
    const int count = m.hDims[0] * m.hDims[1];
    for (int k = 0; k < count; ++k) {
      const auto a = m.imageAt(index, k);
      const auto t = m.h[static_cast<std::size_t>(k)];
      const YT d = term(YT(a), YT(t));
      switch (m.metric) {
        case AlgorithmModeSAD: score = score + d; break;
        case AlgorithmModeSSD: {
          const YT e = YT(a) - YT(t);
          if constexpr (IsComplex<YT>::value) {
            score = score + complexProduct(e, e);
          } else {
            score = sum(product(e, e), score);
          }
          break;
        }
        case AlgorithmModeMaxAD:
          if (!any || magnitude(d) > magnitude(score)) score = d;
          any = true;
          break;
        default: addProduct(score, a, m.h[static_cast<std::size_t>(count - 1 - k)]);
      }
    }
    return score;
  }
};

/// A matching problem in two dimensions and what its calls leave behind.
template <class HT, class UT, class YT, class WindowScore = PlainWindowScore>
struct MatchingModel {
  using Score = YT;

  int hDims[2], uDims[2];
  std::vector<HT> h;
  std::vector<UT> u;
  OutputModeEnum outputMode = OutputModeValid;
  AlgorithmModeEnum metric = AlgorithmModeSAD;
  TMModeEnum mode = TMModeMetric;
  SearchMethodEnum search = SearchMethodExhaustive;
  bool hasRoi = false;
  int roi[4] = {0, 0, 0, 0};  // start, then size
  int edge = 3;               // of the neighbourhood

  std::vector<YT> map, block;
  int location[2] = {0, 0};
  bool blockValid = false, roiValid = false;
  int passMode = -1;
  WindowScore windowScore;

  struct Rect {
    int lo[2], size[2];
    bool isEmpty() const { return size[0] < 1 || size[1] < 1; }
  };

  int centre(int d) const { return hDims[d] % 2 == 1 ? hDims[d] / 2 : hDims[d] / 2 - 1; }

  Rect support() const {
    Rect r{};
    for (int d = 0; d < 2; ++d) {
      r.lo[d] = outputMode == OutputModeSame ? 0 : centre(d) - (outputMode == OutputModeFull ? hDims[d] - 1 : 0);
      r.size[d] = uDims[d] + (outputMode == OutputModeValid  ? 1 - hDims[d]
                              : outputMode == OutputModeFull ? hDims[d] - 1
                                                             : 0);
    }
    return r;
  }

  /// The positions of a call; where ROS and ROI do not meet, none, at the ROI's start.
  Rect positions() const {
    Rect r = support();
    if (!hasRoi) return r;
    Rect met{};
    for (int d = 0; d < 2; ++d) {
      met.lo[d] = std::max(r.lo[d], roi[d]);
      met.size[d] = std::min(r.lo[d] + r.size[d], roi[d] + roi[2 + d]) - met.lo[d];
    }
    if (met.isEmpty()) std::copy(roi, roi + 2, met.lo);
    return met;
  }

  static bool within(const Rect& inner, const Rect& outer) {
    bool inside = true;
    for (int d = 0; d < 2; ++d) {
      inside = inside && inner.lo[d] >= outer.lo[d] && inner.lo[d] + inner.size[d] <= outer.lo[d] + outer.size[d];
    }
    return inside;
  }

  /// How the window at a position meets the input's edges in a dimension: 0 not or both, 1 the low one, 2 the high one.
  int section(int d, int position) const {
    const int first = position - centre(d), last = first + hDims[d] - 1;
    const bool low = first < 0, high = last >= uDims[d];
    return low == high ? 0 : low ? 1 : 2;
  }
  bool isInside(int x, int y) const {
    return x >= centre(0) && x - centre(0) + hDims[0] <= uDims[0] && y >= centre(1) &&
           y - centre(1) + hDims[1] <= uDims[1];
  }

  /// The image element over element `k` of the template, in the window whose first element has this linear index.
  UT imageAt(int index, int k) const {
    return u[static_cast<std::size_t>(index + k % hDims[0] + uDims[0] * (k / hDims[0]))];
  }
  YT scoreFrom(int index) const { return windowScore(*this, index); }
  YT scoreAt(int x, int y) const {
    return isInside(x, y) ? scoreFrom(x - centre(0) + uDims[0] * (y - centre(1))) : YT(0);
  }

  struct Best {
    bool any = false;
    YT score{};
    void take(YT s, int x, int y, int (&at)[2]) {
      if (!any || magnitude(score) > magnitude(s)) {
        any = true;
        score = s;
        kept[0] = x;
        kept[1] = y;
      }
      std::copy(kept, kept + 2, at);
    }
    int kept[2] = {0, 0};
  };

  /// Calls `visit(isInside, rectangle)` for the sectors of `r` in their order.
  template <class VisitT>
  void forEachSector(const Rect& r, VisitT&& visit) const {
    const bool exceeds = hDims[0] > uDims[0] || hDims[1] > uDims[1];
    const bool insideOnly = outputMode == OutputModeValid;
    for (int code = 0; code < (insideOnly ? 1 : 9); ++code) {
      if (insideOnly && exceeds) return;
      Rect sector{};
      for (int d = 0; d < 2; ++d) {
        const int wanted = d == 0 ? code % 3 : code / 3;
        for (int p = r.lo[d]; p < r.lo[d] + r.size[d]; ++p) {
          if (section(d, p) != wanted) continue;
          if (sector.size[d]++ == 0) sector.lo[d] = p;
        }
      }
      if (!sector.isEmpty()) visit(code == 0 && !exceeds, sector);
    }
  }

  void call() {
    if (passMode < 0) passMode = mode;
    const Rect ros = support(), wanted = positions();
    roiValid = hasRoi && within({{roi[0], roi[1]}, {roi[2], roi[3]}}, ros);
    if (passMode != 0) location[0] = location[1] = 0;
    if (hasRoi && (roi[2] <= 0 || roi[3] <= 0)) {
      roiValid = false;
      if (passMode == 2) {
        blockValid = false;
        block.assign(block.size(), YT(0));
      }
      return;
    }
    passMode = mode;
    if (mode == TMModeMetric) return writeMap(wanted);
    searchBest(wanted);
    for (int d = 0; d < 2; ++d) location[d] += wanted.lo[d];
    if (mode == TMModeBestMatchNeighborhood) writeBlock(ros);
  }

  void writeMap(const Rect& r) {
    if (r.isEmpty()) return;
    const bool exceeds = hDims[0] > uDims[0] || hDims[1] > uDims[1];
    if (exceeds && outputMode == OutputModeValid) return;
    for (int j = 0; j < r.size[1]; ++j) {
      for (int i = 0; i < r.size[0]; ++i) {
        map[static_cast<std::size_t>(i + r.size[0] * j)] = scoreAt(r.lo[0] + i, r.lo[1] + j);
      }
    }
  }

  void writeBlock(const Rect& ros) {
    Rect r{{0, 0}, {edge, edge}};
    for (int d = 0; d < 2; ++d) r.lo[d] = location[d] - (edge % 2 == 1 ? edge / 2 : edge / 2 - 1);
    blockValid = within(r, ros) && (!hasRoi || within(r, {{roi[0], roi[1]}, {roi[2], roi[3]}}));
    for (int k = 0; k < edge * edge; ++k) {
      block[static_cast<std::size_t>(k)] = scoreAt(r.lo[0] + k % edge, r.lo[1] + k / edge);
    }
    passMode = 0;
  }

  void searchBest(const Rect& r) {
    Best best;
    if (r.isEmpty()) return;
    forEachSector(r, [&](bool inside, const Rect& s) {
      const int lo[2] = {s.lo[0] - r.lo[0], s.lo[1] - r.lo[1]};
      const int hi[2] = {lo[0] + s.size[0] - 1, lo[1] + s.size[1] - 1};
      const auto take = [&](int x, int y) {
        const int index = x + r.lo[0] - centre(0) + uDims[0] * (y + r.lo[1] - centre(1));
        const int last = index + hDims[0] - 1 + uDims[0] * (hDims[1] - 1);
        if (inside && (index < 0 || last >= uDims[0] * uDims[1])) return;
        best.take(inside ? scoreFrom(index) : YT(0), x, y, location);
      };
      if (search == SearchMethodExhaustive) {
        for (int y = lo[1]; y <= hi[1]; ++y) {
          for (int x = lo[0]; x <= hi[0]; ++x) take(x, y);
        }
      } else {
        stepThrough(lo, hi, inside ? 0 : 1, take);
      }
    });
  }

  template <class TakeT>
  void stepThrough(const int (&lo)[2], const int (&hi)[2], int below, TakeT&& take) {
    int centres[2];
    for (int d = 0; d < 2; ++d) centres[d] = lo[d] + (hi[d] - lo[d]) / 2;
    int step = std::min((hi[0] - lo[0]) / 2, (hi[1] - lo[1]) / 2) / 2 + 1;
    for (; step > 0; --step) {
      int y = std::max(lo[1], centres[1] - step);
      for (int row = 0; row < 3; ++row) {
        int x = std::max(lo[0], centres[0] - step);
        for (int column = 0; column < 3; ++column) {
          take(x, y);
          x += step;
          while (x > hi[0] - below) --x;
        }
        y += step;
        while (y > hi[1] - below) --y;
      }
      for (int d = 0; d < 2; ++d) centres[d] = location[d] + lo[d];
    }
  }
};

}  // namespace BP::test
