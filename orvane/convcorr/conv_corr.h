#pragma once

#include <complex>
#include <memory>

#include "orvane/algorithm/algorithm.h"
#include "orvane/core/allocator_tolk.h"
#include "orvane/core/any_bp.h"
#include "orvane/core/clever_ptr.h"
#include "orvane/exec/kernel.h"
#include "orvane/input/input.h"
#include "orvane/input/output.h"
#include "orvane/plan/block.h"
#include "orvane/plan/moving_roi_plan.h"
#include "orvane/plan/region.h"
#include "orvane/plan/scope.h"
#include "orvane/plan/window_tables.h"
#include "orvane/platform/export.h"

namespace BP {

/// Convolution or correlation of an input u with a filter h into an output y.
///
///     y(p) = sum over j1, then j0, of u(p + hLoc + j) * h(f)
///
/// with p the position of the filter's centre, hLoc minus the centre's index, and f running over the filter's elements
/// from the last to the first for convolution and from the first to the last for correlation; optionally divided by the
/// norms of filter and window (see `ConvCorrAlgorithm`). Each output is one sum in this order, with one rounding for
/// each operation in the element type itself. Which positions have an output says the output mode (see
/// `OutputModeEnum`), what the input yields beyond its edge the pad type (see `PadTypeEnum`).
///
/// Element (i0, i1) of an array stands at i0 + i1 * extent[0]: dimension 0 is contiguous. Tables have an entry for each
/// of `nDims` dimensions, at least 2. The walk covers dimensions 0 and 1: with more, the first plane of the input is
/// filtered with the first plane of the filter into the first plane of the output.
///
/// HT, UT and YT are the element types of filter, input and output. Arguments belong to the caller, may be rebound
/// between runs, and must outlive the object. Nothing is checked; a pad type or an algorithm mode out of range builds a
/// processor that does nothing. One thread at a time. After construction a run allocates small temporaries of sectors
/// only.
template <class HT, class UT, class YT, class AllocT>
class ORVANE_API ConvCorr : public AnyCorrelation {
 public:
  /// `isHgtU` tells that the filter exceeds the input in some dimension. `regionOfInterest`, if given, restricts the
  /// outputs to its positions; the output array then holds just these.
  ConvCorr(AllocT* allocator, int nDims, CleverPtr<int>& hDims, bool isHgtU, CleverPtr<int>& uDims,
           OutputModeEnum outputMode, AlgorithmModeEnum algorithmMode, NormEnum norm, PadTypeEnum padType,
           CleverPtr<int>& hCentre, CleverPtr<HT>& h, CleverPtr<UT>& u, CleverPtr<YT>& y,
           const Region* regionOfInterest = nullptr);

  void setup(setupModeT mode) override;
  ~ConvCorr() override;
  void invoke() override;
  void assignPadValue(const void* value, bool isComplex) override;
  virtual AnyPlan& getPlan() const;

  /// Works the region of support out from the extents.
  void computeROS();
  /// Places filter and input, and works the region of support out.
  void initializeParameters();
  /// Works out what the filter makes of an input that is nothing but the pad value: the sum of the filter, then one
  /// multiplication.
  void computePadOutput();
  const CleverPtr<YT>& getPadOutput();
  /// Takes element 0 of `value` for the pad value, if the pad is constant.
  void setPadValue(const CleverPtr<UT>& value);
  Output<YT, AllocT>& getY() { return *y; }

  /// Called by the plan: has the kernel run one sector.
  void runSector(InsideSector& sector);
  void runSector(BoundarySector& sector);
  void runSector(OutsideSector& sector);

 private:
  using FilterBlock = TraversableDataBlock<HT, AllocT>;
  using Out = Output<YT, AllocT>;

  void build(AlgorithmModeEnum algorithmMode, NormEnum norm, PadTypeEnum padType);
  template <int padType, int flipFilter, int normalise>
  void buildFor();

  AllocT* allocator;
  OutputModeEnum outputMode;
  std::unique_ptr<Input<UT, YT, AllocT>> input;
  std::unique_ptr<Algorithm<AllocT>> algorithm;
  std::unique_ptr<Kernel<Out, AllocT>> kernel;
  std::unique_ptr<Out> y;
  std::unique_ptr<Out> y1;
  std::unique_ptr<RestrictedRegion> rosRegion;
  std::unique_ptr<UnrestrictedRegion> allRegion;
  std::unique_ptr<Scope> scope;
  std::unique_ptr<MovingROIPlan<UT, YT, AllocT>> plan;
  int nDims;
  WindowTables tables;
  CleverPtr<int>& hDims;
  CleverPtr<int>& hCentre;
  CleverPtr<int>& uDims;
  CleverPtr<UT>& uData;
  CleverPtr<YT>& yData;
  CleverPtr<YT> y1Data;
  std::unique_ptr<FilterBlock> filter;
};

/// Declares, or with nothing in front defines, a class template for the nine triples of filter, input and output.
#define ORVANE_FOR_CONV_CORR_TRIPLES(APPLY)                               \
  APPLY(float, float, float)                                              \
  APPLY(float, std::complex<float>, std::complex<float>)                  \
  APPLY(std::complex<float>, float, std::complex<float>)                  \
  APPLY(std::complex<float>, std::complex<float>, std::complex<float>)    \
  APPLY(double, double, double)                                           \
  APPLY(double, std::complex<double>, std::complex<double>)               \
  APPLY(std::complex<double>, double, std::complex<double>)               \
  APPLY(std::complex<double>, std::complex<double>, std::complex<double>) \
  APPLY(KarnDSPFixpt::Fixpt, KarnDSPFixpt::Fixpt, KarnDSPFixpt::Fixpt)

#define ORVANE_DECLARE(HT, UT, YT) extern template class ConvCorr<HT, UT, YT, AllocatorTolk>;
ORVANE_FOR_CONV_CORR_TRIPLES(ORVANE_DECLARE)
#undef ORVANE_DECLARE

}  // namespace BP
