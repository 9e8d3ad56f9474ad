#pragma once

#include <algorithm>

#include "orvane/core/clever_ptr.h"
#include "orvane/core/enums.h"
#include "orvane/platform/export.h"

namespace BP {

/// The tables of a processor that slides a window `h` over an input `u` into an output `y`, an entry per dimension.
///
/// They say where the three lie in the frame whose zero is the input's first element (see block.h), and which positions
/// of the window's centre have an output: the region of support, `ros`. `y1` is the scratch output of one element. The
/// processor's maker owns the extents of window and input, and the window's centre.
struct ORVANE_API WindowTables {
  CleverPtr<int> rosLoc, rosDims;
  CleverPtr<int> hOrigin, hLoc, hStart, hEnd;
  CleverPtr<int> uOrigin, uLoc;
  CleverPtr<int> yOrigin, yLoc, yDims;  ///< origin and extents are filled by the plan
  CleverPtr<int> y1Origin, y1Loc, y1Dims;

  /// Makes the tables, in the order above, with `nDims` entries each, all 0.
  template <class AllocT>
  WindowTables(AllocT* allocator, int nDims) {
    const auto make = [&](CleverPtr<int>& table, const char* name) {
      allocator->allocateArray(table, nDims, "ignore", name);
      std::fill_n(table.ptr, nDims, 0);
    };
    make(rosLoc, "rosLoc");
    make(rosDims, "rosDims");
    make(hOrigin, "hOrigin");
    make(hLoc, "hLoc");
    make(hStart, "hStart");
    make(hEnd, "hEnd");
    make(uOrigin, "uOrigin");
    make(uLoc, "uLoc");
    make(yOrigin, "yOrigin");
    make(yLoc, "yLoc");
    make(yDims, "yDims");
    make(y1Origin, "y1Origin");
    make(y1Loc, "y1Loc");
    make(y1Dims, "y1Dims");
  }

  /// Places window, input and scratch output: the window's centre on the position, all else at 0.
  void place(int nDims, const CleverPtr<int>& hCentre);
  /// hStart := 0, hEnd := hStart + hDims - 1.
  void computeHStart(int nDims);
  void computeHEnd(int nDims, const CleverPtr<int>& hDims);

  /// Computes the region of support of an output mode; any other value does not change it. With t = uLoc - hLoc, the
  /// centre:
  ///
  ///     valid  starts at t             extent u - h + 1   the window lies wholly in the input
  ///     same   starts at uLoc          extent u           the centre lies on each input element
  ///     full   starts at t - h + 1     extent u + h - 1   window and input overlap
  void computeROS(OutputModeEnum outputMode, int nDims, const CleverPtr<int>& hDims, const CleverPtr<int>& uDims);
};

}  // namespace BP
