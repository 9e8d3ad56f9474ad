#pragma once

#include <cstdint>
#include <memory>
#include <type_traits>

#include "orvane/convcorr/conv_corr.h"
#include "orvane/exec/separable_walk.h"

namespace BP {

/// Filtering with a separable filter: a column filter along dimension 0 into an intermediate array, then a row filter
/// along dimension 1 from there into the output. Each pass is a `ConvCorr`, with its rules on sums, modes, pads and
/// ownership. An output then costs the sum of the two extents instead of their product, at the price of one array of
/// YT.
///
/// The intermediate has the element type of the output, so fixed point is quantised to that between the passes. It is
/// allocated once, with extents `midMaxDims`, which only the constructor reads. A run whose intermediate would be
/// larger computes nothing and leaves the output as it was. With a constant pad, the second pass pads with the first
/// filter's response to the pad value (see `ConvCorr::computePadOutput`).
///
/// Vector lanes run both passes of plain sums over two dimensions in one walk, which does not write the intermediate
/// and gives the same bits. Elsewhere a run has two phases: the rows and columns of the intermediate that the outputs
/// need, and the outputs.
template <class HT, class UT, class YT, class AllocT>
class ORVANE_API ConvCorrSeparable : public AnyCorrelation {
 public:
  /// `isHgtU1` and `isHgtU2` tell that the first filter exceeds the input, and the second the intermediate.
  ConvCorrSeparable(AllocT* allocator, int nDims, CleverPtr<int>& hDims, bool isHgtU1, CleverPtr<int>& h2Dims,
                    bool isHgtU2, CleverPtr<int>& uDims, CleverPtr<int>& midMaxDims, OutputModeEnum outputMode,
                    AlgorithmModeEnum algorithmMode, NormEnum norm, PadTypeEnum padType, CleverPtr<int>& hCentre,
                    CleverPtr<HT>& h, CleverPtr<int>& h2Centre, CleverPtr<HT>& h2, CleverPtr<UT>& u, CleverPtr<YT>& y);

  void setup(setupModeT mode) override;
  ~ConvCorrSeparable() override;
  void invoke() override;
  void assignPadValue(const void* value, bool isComplex) override;
  void setStrides(const int* input, const int* output) override;
  void setStored(Stored input, Stored output) override;
  std::int64_t takeClipped() override { return pass2->takeClipped(); }
  void setRegion(const PositionBox& region) override;
  void beginRun() override;
  int getPhaseCount() const override { return isFused ? 1 : 2; }
  void getPhaseBox(int phase, int* loc, int* dims) override;
  void runBand(int phase, const PositionBox& band) override;
  void shareIntermediate(AnyCorrelation& other) override;
  const AnyCorrelation* getConvCorr1() const override;
  const AnyCorrelation* getConvCorr2() const override;

 private:
  static constexpr bool isPlain = !std::is_same_v<YT, KarnDSPFixpt::Fixpt>;
  struct NoWalk {};

  bool intermediateFits() const;
  bool readsNothing() const;
  bool filtersAreLines() const;
  bool arraysOverlap() const;
  bool runsFused() const;
  void runFused(const PositionBox& band);
  void computeNeededRows(int& first, int& count) const;

  AllocT* allocator;
  int nDims;
  OutputModeEnum outputMode;
  bool isReversed;
  int padType;
  bool canFuse;  ///< two dimensions, plain sums, and no vendor's functions for the passes
  CleverPtr<int>& hDims;
  CleverPtr<int>& h2Dims;
  CleverPtr<int>& uDims;
  CleverPtr<int>& hCentre;
  CleverPtr<int>& h2Centre;
  CleverPtr<HT>& h;
  CleverPtr<HT>& h2;
  CleverPtr<UT>& u;
  CleverPtr<YT>& y;
  [[no_unique_address]] std::conditional_t<isPlain, SeparableWalk<HT, UT, YT>, NoWalk> walk;
  std::unique_ptr<ConvCorr<HT, UT, YT, AllocT>> pass1;
  std::unique_ptr<ConvCorr<HT, YT, YT, AllocT>> pass2;
  CleverPtr<YT> midData;
  std::int64_t midCapacity;
  CleverPtr<int> midDims;
  PositionBox region;
  bool isRunning = false;  ///< the run computes something
  bool isFused = false;
  /// Tables of the present run. Positions of the second pass count from the intermediate's first element, which lies at
  /// `midLoc`.
  CleverPtr<int> midLoc, outLoc, outDims, regionLoc, bandLoc;
};

#define ORVANE_DECLARE(HT, UT, YT) extern template class ConvCorrSeparable<HT, UT, YT, AllocatorTolk>;
ORVANE_FOR_CONV_CORR_TRIPLES(ORVANE_DECLARE)
#undef ORVANE_DECLARE

}  // namespace BP
