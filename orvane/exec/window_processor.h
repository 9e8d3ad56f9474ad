#pragma once

#include <memory>

#include "orvane/algorithm/algorithm.h"
#include "orvane/core/allocator_tolk.h"
#include "orvane/core/any_bp.h"
#include "orvane/core/clever_ptr.h"
#include "orvane/core/element_pairs.h"
#include "orvane/exec/kernel.h"
#include "orvane/plan/block.h"
#include "orvane/plan/input.h"
#include "orvane/plan/moving_roi_plan.h"
#include "orvane/plan/output.h"
#include "orvane/plan/region.h"
#include "orvane/plan/scope.h"
#include "orvane/plan/window_tables.h"
#include "orvane/platform/export.h"

namespace BP {

/// A correlation that can show its plan, as template matching can.
class ORVANE_API PlannedCorrelation : public AnyCorrelation {
 public:
  virtual AnyPlan& getPlan() const = 0;
};

/// The root of a processor with a plan.
template <class RootT>
struct PlannedRoot {
  using type = RootT;
};
template <>
struct PlannedRoot<AnyCorrelation> {
  using type = PlannedCorrelation;
};

/// What processors that slide one window over a padded input have in common: geometry, set-up, run.
///
/// The output mode says which positions have an output (see `OutputModeEnum`). The pad type says what the input yields
/// beyond its edge (see `PadTypeEnum`). Element (i0, i1) of an array is at i0 + i1 * extent[0], or has strides of its
/// own (see `setStrides`): dimension 0 is contiguous. Tables have an entry for each of `nDims` dimensions. A run with
/// fewer than 2 dimensions does nothing. The walk covers dimensions 0 and 1. With more dimensions, the first plane of
/// the input is filtered with the first plane of the window into the first plane of the output.
///
/// RootT is the base class, `AnyCorrelation` or `AnyTemplateMatching`; UT and YT are the element types of input and
/// output. The caller owns the arguments and may rebind them between runs; they must outlive the object. Nothing is
/// checked. A processor without an algorithm does nothing. One thread at a time uses a processor. After construction a
/// run only allocates small temporaries for each sector.
///
/// A derived class makes its window, then an algorithm if its arguments name one, then the plan.
template <class RootT, class UT, class YT, class AllocT>
class ORVANE_API WindowProcessor : public PlannedRoot<RootT>::type {
 public:
  void setup(setupModeT mode) override;
  ~WindowProcessor() override;
  void invoke() override;
  void assignPadValue(const void* value, bool isComplex) override;
  AnyPlan& getPlan() const override;
  void setStrides(const int* inputStrides, const int* outputStrides) override;
  void setStored(Stored inputType, Stored outputType) override;
  std::int64_t takeClipped() override { return y->getBlock().takeClipped(); }
  void setRegion(const PositionBox& region) override;
  void beginRun() override;
  void getPhaseBox(int phase, int* loc, int* dims) override;
  void runBand(int phase, const PositionBox& band) override;

  /// hStart := 0, and hEnd := hStart + hDims - 1.
  void computeHStart() { tables.computeHStart(nDims); }
  void computeHEnd() { tables.computeHEnd(nDims, hDims); }
  /// Computes the region of support from the extents.
  void computeROS() { tables.computeROS(outputMode, nDims, hDims, uDims); }
  /// Places window and input, and computes the region of support.
  void initializeParameters();
  Output<YT, AllocT>& getY() { return *y; }
  /// The input; null for a pad type out of range.
  Input<UT, YT, AllocT>* getInput() { return input.get(); }

  /// Called by the plan: has the kernel run one sector.
  template <class SectorT>
  void runSector(SectorT& sector) {
    if (kernel) kernel->run(sector, plan->getOutput());
  }

 protected:
  using Out = Output<YT, AllocT>;

  WindowProcessor(AllocT* allocator, int nDims, CleverPtr<int>& hDims, CleverPtr<int>& uDims, OutputModeEnum outputMode,
                  CleverPtr<int>& hCentre, CleverPtr<UT>& u, CleverPtr<YT>& y, const Region* regionOfInterest);

  /// Makes the window: a `TraversableBlock`, or a block with elements, which are its last arguments.
  template <class BlockT, class... ElementsT>
  BlockT* makeWindow(ElementsT&&... elements);
  template <class InputT>
  InputT* makeInput();
  /// Makes algorithm `AlgoT` over `window`, which reads `in`, and the kernel that runs it.
  template <class AlgoT, class BlockT>
  void makeAlgorithm(BlockT* window, typename AlgoT::InputType* in);
  /// Restricts the outputs also to the positions of `region`.
  void restrictTo(const Region& region);
  void makePlan(bool isHgtU);

  /// One pass: begins a run, and has `processor` run each sector of `target` within `targetScope`.
  template <class ProcessorT>
  void runPass(ProcessorT* processor, Out& target, const Scope& targetScope);
  /// The same of a run that has begun, for the sectors in `band`. With fewer than two dimensions there is only the
  /// set-up, because kernels read the first two entries of every table.
  template <class ProcessorT>
  void runSectors(ProcessorT* processor, Out& target, const Scope& targetScope, const PositionBox& band);

  AllocT* allocator;
  std::unique_ptr<Input<UT, YT, AllocT>> input;  ///< null for a pad type out of range
  int nDims;
  CleverPtr<int>& hDims;
  WindowTables tables;
  std::unique_ptr<Scope> scope;
  std::unique_ptr<Out> y;
  std::unique_ptr<Kernel<Out, AllocT>> kernel;  ///< null without an algorithm
  std::unique_ptr<MovingROIPlan<UT, YT, AllocT>> plan;

 private:
  OutputModeEnum outputMode;
  CleverPtr<int>& hCentre;
  CleverPtr<int>& uDims;
  CleverPtr<UT>& uData;
  CleverPtr<YT>& yData;
  CleverPtr<YT> y1Data;
  std::unique_ptr<RestrictedRegion> rosRegion;
  std::unique_ptr<UnrestrictedRegion> allRegion;
  CleverPtr<int> boxDims, boxLoc;
  std::unique_ptr<RestrictedRegion> boxRegion;
  std::unique_ptr<Out> y1;
  std::unique_ptr<TraversableBlock> windowBlock;
  std::unique_ptr<Algorithm<AllocT>> algorithm;
};

#define ORVANE_DECLARE(UT, YT) extern template class WindowProcessor<AnyCorrelation, UT, YT, AllocatorTolk>;
ORVANE_FOR_ELEMENT_PAIRS(ORVANE_DECLARE)
#undef ORVANE_DECLARE
#define ORVANE_DECLARE(UT, YT) extern template class WindowProcessor<AnyTemplateMatching, UT, YT, AllocatorTolk>;
ORVANE_FOR_MATCHING_PAIRS(ORVANE_DECLARE)
#undef ORVANE_DECLARE

}  // namespace BP
