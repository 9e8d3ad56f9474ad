#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "orvane/core/element.h"
#include "orvane/exec/line_walk.h"
#include "orvane/median/selection_window.h"
#include "orvane/plan/block.h"
#include "orvane/plan/sector.h"

namespace BP {

class FixedMedianWalk;

/// Medians of fixed-point values on their raw integers, whose order is that of the values.
///
/// This needs integers of 8 or 16 bits that fill their containers, a window of an odd number of elements, an output of
/// the input's type, and an accumulator that holds all of its values. Then no cast rounds or overflows. Everything else
/// is left to the plain loop. The statistics of the output are those of the plain loop.
class FixedLaneMedians {
 public:
  using Walk = FixedMedianWalk;
  using Selection = MedianSelection<Fixpt, Fixpt>;

  /// `selection`, which knows the types of input and accumulator, stays the caller's.
  explicit FixedLaneMedians(const Selection& plain) : selection(plain) {}

  /// All room is that of the walk.
  void resize(const Block& /*filter*/) {}
  const Selection& getSelection() const { return selection; }

 private:
  const Selection& selection;
};

/// Walks the raw integers of fixed-point arrays, as `LineWalk` does.
class FixedMedianWalk {
 public:
  explicit FixedMedianWalk(FixedLaneMedians* medians) : lanes(medians) {}

  void resize(const Block& filter, const Block& input, int walkedRank);
  bool run(const LineSource<Fixpt>& source, const Sector& sector, const OuterSector* edges, const Block& filter,
           const Block& input, const Block& output, const LineTarget<Fixpt>& target);

  /// The walk for one type of integers.
  class Part;

 private:
  struct DeletePart {
    void operator()(Part* part) const;
  };

  FixedLaneMedians* lanes;
  std::unique_ptr<Part, DeletePart> part;
};

}  // namespace BP
