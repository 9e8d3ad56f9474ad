#pragma once

#include <list>
#include <memory>
#include <type_traits>

#include "orvane/core/any_bp.h"
#include "orvane/core/block_proc_tolk_cache.h"
#include "orvane/core/clever_ptr.h"
#include "orvane/core/element_pairs.h"
#include "orvane/core/enums.h"
#include "orvane/platform/brekk_tolk.h"
#include "orvane/platform/export.h"
#include "orvane/platform/karn_fixpt_3.h"

namespace BP {

/// What the fronts of processors with one input and one output have in common: extents, pad, stages, run, end.
///
/// Window and input have extents in arrays of the host's, dimension 0 (contiguous in memory) first; missing dimensions
/// count as 1, and a one-dimensional signal is one line along dimension 0. The arrays are read again on every run if
/// sizes vary. A window's centre is its middle element, the lower one of the two for an even extent. A constant pad
/// value is used only where it can be read: not with `OutputModeValid`.
///
/// UT and YT are the element types of input and output. Arrays and the pad value are borrowed and must outlive the
/// object; but in the `Fixpt` form the `Fixpt` objects given to `setup` and `tune`, the pad value's included, become
/// this object's. Nothing is checked; messages go to the adaptor.
///
/// A derived class adds its windows, opens the tables, makes the processor over them, and ends it in its destructor.
template <class UT, class YT>
class ORVANE_API WindowFront : public BlockProcTolkCache {
 public:
  /// One run over the input as it stands.
  void computeOutputs() override;

  /// One stage of set-up. The last one runs twice; in between, fixed-point statistics are merged: of what came out of
  /// operations on input and windows, and of the output.
  void setup(setupModeT mode);

  /// Reads the host's extents.
  void fillAllDims();
  /// Whether a pad value can be read at all.
  bool useConstantPad() const { return padType == PadTypeConstant && outputMode != OutputModeValid; }
  PadTypeEnum getPadType() const { return padType; }
  /// The allocator, through whose records the host learns which work vectors to provide.
  AllocatorTolk& getAllocator() { return *allocator; }

 protected:
  using Handle = KarnDSPFixpt::DSPDataAttributesHandle;
  using Fixpt = KarnDSPFixpt::Fixpt;

  static constexpr int unfolded = -1;

  /// A window as the host gives its extents, and as the processor sees it.
  struct Window {
    int numDims = 0;                       ///< entries in the host's array
    CleverPtr<int> hostDims;               ///< the host's array
    int foldedAlong = unfolded;            ///< dimension along which all elements are laid, whatever their shape
    CleverPtr<Fixpt>* elements = nullptr;  ///< elements that keep statistics, if it has such
    CleverPtr<int> dims;                   ///< extents, owned
    CleverPtr<int> centre;                 ///< owned
  };

  WindowFront(brekk::BrekkAdaptorTolk* adaptor, OutputModeEnum outMode, bool varSize)
      : BlockProcTolkCache(adaptor), outputMode(outMode), isVarSize(varSize) {}

  /// Adds a window without elements, or with those that `elements` will be bound to.
  Window& addWindow(int hostNumDims, int* hostDims);
  template <class HT>
  Window& addWindow(int hostNumDims, int* hostDims, CleverPtr<HT>& elements, int foldedAlong = unfolded);
  /// Settles the number of dimensions and makes all tables.
  void openTables(int hostNumDims, int* hostDims, PadTypeEnum pad);
  /// Whether `window`, as the host gives it, exceeds the input.
  bool exceedsInput(const Window& window) const;

  /// The one-shot start.
  void start(UT* input, YT* output, const void* newPadValue, bool isComplex);
  /// Ends the processor, by the last stage of set-up, and the pad value.
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
  std::unique_ptr<AnyCorrelation> processor;

 private:
  void fillWindow(Window& window);
  void assignPad();
  void finish();

  std::list<Window> windows;
  const void* padValue = nullptr;
  bool padIsComplex = false;
};

template <class UT, class YT>
template <class HT>
typename WindowFront<UT, YT>::Window& WindowFront<UT, YT>::addWindow(int hostNumDims, int* hostDims,
                                                                     CleverPtr<HT>& elements, int foldedAlong) {
  Window& window = addWindow(hostNumDims, hostDims);
  window.foldedAlong = foldedAlong;
  if constexpr (std::is_same_v<HT, Fixpt>) window.elements = &elements;
  return window;
}

#define ORVANE_DECLARE(UT, YT) extern template class WindowFront<UT, YT>;
ORVANE_FOR_ELEMENT_PAIRS(ORVANE_DECLARE)
#undef ORVANE_DECLARE

}  // namespace BP
