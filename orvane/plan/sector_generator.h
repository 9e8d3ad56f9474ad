#pragma once

#include <vector>

#include "orvane/plan/sector.h"
#include "orvane/platform/export.h"

namespace BP {

class Margins;

/// The odometer that turns out the section combinations of one kind of sector, dimension 0 fastest.
///
/// A combination is one section per dimension, read from the counters through a table. All four kinds are the same
/// odometer with other numbers:
///
///     kind      table       counters start at                     step  carry at  reset to
///     inside    0 1 2 3 4   all 0                                  -     -         -        (one combination)
///     boundary  0 1 2 3 4   all 0, the first 1 unless oversize     1     3         0
///     outside   0 1 3 2 4   all 0, the first 2                     2     5         0
///     mixed k   0 1 3 2 4   all 1, number k 2                      2     5         its start
class ORVANE_API SectorGenerator {
 public:
  static SectorGenerator inside(int numDims);
  /// `withCentre`: begin with the combination of all centres, for a filter that exceeds the input.
  static SectorGenerator boundary(int numDims, bool withCentre);
  static SectorGenerator outside(int numDims);
  /// One pass for each dimension, outside sections in that one and boundary sections in all others; `startPass` first.
  static SectorGenerator mixed(int numDims);
  /// Begins the mixed pass of dimension `k`.
  void startPass(int k);

  /// Section code of dimension `d` in the present combination.
  int section(int d) const;
  /// Goes to the next combination; false when there is none.
  bool next();

 private:
  SectorGenerator(const int* table, int numDims, int first, int step, int carry);

  const int* table;
  std::vector<int> counters;
  std::vector<int> resets;
  int step;
  int carry;
};

/// Writes the rectangle of the generator's present combination into `sector`; false, and nothing written, if it has
/// no position. `margins` points to the first of five, one for each section code.
ORVANE_API bool fillSector(Sector& sector, const SectorGenerator& generator, const Margins* margins);

/// The same with the edge lists; `overlaps[d]` tells where a centre section crosses both edges.
ORVANE_API bool fillSector(OuterSector& sector, const SectorGenerator& generator, const Margins* margins,
                           const bool* overlaps);

}  // namespace BP
