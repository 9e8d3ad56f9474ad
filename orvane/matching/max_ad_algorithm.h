#pragma once

#include <memory>
#include <type_traits>

#include "orvane/algorithm/collector.h"
#include "orvane/core/clever_ptr.h"
#include "orvane/core/element.h"
#include "orvane/matching/difference_algorithm.h"
#include "orvane/matching/pair_walk.h"
#include "orvane/plan/output.h"
#include "orvane/plan/sector.h"

namespace BP {

/// Maximum absolute difference of a template t and the image window a under it.
///
///     score = greatest of (a - t where a > t, else t - a)
///
/// Complex elements and differences compare by squared magnitude. The score is the greatest complex difference, the
/// first one of equals. Booleans give 1 if any element disagrees, else 0. Scores have type YT.
template <class AllocT, class BlockT, class InputT, class YT, class UT>
class MaxADAlgorithm : public DifferenceAlgorithm<AllocT, BlockT, InputT, YT, UT, lanes::Term::greatestDifference> {
 public:
  using Base = DifferenceAlgorithm<AllocT, BlockT, InputT, YT, UT, lanes::Term::greatestDifference>;

  using Out = Output<YT, AllocT>;

  MaxADAlgorithm(AllocT* alloc, BlockT* filterBlock, InputT* in)
      : Base(alloc, filterBlock, in), maxCollector(std::make_unique<MaxCollector<AllocT, YT>>(alloc)) {
    alloc->allocateArray(imageValue, 1, "accumulator");
    alloc->allocateArray(templateValue, 1, "accumulator");
  }

  /// The score of the window whose first image element has linear index `imageIndex`.
  void scoreAt(const InsideSector& /*region*/, Out& y1, int imageIndex) {
    YT& score = elementAt(y1.getBlock().getData().ptr, 0);
    if constexpr (std::is_same_v<UT, bool>) {
      scoreBooleans(score, imageIndex);
    } else {
      maxCollector->setHasValue(false);
      forEachPair(this->input->getBlock(), *this->filter, imageIndex, [&](auto& a, auto& t) {
        takeDifference(score, a, t);
        feed(*maxCollector, score);
      });
      assign(score, elementAt(maxCollector->getValue().ptr, 0));
    }
  }

 private:
  template <class HT>
  void takeDifference(YT& score, UT& a, HT& t) {
    orientedDifference(score, a, t);
  }
  /// Fixed point casts both values into the accumulator's type before the comparison.
  void takeDifference(Fixpt& score, Fixpt& a, Fixpt& t) {
    Fixpt &image = elementAt(imageValue.ptr, 0), &pattern = elementAt(templateValue.ptr, 0);
    image = a;
    pattern = t;
    if (image > pattern) {
      image -= pattern;
      pattern = image;
    } else {
      pattern -= image;
    }
    score = pattern;
  }

  /// The walk ends at the first disagreement.
  void scoreBooleans(YT& score, int imageIndex) {
    YT &disagrees = elementAt(imageValue.ptr, 0), &one = elementAt(templateValue.ptr, 0);
    disagrees = 0;
    one = 1;
    const auto& image = this->input->getBlock();
    const bool *u = image.getData().ptr + imageIndex, *h = this->filter->getData().ptr;
    const int width = this->filter->getEnd().ptr[0] + 1, height = this->filter->getEnd().ptr[1] + 1;
    bool differs = false;
    for (int j = 0; j < height && !differs; ++j, u += image.getStrides().ptr[1], h += width) {
      for (int i = 0; i < width && !differs; ++i) differs = u[i] != h[i];
    }
    if (differs) disagrees = one;
    score = disagrees;
  }

  std::unique_ptr<MaxCollector<AllocT, YT>> maxCollector;
  CleverPtr<YT> imageValue;
  CleverPtr<YT> templateValue;
};

}  // namespace BP
