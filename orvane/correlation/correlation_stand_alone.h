#pragma once

#include <memory>

#include "orvane/core/allocator.h"
#include "orvane/core/any_bp.h"
#include "orvane/core/clever_ptr.h"
#include "orvane/core/enums.h"
#include "orvane/platform/export.h"

namespace BP {

/// Correlation of plain arrays in any number of dimensions, without a host. The sum, its order and its edges are those
/// of `Correlation`; T is `float` or `double`.
///
/// Extents and filter centre have `numDims` entries, dimension 0 (contiguous in memory) first; the output has the
/// extents of its mode (see `OutputModeEnum`). The caller owns all arrays, and they must outlive the object. Their
/// contents may change between runs. After a change of extents or centre, `setup` is called again. Calls: constructor,
/// `setup`, then `invoke` any number of times. Nothing is checked, but an object with a pad type out of range does
/// nothing. One thread at a time uses the object.
template <class T>
class ORVANE_API CorrelationStandAlone {
 public:
  /// The constructor reads `padValue` once and, whatever the pad type, writes it to standard output in a line.
  CorrelationStandAlone(int numDims, int* hDims, int* uDims, PadTypeEnum padType, OutputModeEnum outputMode,
                        T* padValue, int* hCentre, T* h, T* u, T* y);
  /// The same with a pad value of 0 until `setPadValue`; writes nothing to standard output.
  CorrelationStandAlone(int numDims, int* hDims, int* uDims, PadTypeEnum padType, OutputModeEnum outputMode,
                        int* hCentre, T* h, T* u, T* y);
  CorrelationStandAlone(const CorrelationStandAlone&) = delete;
  CorrelationStandAlone& operator=(const CorrelationStandAlone&) = delete;
  virtual ~CorrelationStandAlone();

  /// One run over the input as it stands.
  virtual void invoke();

  /// Prepares runs for the present extents and centre. It is called at least once, before the first run.
  void setup();
  /// Sets other arrays of the same extents as input and output of the next runs.
  void setArrays(T* input, T* output);
  /// The processor, for strides, a region and runs in bands (see `AnyBP`); null for a pad type out of range. After a
  /// run in bands, `invoke` needs another `setup`.
  AnyBP* getProcessor() { return correlation.get(); }
  /// Sets the value of a constant pad for the next runs.
  void setPadValue(T value);
  Allocator* getAllocator() { return allocator.get(); }

 private:
  template <int padType>
  void build(bool filterExceedsInput, OutputModeEnum outputMode);

  std::unique_ptr<Allocator> allocator;
  int numDims;
  CleverPtr<int> hDims;
  CleverPtr<int> hCentre;
  CleverPtr<int> uDims;
  CleverPtr<T> h;
  CleverPtr<T> u;
  CleverPtr<T> y;
  std::unique_ptr<AnyBP> correlation;
  CleverPtr<T>* padValues = nullptr;  // the processor's
};

extern template class CorrelationStandAlone<float>;
extern template class CorrelationStandAlone<double>;

}  // namespace BP
