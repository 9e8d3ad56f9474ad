#pragma once

#include <list>
#include <memory>
#include <type_traits>
#include <vector>

#include "orvane/core/any_bp.h"
#include "orvane/core/block_proc_tolk_cache.h"
#include "orvane/core/clever_ptr.h"
#include "orvane/core/element_pairs.h"
#include "orvane/core/enums.h"
#include "orvane/platform/brekk_tolk.h"
#include "orvane/platform/export.h"
#include "orvane/platform/karn_fixpt_3.h"

namespace BP {

/// What all fronts have in common: extents, pad, stages, run, end.
///
/// The host keeps the extents of window and input in its own arrays, dimension 0 (contiguous in memory) first. Missing
/// dimensions count as 1; a one-dimensional signal is one line along dimension 0. If sizes vary, every run reads the
/// arrays again. The centre of a window is its middle element (see centre.h). A constant pad value is used only where
/// it can be read: not with `OutputModeValid`. Each run assigns it once. If sizes vary, it does so after it has read
/// the extents, because a separable filter computes its second pad value from them.
///
/// Some processors reserve memory once: `MedianFilter` for the values of a window, `ConvCorrSeparable` for the
/// intermediate array. A run that would need more computes nothing and leaves the output as it was.
///
/// RootT is the root of the processors, `AnyCorrelation` or `AnyTemplateMatching`; UT and YT are the element types of
/// input and output. Arrays and the pad value are borrowed and must outlive the object. The `Fixpt` form differs: it
/// takes over the `Fixpt` objects given to `setup` and `tune`, the pad value included. Nothing is checked; messages go
/// to the adaptor.
///
/// A derived class adds its windows, opens the tables and makes the processor over them. Its destructor calls `end`.
template <class RootT, class UT, class YT>
class ORVANE_API WindowFront : public BlockProcTolkCache {
 public:
  /// One run over the input as it stands.
  void computeOutputs() override;

  /// Runs one stage of set-up. `setupFinish` runs twice, and fixed-point statistics are merged in between: those of
  /// operations on input and windows, and those of the output.
  void setup(setupModeT mode);

  /// Sets the strides of input and output for the next runs, where lines do not follow each other directly: tables with
  /// an entry for each of the common number of dimensions, at least 2, the first of them 1. They stay the caller's.
  /// Without a table, elements are dense, as they are without this call.
  void setStrides(const int* input, const int* output) { processor->setStrides(input, output); }

  /// Sets the types in which input and output lie in memory, before a start (see `Stored`). The arrays of the start are
  /// then of these types. Only real elements that are computed in `float` or `double` can be stored otherwise.
  void setStored(Stored input, Stored output) { processor->setStored(input, output); }
  /// The number of outputs that were clipped to their stored type since the last call.
  std::int64_t takeClipped() { return processor->takeClipped(); }
  /// Begins a run that is computed in bands, by `getProcessor().runBand`: reads extents, if they vary, and pad value.
  void beginOutputs();
  RootT& getProcessor() { return *processor; }

  /// Reads the host's extents.
  void fillAllDims();
  /// Whether a pad value can be read at all.
  bool useConstantPad() const { return padType == PadTypeConstant && outputMode != OutputModeValid; }
  PadTypeEnum getPadType() const { return padType; }
  /// The allocator. Its records tell the host which work vectors to provide.
  AllocatorTolk& getAllocator() { return *allocator; }

 protected:
  using Handle = KarnDSPFixpt::DSPDataAttributesHandle;
  using Fixpt = KarnDSPFixpt::Fixpt;

  static constexpr int unfolded = -1;

  /// A window as the host gives its extents, and as the processor sees it.
  struct Window {
    int numDims = 0;             ///< entries in the host's array
    CleverPtr<int> hostDims;     ///< the host's array
    int foldedAlong = unfolded;  ///< dimension along which all elements are laid, whatever their shape
    CleverPtr<int> dims;         ///< extents, owned
    CleverPtr<int> centre;       ///< owned
  };

  /// `firstFill` is the stage of set-up at which the host's extents are read for the start.
  WindowFront(brekk::BrekkAdaptorTolk* adaptor, OutputModeEnum outMode, bool varSize,
              setupModeT firstFill = setupAttachWork)
      : BlockProcTolkCache(adaptor), outputMode(outMode), isVarSize(varSize), fillStage(firstFill) {}

  Window& addWindow(int hostNumDims, int* hostDims, int foldedAlong = unfolded);
  /// Registers an array whose statistics are merged at the end: those of operations on its values and, with `itself`,
  /// its own. Arrays are merged in the order of these calls. Plain arrays have no statistics and are ignored.
  template <class T>
  void keepStatistics(CleverPtr<T>& array, bool itself) {
    if constexpr (std::is_same_v<T, Fixpt>) keepers.push_back({&array, itself});
  }
  /// Settles the number of dimensions and makes all tables.
  void openTables(int hostNumDims, int* hostDims, PadTypeEnum pad);
  /// Whether `window`, as the host gives it, exceeds the input.
  bool exceedsInput(const Window& window) const;

  /// The one-shot start. The derived class has bound windows and outputs before.
  void start(UT* input, const void* newPadValue, bool isComplex);
  /// Runs the last stage of set-up, then destroys the pad value and the processor.
  void end();
  void tunePadValue(const void* value);

  OutputModeEnum outputMode;
  bool isVarSize;
  int nDims = 0;
  int uNumDims = 0;
  CleverPtr<int> uDims;
  CleverPtr<int> hostUDims;
  CleverPtr<UT> u;
  CleverPtr<YT> y;
  PadTypeEnum padType = PadTypeConstant;
  std::unique_ptr<RootT> processor;

 private:
  void fillWindow(Window& window);
  void assignPad();
  void readHost();
  void finish();

  struct Keeper {
    CleverPtr<Fixpt>* array;
    bool itself;
  };

  setupModeT fillStage;
  std::list<Window> windows;
  std::vector<Keeper> keepers;
  const void* padValue = nullptr;
  bool padIsComplex = false;
};

#define ORVANE_DECLARE(UT, YT) extern template class WindowFront<AnyCorrelation, UT, YT>;
ORVANE_FOR_ELEMENT_PAIRS(ORVANE_DECLARE)
#undef ORVANE_DECLARE
#define ORVANE_DECLARE(UT, YT) extern template class WindowFront<AnyTemplateMatching, UT, YT>;
ORVANE_FOR_MATCHING_PAIRS(ORVANE_DECLARE)
#undef ORVANE_DECLARE

}  // namespace BP
