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
/// extents of its mode (see `OutputModeEnum`). All arrays are the caller's and must outlive the object; their contents
/// may change between runs, extents and centre only ahead of another `setup`. Calls: constructor, `setup`, then
/// `invoke` as often as wanted. Nothing is checked, but a pad type out of range gives an object that does nothing. One
/// thread at a time.
template <class T>
class ORVANE_API CorrelationStandAlone {
 public:
  /// `padValue` is read once, here; whatever the pad type, it is also written to standard output, in a line.
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

  /// Prepares runs for the extents and the centre as they stand; at least once, ahead of the first run.
  void setup();
  /// Takes other arrays of the same extents for input and output of the runs to come.
  void setArrays(T* input, T* output);
  /// Lets a constant pad read as `value` from the next run on.
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
