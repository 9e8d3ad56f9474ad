#pragma once

#include <algorithm>
#include <complex>
#include <cstddef>
#include <cstdint>
#include <type_traits>
#include <vector>

#include "orvane/algorithm/run_limits.h"
#include "orvane/lanes/sums.h"
#include "orvane/plan/block.h"

namespace BP {

/// Sums of products, plain or normalised, or of differences, of many outputs at once: a filter as the vector lanes want
/// it. The sums and their order are those of the plain loop.
///
/// HT, UT and YT are the plain element types of filter, input and output. The filter's elements are read once in each
/// run, at the first call of `compute`.
template <class HT, class UT, class YT, int normalise, lanes::Term term = lanes::Term::product>
class LaneSums {
 public:
  using InputElement = UT;
  using OutputElement = YT;
  using Real = decltype(std::real(YT()));
  using Run = lanes::Run<Real>;
  using Limits = RunLimits;
  /// The most outputs in a row of a run.
  static constexpr int maxWidth = RunLimits::lineBytes / static_cast<int>(sizeof(UT));

  /// Takes the filter's extents, the first `rank` of them, and makes all room.
  void resize(const Block& filter, int rank);
  /// Begins a run with these elements, which the sums take in the opposite order if `reversed`; `norm` is that of the
  /// filter, for normalised sums. Elements that have changed take effect.
  void begin(const HT* taps, bool reversed, const YT* norm) {
    elements = taps;
    isReversed = reversed;
    filterNorm = norm;
    packedForms = 0;
  }

  /// Whether the lanes take the filter: it has an element, and not too many.
  bool isReady() const { return extents.planes > 0; }
  /// Whether they take it turned as well.
  bool getCanTurn() const { return canTurn; }
  const lanes::FilterExtents& getExtents() const { return extents; }
  /// Areas of fewer outputs along dimension 0 are turned, if they are higher than wide.
  static constexpr int getNarrow() { return Limits::narrow; }

  /// Computes a run of up to `RunLimits` outputs. `turned`: filter rows are planes and filter columns are rows.
  void compute(bool turned, const Run& run);

 private:
  static constexpr bool isComplex(const std::complex<Real>*) { return true; }
  static constexpr bool isComplex(const Real*) { return false; }
  static constexpr bool inputIsComplex = isComplex(static_cast<const UT*>(nullptr));
  static constexpr bool filterIsComplex = isComplex(static_cast<const HT*>(nullptr));
  static constexpr lanes::Elements kind =
      inputIsComplex ? (filterIsComplex ? lanes::Elements::complexComplex : lanes::Elements::complexReal)
                     : (filterIsComplex ? lanes::Elements::realComplex : lanes::Elements::realReal);
  struct Form {
    std::vector<Real> taps;
    lanes::PackedFilter<Real> filter;
    void resize(const lanes::FilterExtents& formExtents) {
      taps.resize(lanes::PackedFilter<Real>::sizeFor(kind, formExtents, term));
      filter = {kind, formExtents, taps.data(), term};
    }
  };

  const lanes::PackedFilter<Real>& packed(bool turned);

  lanes::FilterExtents extents{0, 0, 0};
  Form forms[2];  // upright, turned
  bool canTurn = false;
  int packedForms = 0;
  const HT* elements = nullptr;
  bool isReversed = false;
  const YT* filterNorm = nullptr;
};

template <class HT, class UT, class YT, int normalise, lanes::Term term>
void LaneSums<HT, UT, YT, normalise, term>::resize(const Block& filter, int rank) {
  const int* dims = filter.getDims().ptr;
  extents = {0, 0, 0};
  if (rank < 1 || std::any_of(dims, dims + rank, [](int extent) { return extent < 1; })) return;
  std::int64_t count = 1;
  for (int d = 0; d < rank; ++d) count = std::min(count * dims[d], RunLimits::taps + 1);
  if (count > RunLimits::taps) return;
  extents = {1, rank > 1 ? dims[1] : 1, dims[0]};
  for (int d = 2; d < rank; ++d) extents.planes *= dims[d];
  canTurn = count <= RunLimits::turnedTaps;
  forms[0].resize(extents);
  if (canTurn) forms[1].resize({extents.planes * extents.rows, extents.columns, 1});
}

template <class HT, class UT, class YT, int normalise, lanes::Term term>
const lanes::PackedFilter<typename LaneSums<HT, UT, YT, normalise, term>::Real>&
LaneSums<HT, UT, YT, normalise, term>::packed(bool turned) {
  const int bit = turned ? 2 : 1;
  lanes::PackedFilter<Real>& filter = forms[turned ? 1 : 0].filter;
  if ((packedForms & bit) == 0) filter.pack(reinterpret_cast<const Real*>(elements), isReversed);
  packedForms |= bit;
  return filter;
}

template <class HT, class UT, class YT, int normalise, lanes::Term term>
void LaneSums<HT, UT, YT, normalise, term>::compute(bool turned, const Run& run) {
  const lanes::PackedFilter<Real>& filter = packed(turned);
  if constexpr (term != lanes::Term::product) {
    filter.sumDifferences(run);
  } else if constexpr (normalise == 0) {
    filter.sumProducts(run);
  } else {
    filter.sumNormalised(run, std::real(*filterNorm));
  }
}

}  // namespace BP
