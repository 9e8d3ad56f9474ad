#pragma once

#include <memory>

#include "orvane/core/allocator.h"
#include "orvane/core/any_bp.h"
#include "orvane/core/clever_ptr.h"
#include "orvane/core/enums.h"
#include "orvane/correlation/correlation_algorithm.h"
#include "orvane/correlation/loop.h"
#include "orvane/correlation/nd_iterator.h"
#include "orvane/correlation/stationary_roi_plan.h"
#include "orvane/correlation/terminal_kernel_with_iterator.h"
#include "orvane/input/pad_extended_input.h"
#include "orvane/plan/block.h"
#include "orvane/plan/output.h"
#include "orvane/plan/region.h"
#include "orvane/plan/scope.h"
#include "orvane/plan/window_tables.h"
#include "orvane/platform/export.h"

namespace BP {

/// Correlation of an input u with a filter h into an output y, in any number of dimensions and without a host.
///
///     y(p) = sum over j of u(p + hLoc + j) * h(j)
///
/// with p the position of the filter's centre, hLoc minus the centre's index, and j running over the filter in storage
/// order, dimension 0 fastest: one sum in this order, every operation rounded once in the element type. Dimension 0 is
/// contiguous in each array; tables have `numDims` entries. The output mode says which positions have an output (see
/// `OutputModeEnum`). The pad type of `InputT` says what the input yields beyond its edge (see `PadTypeEnum`). With any
/// other output mode the caller writes the region of support before `setup(setupStart)`. Outputs whose windows miss the
/// input are then computed too, and all of them get one value: the pad's response for the window at the first position
/// of the sector that ran last.
///
/// Filter, input and output are of one type, `float` or `double`. The caller owns them and may change their contents
/// between runs. Calls: constructor, `setup(setupLinkTables)`, `setup(setupStart)` (again after a change of extents),
/// then for each run `setup(setupInvoke)` and `invoke()`. A run allocates nothing. `setup(setupAttachWork)` is for
/// hosts: it drops all tables, and nothing here can replace them. Nothing is checked. One thread at a time uses the
/// object.
template <class HT, class UT, class YT, class InputT, class AllocT>
class ORVANE_API Correlation : public AnyCorrelation {
 public:
  using Plan = StationaryROIPlan<UT, YT, AllocT>;

  /// `filterExceedsInput` tells that the filter is wider than the input in some dimension.
  Correlation(AllocT* allocator, int numDims, CleverPtr<int>& hDims, bool filterExceedsInput, CleverPtr<int>& uDims,
              OutputModeEnum outputMode, CleverPtr<int>& hCentre, CleverPtr<HT>& h, CleverPtr<UT>& u, CleverPtr<YT>& y);

  void setup(setupModeT mode) override;
  ~Correlation() override;
  void invoke() override;
  /// Sets the pad value to the element at `value`, and writes it to standard output in a line of its own.
  void assignPadValue(const void* value, bool isComplex) override;
  void setStrides(const int* inputStrides, const int* outputStrides) override;
  void setStored(Stored inputType, Stored outputType) override;
  std::int64_t takeClipped() override { return y.getBlock().takeClipped(); }
  void setRegion(const PositionBox& region) override;
  void beginRun() override;
  void getPhaseBox(int phase, int* loc, int* dims) override;
  void runBand(int phase, const PositionBox& band) override;
  virtual Plan& getPlan() const;

  /// Computes the region of support from the extents.
  void computeROS();
  /// Places filter and input, and computes the region of support.
  void initializeParameters();
  /// Run all sectors of one kind.
  void invokeInside();
  void invokeBoundary();
  void invokeOutside();

  /// The store of the pad value; writing to it prints nothing.
  CleverPtr<UT>& padValues() { return input.padValues(); }
  /// First position and extents of the region of support.
  CleverPtr<int>& getRosLoc() { return tables.rosLoc; }
  CleverPtr<int>& getRosDims() { return tables.rosDims; }

 private:
  using FilterBlock = TraversableDataBlock<HT, AllocT>;
  using Out = Output<YT, AllocT>;
  using Trav = StepTraversal<UnitStep, AllocT>;
  using It = NDIterator<Trav, ForwardDirection, AllocT>;
  using Algo = CorrelationAlgorithm<AllocT, FilterBlock, InputT, YT>;
  using Kern = TerminalKernelWithIterator<Out, Algo, It, AllocT>;
  using PositionLoop = WhileLoop<It, AllocT>;

  void attachWork();

  AllocT* allocator;
  OutputModeEnum outputMode;
  int numDims;
  CleverPtr<int> travOrder;
  WindowTables tables;
  CleverPtr<YT> y1Data;
  CleverPtr<int>& hDims;
  CleverPtr<int>& hCentre;
  CleverPtr<int>& uDims;

  UnitStep step;
  ForwardDirection innerDirection;
  Trav innerTraversal;
  It innerIterator;
  RestrictedRegion rosRegion;
  UnrestrictedRegion allRegion;
  Scope scope;
  CleverPtr<int> wantedDims, wantedLoc;
  RestrictedRegion wantedRegion;
  Scope wantedScope;
  Out y;
  ForwardDirection outerDirection;
  Trav outerTraversal;
  It outerIterator;
  PositionLoop loop;
  FilterBlock filter;
  InputT input;
  Algo algorithm;
  Out y1;
  Kern kernel;
  LoopIterator<Out, PositionLoop, Kern, AllocT> loopIterator;
  std::unique_ptr<Plan> plan;
};

#define ORVANE_DECLARE(number, type, name, letters)                                                                   \
  extern template class Correlation<float, float, float, PadExtendedInput<float, float, Allocator, type>, Allocator>; \
  extern template class Correlation<double, double, double, PadExtendedInput<double, double, Allocator, type>,        \
                                    Allocator>;
ORVANE_FOR_PAD_TYPES(ORVANE_DECLARE)
#undef ORVANE_DECLARE

}  // namespace BP
