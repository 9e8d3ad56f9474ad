#pragma once

#include <vector>

#include "orvane/plan/sector.h"
#include "orvane/platform/export.h"

namespace BP {

class Margins;

/// An odometer over the section combinations of one kind of sector; dimension 0 changes fastest.
///
/// A combination has one section per dimension: the entry of a table at the dimension's counter. The four kinds differ
/// only in these numbers:
///
///     kind      table       counters start at                     step  carry at  reset to
///     inside    0 1 2 3 4   all 0                                  -     -         -        (one combination)
///     boundary  0 1 2 3 4   all 0, the first 1 unless oversize     1     3         0
///     outside   0 1 3 2 4   all 0, the first 2                     2     5         0
///     mixed k   0 1 3 2 4   all 1, number k 2                      2     5         its start
class ORVANE_API SectorGenerator {
 public:
  static SectorGenerator inside(int numDims);
  /// `withCentre` begins with the combination of all centres, for a filter that exceeds the input.
  static SectorGenerator boundary(int numDims, bool withCentre);
  static SectorGenerator outside(int numDims);
  /// One pass for each dimension, with outside sections in that one and boundary sections in all others. Call
  /// `startPass` before each pass.
  static SectorGenerator mixed(int numDims);
  /// Begins the mixed pass of dimension `k`.
  void startPass(int k);

  /// Section code of dimension `d` in the present combination.
  int section(int d) const;
  /// Goes to the next combination. Returns false if there is none.
  bool next();

 private:
  SectorGenerator(const int* table, int numDims, int first, int step, int carry);

  const int* table;
  std::vector<int> counters;
  std::vector<int> resets;
  int step;
  int carry;
};

/// Writes the rectangle of the generator's present combination into `sector`. Returns false, and writes nothing, if it
/// has no position. `margins` points to the first of five, one for each section code.
ORVANE_API bool fillSector(Sector& sector, const SectorGenerator& generator, const Margins* margins);

/// The same with the edge lists. `overlaps[d]` tells that windows of the centre section cross both edges of dimension
/// d.
ORVANE_API bool fillSector(OuterSector& sector, const SectorGenerator& generator, const Margins* margins,
                           const bool* overlaps);

}  // namespace BP
