#pragma once

#include <memory>

#include "orvane/core/clever_ptr.h"
#include "orvane/core/element.h"
#include "orvane/core/enums.h"
#include "orvane/plan/block.h"
#include "orvane/platform/export.h"

namespace BP {

/// Abstract base of the inputs, over elements of type UT.
template <class UT>
class ORVANE_API AnyInput {
 public:
  AnyInput() = default;
  AnyInput(const AnyInput&) = delete;
  AnyInput& operator=(const AnyInput&) = delete;
  virtual ~AnyInput() = default;

  /// Whether a read beyond the edge yields an element of the input, so that the window's place matters there.
  virtual bool isDistanceBased() const = 0;
  /// Element `i` of the pad value; for fixed point the array, with its cursor there.
  virtual UT* padValueAt(int i) = 0;
  /// The store of the pad value, through which a processor sets it.
  virtual CleverPtr<UT>& padValues() = 0;
  /// Sets element `i` of the pad value, if the pad is constant.
  virtual void setPadValueAt(int i, const UT& v) = 0;
  /// Sets element 0 of the pad value to element 0 of `v`, if the pad is constant.
  virtual void setPadValue(const CleverPtr<UT>& v) = 0;
};

/// View of the array that is filtered; elements UT, for a processor with output elements YT.
///
/// It keeps the range of valid indices and two stores of one element for padding: the pad value, and the pad output,
/// which is the value of an output whose whole window lies beyond the input. This class itself never pads;
/// `PadExtendedInput` does. `setupResize` and `setupStart` set the range, and every run sets the strides. The maker
/// owns data and tables.
template <class UT, class YT, class AllocT>
class ORVANE_API Input : public AnyInput<UT> {
 public:
  /// The `PadTypeEnum` of the reads beyond the edge; 0: there are none.
  static constexpr int padType = 0;

  Input(AllocT* allocator, int numDims, CleverPtr<int>& dims, CleverPtr<int>& origin, CleverPtr<int>& loc,
        CleverPtr<UT>& data);

  bool isDistanceBased() const override { return false; }
  UT* padValueAt(int i) override { return &elementAt(padValue.ptr, i); }
  CleverPtr<UT>& padValues() override { return padValue; }
  void setPadValueAt(int /*i*/, const UT& /*v*/) override {}
  void setPadValue(const CleverPtr<UT>& /*v*/) override {}

  /// At `setupResize` and `setupStart`, computes range, strides and element counts; at `setupInvoke` those of the
  /// input, but not the range.
  void setup(setupModeT mode);

  TraversableDataBlock<UT, AllocT>& getBlock() const { return *block; }
  /// The pad output as a one-dimensional block of one element.
  DataBlock<YT, AllocT>& getPadOutputBlock() const { return *padOutputBlock; }
  CleverPtr<YT>& getPadOutput() { return padOutput; }

 protected:
  AllocT* allocator;

 private:
  CleverPtr<int> start;
  CleverPtr<int> end;
  std::unique_ptr<TraversableDataBlock<UT, AllocT>> block;
  std::unique_ptr<DataBlock<YT, AllocT>> padOutputBlock;
  CleverPtr<int> padOutputDims;
  CleverPtr<int> padOutputOrigin;
  CleverPtr<int> padOutputLoc;
  CleverPtr<YT> padOutput;
  CleverPtr<UT> padValue;
};

template <class UT, class YT, class AllocT>
Input<UT, YT, AllocT>::Input(AllocT* alloc, int numDims, CleverPtr<int>& dims, CleverPtr<int>& origin,
                             CleverPtr<int>& loc, CleverPtr<UT>& data)
    : allocator(alloc) {
  allocator->allocateArray(end, numDims, "ignore");
  allocator->allocateArray(start, numDims, "ignore");
  block = std::make_unique<TraversableDataBlock<UT, AllocT>>(allocator, numDims, dims, origin, loc, start, end, data);
  for (CleverPtr<int>* table : {&padOutputDims, &padOutputOrigin, &padOutputLoc}) {
    allocator->allocateArray(*table, 1, "ignore");
  }
  padOutputDims.ptr[0] = 1;
  allocator->allocateArray(padOutput, 1, "output");
  padOutputBlock =
      std::make_unique<DataBlock<YT, AllocT>>(allocator, 1, padOutputDims, padOutputOrigin, padOutputLoc, padOutput);
  allocator->allocateArray(padValue, 1, "input");
}

template <class UT, class YT, class AllocT>
void Input<UT, YT, AllocT>::setup(setupModeT mode) {
  if (mode == setupInvoke) block->computeStrides();
  if (mode != setupResize && mode != setupStart) return;
  block->traverseWhole();
  padOutputOrigin.ptr[0] = 0;
  padOutputLoc.ptr[0] = 0;
  block->computeStrides();
  padOutputBlock->computeStrides();
}

}  // namespace BP
