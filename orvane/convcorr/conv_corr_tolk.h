#pragma once

#include <complex>
#include <memory>

#include "orvane/convcorr/conv_corr.h"
#include "orvane/core/allocator_tolk.h"
#include "orvane/core/any_bp.h"
#include "orvane/core/block_proc_tolk_cache.h"
#include "orvane/core/clever_ptr.h"
#include "orvane/core/enums.h"
#include "orvane/platform/brekk_tolk.h"
#include "orvane/platform/export.h"

namespace BP {

/// Front of convolution and correlation: what a host holds for one block.
///
/// The sum, its order, edges and extents are those of `ConvCorr`, or with two filters of `ConvCorrSeparable`. Filter
/// and input have extents in arrays of the host's, dimension 0 (contiguous in memory) first; missing dimensions count
/// as 1, and a one-dimensional signal is one line along dimension 0. The arrays are read again on every run if sizes
/// vary. The filter's centre is its middle element, the lower one of the two for an even extent. Of a separable filter
/// the first is a column, all its elements along dimension 0, the second a row along dimension 1, whatever shape the
/// host gives. A constant pad value is used only where it can be read: not with `OutputModeValid`.
///
/// HT, UT and YT are the element types of filter, input and output, a triple of those that `ConvCorr` knows. Arrays and
/// the pad value are borrowed and must outlive the object; but in the `Fixpt` form the `Fixpt` objects given to `setup`
/// and `tune`, the pad value's included, become this object's. Nothing is checked; messages go to the adaptor.
template <class HT, class UT, class YT>
class ORVANE_API ConvCorrTolk : public BlockProcTolkCache {
 public:
  using Handle = KarnDSPFixpt::DSPDataAttributesHandle;

  /// Separable, with the fixed-point types of the four roles.
  ConvCorrTolk(brekk::BrekkAdaptorTolk* adaptor, int hNumDims, int* hDims, int h2NumDims, int* h2Dims, int uNumDims,
               int* uDims, PadTypeEnum padType, OutputModeEnum outputMode, AlgorithmModeEnum algorithmMode,
               bool isVarSize, const Handle& input, const Handle& output, const Handle& filter,
               const Handle& accumulator);
  /// Separable.
  ConvCorrTolk(brekk::BrekkAdaptorTolk* adaptor, int hNumDims, int* hDims, int h2NumDims, int* h2Dims, int uNumDims,
               int* uDims, PadTypeEnum padType, OutputModeEnum outputMode, AlgorithmModeEnum algorithmMode,
               bool isVarSize);
  /// One filter, with the fixed-point types of the roles that normalisation needs too.
  ConvCorrTolk(brekk::BrekkAdaptorTolk* adaptor, int hNumDims, int* hDims, int uNumDims, int* uDims,
               PadTypeEnum padType, OutputModeEnum outputMode, AlgorithmModeEnum algorithmMode, NormEnum norm,
               bool isVarSize, const Handle& input, const Handle& output, const Handle& filter,
               const Handle& accumulator, const Handle& sqrt);
  /// One filter, with the fixed-point types of the four roles.
  ConvCorrTolk(brekk::BrekkAdaptorTolk* adaptor, int hNumDims, int* hDims, int uNumDims, int* uDims,
               PadTypeEnum padType, OutputModeEnum outputMode, AlgorithmModeEnum algorithmMode, NormEnum norm,
               bool isVarSize, const Handle& input, const Handle& output, const Handle& filter,
               const Handle& accumulator);
  /// One filter.
  ConvCorrTolk(brekk::BrekkAdaptorTolk* adaptor, int hNumDims, int* hDims, int uNumDims, int* uDims,
               PadTypeEnum padType, OutputModeEnum outputMode, AlgorithmModeEnum algorithmMode, NormEnum norm,
               bool isVarSize);
  ~ConvCorrTolk() override;

  /// Swaps filter, second filter and pad value between runs; null leaves one as it is.
  void tune(void* first, void* second, void* third) override;
  /// One run over the input as it stands.
  void computeOutputs() override;

  /// One stage of set-up.
  void setup(setupModeT mode);
  /// The one-shot start of a block with one filter. `padValue` is one input element; of a complex one the imaginary
  /// part is read only if `padIsComplex`.
  void setup(HT* filter, UT* input, YT* output, const void* newPadValue, bool isComplex);
  /// The one-shot start of a separable block.
  void setup(HT* filter, HT* secondFilter, UT* input, YT* output, const void* newPadValue, bool isComplex);

  /// Reads the host's extents.
  void fillAllDims();
  /// Whether a pad value can be read at all.
  bool useConstantPad() const { return padType == PadTypeConstant && outputMode != OutputModeValid; }
  bool getIsSeparable() const { return separable; }
  bool isSeparable() const { return separable; }
  PadTypeEnum getPadType() const { return padType; }
  const AnyCorrelation* getConvCorr() const { return processor.get(); }
  const AnyCorrelation* getConvCorr1() const { return processor->getConvCorr1(); }
  const AnyCorrelation* getConvCorr2() const { return processor->getConvCorr2(); }
  /// The allocator, through whose records the host learns which work vectors to provide.
  AllocatorTolk& getAllocator() { return *allocator; }

 private:
  void constructConvCorr(int hCount, int* hHost, int uCount, int* uHost, PadTypeEnum pad, AlgorithmModeEnum mode,
                         NormEnum norm);
  void constructConvCorr(int hCount, int* hHost, int h2Count, int* h2Host, int uCount, int* uHost, PadTypeEnum pad,
                         AlgorithmModeEnum mode);
  void storeHost(int hCount, int* hHost, int uCount, int* uHost, PadTypeEnum pad);
  void computeMidMaxDims(CleverPtr<int>& mid, CleverPtr<int>& first) const;
  void assignPad();
  void computeAllCentres();
  void forwardFinish();

  OutputModeEnum outputMode;
  bool isVarSize;
  bool separable;
  int nDims = 0;
  int hNumDims = 0;
  int h2NumDims = 0;
  int uNumDims = 0;
  CleverPtr<int> hDims;
  CleverPtr<int> h2Dims;
  CleverPtr<int> uDims;
  CleverPtr<int> hostHDims;
  CleverPtr<int> hostH2Dims;
  CleverPtr<int> hostUDims;
  CleverPtr<int> hCentre;
  CleverPtr<int> h2Centre;
  CleverPtr<HT> h;
  CleverPtr<HT> h2;
  CleverPtr<UT> u;
  CleverPtr<YT> y;
  PadTypeEnum padType = PadTypeConstant;
  const void* padValue = nullptr;
  bool padIsComplex = false;
  std::unique_ptr<AnyCorrelation> processor;
};

#define ORVANE_DECLARE(HT, UT, YT) extern template class ConvCorrTolk<HT, UT, YT>;
ORVANE_FOR_CONV_CORR_TRIPLES(ORVANE_DECLARE)
#undef ORVANE_DECLARE

}  // namespace BP
