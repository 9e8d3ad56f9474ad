#pragma once

#include "orvane/convcorr/conv_corr.h"
#include "orvane/core/any_bp.h"
#include "orvane/core/clever_ptr.h"
#include "orvane/core/enums.h"
#include "orvane/core/window_front.h"
#include "orvane/platform/brekk_tolk.h"
#include "orvane/platform/export.h"

namespace BP {

/// Front of convolution and correlation: what a host holds for one block.
///
/// The sum, its order, edges and extents are those of `ConvCorr`, or of `ConvCorrSeparable` if there are two filters.
/// `WindowFront` says what the host gives and keeps, and where the filter's centre is. The first filter of a separable
/// front is a column with all its elements along dimension 0, the second a row along dimension 1, whatever shapes the
/// host gives.
///
/// HT, UT and YT are the element types of filter, input and output, one of the triples of `ConvCorr`.
template <class HT, class UT, class YT>
class ORVANE_API ConvCorrTolk : public WindowFront<AnyCorrelation, UT, YT> {
  using Base = WindowFront<AnyCorrelation, UT, YT>;

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

  using Base::setup;
  /// The one-shot start of a block with one filter. `newPadValue` is one input element. The imaginary part of a complex
  /// one is read only if `isComplex`.
  void setup(HT* filter, UT* input, YT* output, const void* newPadValue, bool isComplex);
  /// The one-shot start of a separable block.
  void setup(HT* filter, HT* secondFilter, UT* input, YT* output, const void* newPadValue, bool isComplex);

  bool getIsSeparable() const { return separable; }
  bool isSeparable() const { return separable; }
  const AnyCorrelation* getConvCorr() const { return this->processor.get(); }
  const AnyCorrelation* getConvCorr1() const { return this->processor->getConvCorr1(); }
  const AnyCorrelation* getConvCorr2() const { return this->processor->getConvCorr2(); }

 private:
  void constructConvCorr(int hCount, int* hHost, int uCount, int* uHost, PadTypeEnum pad, AlgorithmModeEnum mode,
                         NormEnum norm);
  void constructConvCorr(int hCount, int* hHost, int h2Count, int* h2Host, int uCount, int* uHost, PadTypeEnum pad,
                         AlgorithmModeEnum mode);
  void keepAllStatistics();
  void computeMidMaxDims(CleverPtr<int>& mid, const CleverPtr<int>& first) const;

  bool separable;
  CleverPtr<HT> h;
  CleverPtr<HT> h2;
};

#define ORVANE_DECLARE(HT, UT, YT) extern template class ConvCorrTolk<HT, UT, YT>;
ORVANE_FOR_CONV_CORR_TRIPLES(ORVANE_DECLARE)
#undef ORVANE_DECLARE

}  // namespace BP
