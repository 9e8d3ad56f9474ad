#pragma once

#include <memory>
#include <type_traits>

#include "orvane/core/clever_ptr.h"
#include "orvane/core/enums.h"
#include "orvane/input/pad.h"
#include "orvane/plan/input.h"
#include "orvane/platform/export.h"

namespace BP {

/// A data-based pad with a pad value that no read uses, so that setting a pad value is the same operation for all pad
/// types.
template <class UT, class YT, class AllocT, int padType>
class PadWithUnusedValue : public DataBasedPad<UT, YT, AllocT, padType> {
 public:
  explicit PadWithUnusedValue(AllocT* alloc) : DataBasedPad<UT, YT, AllocT, padType>(alloc) {
    alloc->allocateArray(padValue, 1, "input");
  }
  CleverPtr<UT>& getPadValue() { return padValue; }

 private:
  CleverPtr<UT> padValue;
};

/// An input that can be read at any coordinate, as if it continued without end; `N` is a `PadTypeEnum` (see there for
/// the rules).
///
/// No padded copy of the array exists. Windows wholly inside read the array. Windows that cross an edge read tap by tap
/// through the pad. Outputs whose window misses the array take the pad output if the pad is constant, and else read
/// through the pad too.
template <class UT, class YT, class AllocT, int N>
class ORVANE_API PadExtendedInput : public Input<UT, YT, AllocT> {
 public:
  static constexpr int padType = N;
  static constexpr bool isConstant = N == PadTypeConstant;
  using PadT = std::conditional_t<isConstant, ConstantPad<UT, YT, AllocT>, PadWithUnusedValue<UT, YT, AllocT, N>>;

  PadExtendedInput(AllocT* alloc, int numDims, CleverPtr<int>& dims, CleverPtr<int>& origin, CleverPtr<int>& loc,
                   CleverPtr<UT>& data)
      : Input<UT, YT, AllocT>(alloc, numDims, dims, origin, loc, data), pad(std::make_unique<PadT>(alloc)) {}

  bool isDistanceBased() const override { return pad->getIsDistanceBased(); }
  UT* padValueAt(int i) override { return &elementAt(pad->getPadValue().ptr, i); }
  CleverPtr<UT>& padValues() override { return pad->getPadValue(); }
  void setPadValueAt(int i, const UT& v) override {
    if constexpr (isConstant) assign(elementAt(pad->getPadValue().ptr, i), v);
  }
  void setPadValue(const CleverPtr<UT>& v) override {
    if constexpr (isConstant) assign(elementAt(pad->getPadValue().ptr, 0), elementAt(v.ptr, 0));
  }

  PadT& getPad() { return *pad; }

 private:
  std::unique_ptr<PadT> pad;
};

}  // namespace BP
