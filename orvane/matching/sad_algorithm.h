#pragma once

#include "orvane/core/clever_ptr.h"
#include "orvane/core/element.h"
#include "orvane/matching/difference_algorithm.h"
#include "orvane/matching/pair_walk.h"
#include "orvane/plan/output.h"
#include "orvane/plan/sector.h"

namespace BP {

/// Sum of absolute differences of a template t and the image window a under it, in the order of the walk.
///
///     score = sum of (a - t where a > t, else t - a)
///
/// Scores have type YT, in which all differences and sums round. Complex elements compare by squared magnitude and
/// their differences stay complex, so terms can cancel. Booleans count the elements that disagree.
template <class AllocT, class BlockT, class InputT, class YT, class UT>
class SADAlgorithm : public DifferenceAlgorithm<AllocT, BlockT, InputT, YT, UT, lanes::Term::absoluteDifference> {
 public:
  using Base = DifferenceAlgorithm<AllocT, BlockT, InputT, YT, UT, lanes::Term::absoluteDifference>;

  SADAlgorithm(AllocT* alloc, BlockT* filterBlock, InputT* in) : Base(alloc, filterBlock, in) {
    alloc->allocateArray(sum, 1, "accumulator");
    alloc->allocateArray(difference, 1, "accumulator");
  }

  /// The score of the window whose first image element has linear index `imageIndex`.
  void scoreAt(const InsideSector& /*region*/, Output<YT, AllocT>& y1, int imageIndex) {
    {
      RunningElement<YT> total(sum.ptr), d(difference.ptr);
      putZero(total.get());
      forEachPair(this->input->getBlock(), *this->filter, imageIndex, [&](auto& a, auto& t) {
        orientedDifference(d.get(), a, t);
        add(total.get(), d.get());
      });
    }
    assign(elementAt(y1.getBlock().getData().ptr, 0), elementAt(sum.ptr, 0));
  }

 private:
  CleverPtr<YT> sum;
  CleverPtr<YT> difference;
};

}  // namespace BP
