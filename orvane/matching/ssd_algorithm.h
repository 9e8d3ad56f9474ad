#pragma once

#include <type_traits>

#include "orvane/core/clever_ptr.h"
#include "orvane/core/element.h"
#include "orvane/matching/difference_algorithm.h"
#include "orvane/matching/pair_walk.h"
#include "orvane/plan/output.h"
#include "orvane/plan/sector.h"

namespace BP {

/// Sum of squared differences of a template t and the image window a under it, in the order of the walk.
///
///     score = sum of (a - t)^2
///
/// Scores have type YT, in which all differences, squares and sums round. The square of a complex difference is the
/// complex one, without a conjugate, so a score can be negative or complex. Booleans count the elements that disagree.
template <class AllocT, class BlockT, class InputT, class YT, class UT>
class SSDAlgorithm : public DifferenceAlgorithm<AllocT, BlockT, InputT, YT, UT, lanes::Term::squaredDifference> {
 public:
  using Base = DifferenceAlgorithm<AllocT, BlockT, InputT, YT, UT, lanes::Term::squaredDifference>;

  SSDAlgorithm(AllocT* alloc, BlockT* filterBlock, InputT* in) : Base(alloc, filterBlock, in) {
    alloc->allocateArray(difference, 1, "accumulator");
    alloc->allocateArray(sum, 1, "accumulator");
  }

  /// The score of the window whose first image element has linear index `imageIndex`.
  void scoreAt(const InsideSector& /*region*/, Output<YT, AllocT>& y1, int imageIndex) {
    {
      RunningElement<YT> total(sum.ptr), d(difference.ptr);
      putZero(total.get());
      forEachPair(this->input->getBlock(), *this->filter, imageIndex, [&](auto& a, auto& t) {
        subtract(d.get(), a, t);
        if constexpr (std::is_same_v<UT, bool>) {
          add(total.get(), d.get());  // 0 or 1 is its own square
        } else {
          addSquare(total.get(), d.get());
        }
      });
    }
    assign(elementAt(y1.getBlock().getData().ptr, 0), elementAt(sum.ptr, 0));
  }

 private:
  CleverPtr<YT> difference;
  CleverPtr<YT> sum;
};

}  // namespace BP
