#pragma once

#include <memory>

#include "orvane/algorithm/algorithm.h"
#include "orvane/core/allocator_tolk.h"
#include "orvane/core/any_bp.h"
#include "orvane/core/clever_ptr.h"
#include "orvane/core/element_pairs.h"
#include "orvane/exec/kernel.h"
#include "orvane/exec/terminal_kernel.h"
#include "orvane/input/pad_extended_input.h"
#include "orvane/plan/block.h"
#include "orvane/plan/input.h"
#include "orvane/plan/moving_roi_plan.h"
#include "orvane/plan/output.h"
#include "orvane/plan/region.h"
#include "orvane/plan/scope.h"
#include "orvane/plan/window_tables.h"
#include "orvane/platform/export.h"

namespace BP {

/// What processors that slide one window over a padded input have in common: geometry, set-up, run.
///
/// Which positions have an output says the output mode (see `OutputModeEnum`), what the input yields beyond its edge
/// the pad type (see `PadTypeEnum`). Element (i0, i1) of an array stands at i0 + i1 * extent[0]: dimension 0 is
/// contiguous. Tables have an entry for each of `nDims` dimensions; with less than 2 a run does nothing. The walk
/// covers dimensions 0 and 1: with more, the first plane of the input is filtered with the first plane of the window
/// into the first plane of the output.
///
/// UT and YT are the element types of input and output. Arguments belong to the caller, may be rebound between runs,
/// and must outlive the object. Nothing is checked; without an algorithm a processor does nothing. One thread at a
/// time. After construction a run allocates small temporaries of sectors only.
///
/// A derived class makes its window, an algorithm if it knows one for its arguments, and then the plan.
template <class UT, class YT, class AllocT>
class ORVANE_API WindowProcessor : public AnyCorrelation {
 public:
  void setup(setupModeT mode) override;
  ~WindowProcessor() override;
  void invoke() override;
  void assignPadValue(const void* value, bool isComplex) override;
  virtual AnyPlan& getPlan() const;

  /// Works the region of support out from the extents.
  void computeROS();
  /// Places window and input, and works the region of support out.
  void initializeParameters();
  Output<YT, AllocT>& getY() { return *y; }

  /// Called by the plan: has the kernel run one sector.
  void runSector(InsideSector& sector);
  void runSector(BoundarySector& sector);
  void runSector(OutsideSector& sector);

 protected:
  using Out = Output<YT, AllocT>;

  WindowProcessor(AllocT* allocator, int nDims, CleverPtr<int>& hDims, CleverPtr<int>& uDims, OutputModeEnum outputMode,
                  CleverPtr<int>& hCentre, CleverPtr<UT>& u, CleverPtr<YT>& y, const Region* regionOfInterest);

  /// Makes the window, a `TraversableBlock` or one with elements, which come last among its arguments.
  template <class BlockT, class... ElementsT>
  BlockT* makeWindow(ElementsT&&... elements);
  /// Makes algorithm `AlgoT` over `window`, with the input that it reads and the kernel that runs it.
  template <class AlgoT, class BlockT>
  void makeAlgorithm(BlockT* window);
  void makePlan(bool isHgtU);

  AllocT* allocator;
  std::unique_ptr<Input<UT, YT, AllocT>> input;
  int nDims;
  CleverPtr<int>& hDims;

 private:
  OutputModeEnum outputMode;
  WindowTables tables;
  CleverPtr<int>& hCentre;
  CleverPtr<int>& uDims;
  CleverPtr<UT>& uData;
  CleverPtr<YT>& yData;
  CleverPtr<YT> y1Data;
  std::unique_ptr<RestrictedRegion> rosRegion;
  std::unique_ptr<UnrestrictedRegion> allRegion;
  std::unique_ptr<Scope> scope;
  std::unique_ptr<Out> y;
  std::unique_ptr<Out> y1;
  std::unique_ptr<TraversableBlock> windowBlock;
  std::unique_ptr<Algorithm<AllocT>> algorithm;
  std::unique_ptr<Kernel<Out, AllocT>> kernel;
  std::unique_ptr<MovingROIPlan<UT, YT, AllocT>> plan;
};

template <class UT, class YT, class AllocT>
template <class BlockT, class... ElementsT>
BlockT* WindowProcessor<UT, YT, AllocT>::makeWindow(ElementsT&&... elements) {
  std::unique_ptr<BlockT> block;
  if constexpr (sizeof...(elements) == 0) {
    block = std::make_unique<BlockT>(nDims, hDims, tables.hOrigin, tables.hLoc, tables.hStart, tables.hEnd);
  } else {
    block = std::make_unique<BlockT>(allocator, nDims, hDims, tables.hOrigin, tables.hLoc, tables.hStart, tables.hEnd,
                                     elements...);
  }
  BlockT* const window = block.get();
  windowBlock = std::move(block);
  return window;
}

template <class UT, class YT, class AllocT>
template <class AlgoT, class BlockT>
void WindowProcessor<UT, YT, AllocT>::makeAlgorithm(BlockT* window) {
  using InputT = typename AlgoT::InputType;
  auto paddedInput = std::make_unique<InputT>(allocator, nDims, uDims, tables.uOrigin, tables.uLoc, uData);
  auto made = std::make_unique<AlgoT>(allocator, window, paddedInput.get());
  kernel = std::make_unique<TerminalKernel<Out, AlgoT, AllocT>>(allocator, y1.get(), made.get());
  algorithm = std::move(made);
  input = std::move(paddedInput);
}

#define ORVANE_DECLARE(UT, YT) extern template class WindowProcessor<UT, YT, AllocatorTolk>;
ORVANE_FOR_ELEMENT_PAIRS(ORVANE_DECLARE)
#undef ORVANE_DECLARE

}  // namespace BP
