#pragma once

#include "orvane/core/enums.h"
#include "orvane/core/stored.h"
#include "orvane/platform/export.h"

namespace BP {

class AnyPlan;

/// A box of positions: the first one and the extents, in tables with an entry per dimension that stay the maker's.
/// Without tables it stands for all positions.
struct PositionBox {
  const int* loc = nullptr;
  const int* dims = nullptr;

  bool exists() const { return loc != nullptr; }
};

/// Abstract root of the processors. A processor filters arrays that its maker owns.
///
/// `setup` runs one stage at a time. No object remembers which stages have run, and a stage can be repeated.
///
/// A run can be cut into bands of output positions: `beginRun`, then `runBand` for each of them. Several processors
/// over the same arrays can share the bands of a run, each in a thread of its own. A run has one phase or two. All
/// bands of the first phase come before those of the second, which reads what they have written.
class ORVANE_API AnyBP {
 public:
  AnyBP() = default;
  AnyBP(const AnyBP&) {}
  AnyBP& operator=(const AnyBP&) { return *this; }

  /// Runs one stage of set-up through all objects of the processor.
  virtual void setup(setupModeT mode) = 0;
  virtual ~AnyBP();
  /// One run over the input as it stands.
  virtual void invoke() = 0;
  /// Sets the value that the input yields beyond its edge. `value` points to one input element. A complex element has
  /// two components; with `isComplex` false only the real one is read.
  virtual void assignPadValue(const void* value, bool isComplex) = 0;
  /// Sets the strides of input and output for the next runs: tables with an entry per dimension, the first of them 1,
  /// that stay the caller's. Without a table, elements are dense.
  virtual void setStrides(const int* input, const int* output) = 0;
  /// Sets the types in which input and output lie in memory, for the next runs (see `Stored`). It takes effect at the
  /// next start.
  virtual void setStored(Stored input, Stored output) = 0;
  /// The number of outputs that were clipped to their stored type since the last call.
  virtual std::int64_t takeClipped() = 0;
  /// Restricts the outputs of later runs to the positions in `region`: the output array then holds just these. A box
  /// without tables lifts that.
  virtual void setRegion(const PositionBox& region) = 0;

  /// Begins a run: reads the window's elements as they stand.
  virtual void beginRun() = 0;
  /// The number of phases of the run that has begun.
  virtual int getPhaseCount() const { return 1; }
  /// Writes the box of positions that a phase computes into two tables. An extent below 1 stands for none.
  virtual void getPhaseBox(int phase, int* loc, int* dims) = 0;
  /// Computes those positions of a phase that lie in `band`. Positions count from the input's first element.
  virtual void runBand(int phase, const PositionBox& band) = 0;
  virtual const AnyBP* getBP() const;
};

/// Abstract root of the processors with one input and one output. A single-pass processor is its own first and
/// second pass.
class ORVANE_API AnyCorrelation : public AnyBP {
 public:
  /// Uses the array between the phases of `other`, a processor of the same class and extents, in place of its own.
  virtual void shareIntermediate(AnyCorrelation& /*other*/) {}
  virtual const AnyCorrelation* getConvCorr1() const;
  virtual const AnyCorrelation* getConvCorr2() const;
};

/// Abstract root of template matching.
class ORVANE_API AnyTemplateMatching : public AnyBP {
 public:
  virtual AnyPlan& getPlan() const = 0;

  /// An exhaustive search whose bands several processors share: `beginRun`, then `searchBand` for bands of positions at
  /// which the template lies inside the image, in ascending order at each processor. One of them then adopts the best
  /// of the others, one after the other, and finishes the search with the positions that are left and with the block of
  /// scores.
  ///
  /// `isFirst` tells that the band has the first position of all.
  virtual void searchBand(const PositionBox& band, bool isFirst) = 0;
  virtual void adoptBest(AnyTemplateMatching& other) = 0;
  virtual void finishSearch() = 0;
};

}  // namespace BP
