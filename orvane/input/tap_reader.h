#pragma once

#include <concepts>
#include <type_traits>

#include "orvane/core/clever_ptr.h"
#include "orvane/core/element.h"
#include "orvane/plan/block.h"
#include "orvane/plan/sector.h"

/// Readers of the taps of a two-dimensional window, row by row: `beginRow(j)` once per row, `goTo(i)` once per tap,
/// `read()` any number of times for a tap.
namespace BP {

/// Taps of a window wholly inside: straight from the array, without a test.
template <class UT>
class InsideTaps {
 public:
  template <class BlockT>
  InsideTaps(const BlockT& block, int imageIndex)
      : data(block.getData().ptr), stored(block.getStored()), first(imageIndex), pitch(block.getStrides().ptr[1]) {}

  void beginRow(int j) { row = first + pitch * j; }
  void goTo(int i) { at = row + i; }
  UT& read() {
    if constexpr (std::is_floating_point_v<UT>) {
      if (stored != Stored::asComputed) return cell = loadStored(stored, data, at);
    }
    return elementAt(data, at);
  }
  /// All taps at once, in fixed point.
  KarnDSPFixpt::FixptWindow getWindow() const requires std::same_as<UT, Fixpt> { return {*data, first, 1, pitch}; }

 private:
  UT* data;
  Stored stored;
  std::conditional_t<std::is_floating_point_v<UT>, UT, char> cell{};  ///< a converted element
  int first;
  int pitch;
  int row = 0;
  int at = 0;
};

/// Taps that go through the input's pad. The pad may redirect coordinates in place. A redirected row coordinate stays
/// until the next row begins, a redirected tap coordinate until the next tap.
template <class InputT>
class PaddedTaps {
 public:
  PaddedTaps(InputT& in, const OuterSector& outerSector, const CleverPtr<int>& windowOrigin)
      : input(in), sector(outerSector), origin{windowOrigin.ptr[0], windowOrigin.ptr[1]} {}

  void beginRow(int j) { index[1] = origin[1] + j; }
  void goTo(int i) { index[0] = origin[0] + i; }

 protected:
  InputT& input;
  const OuterSector& sector;
  int origin[2];
  int index[2] = {0, 0};
};

/// Taps of a window that crosses an edge: tested, then redirected or replaced.
template <class UT, class InputT>
class BoundaryTaps : public PaddedTaps<InputT> {
 public:
  using PaddedTaps<InputT>::PaddedTaps;
  UT& read() { return *this->input.getPad().readBoundary(this->input.getBlock(), this->sector, 2, this->index); }
};

/// Taps of a window that misses the input: redirected without a test.
template <class UT, class InputT>
class OutsideTaps : public PaddedTaps<InputT> {
 public:
  using PaddedTaps<InputT>::PaddedTaps;
  UT& read() { return *this->input.getPad().readOutside(this->input.getBlock(), this->sector, 2, this->index); }
};

/// Moves `taps` to each tap of `window` in turn, dimension 1 outer and dimension 0 inner, and calls `visit(n)` at tap
/// number n.
template <class TapsT, class VisitT>
inline void forEachTap(TapsT& taps, const TraversableBlock& window, VisitT&& visit) {
  const int width = window.getEnd().ptr[0] + 1, height = window.getEnd().ptr[1] + 1;
  int n = 0;
  for (int j = 0; j < height; ++j) {
    taps.beginRow(j);
    for (int i = 0; i < width; ++i, ++n) {
      taps.goTo(i);
      visit(n);
    }
  }
}

}  // namespace BP
