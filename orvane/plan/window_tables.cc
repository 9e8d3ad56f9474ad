#include "orvane/plan/window_tables.h"

namespace BP {

void WindowTables::place(int nDims, const CleverPtr<int>& hCentre) {
  for (int d = 0; d < nDims; ++d) {
    hOrigin.ptr[d] = 0;
    hLoc.ptr[d] = -hCentre.ptr[d];
    uLoc.ptr[d] = 0;
    uOrigin.ptr[d] = 0;
    yLoc.ptr[d] = 0;
    y1Loc.ptr[d] = 0;
    y1Origin.ptr[d] = 0;
    y1Dims.ptr[d] = 1;
  }
}

void WindowTables::computeHStart(int nDims) {
  for (int d = 0; d < nDims; ++d) hStart.ptr[d] = 0;
}

void WindowTables::computeHEnd(int nDims, const CleverPtr<int>& hDims) {
  for (int d = 0; d < nDims; ++d) hEnd.ptr[d] = hStart.ptr[d] + hDims.ptr[d] - 1;
}

void WindowTables::computeROS(OutputModeEnum outputMode, int nDims, const CleverPtr<int>& hDims,
                              const CleverPtr<int>& uDims) {
  for (int d = 0; d < nDims; ++d) {
    const int h = hDims.ptr[d], u = uDims.ptr[d], t = uLoc.ptr[d] - hLoc.ptr[d];
    switch (outputMode) {
      case OutputModeValid:
        rosLoc.ptr[d] = t;
        rosDims.ptr[d] = u - h + 1;
        break;
      case OutputModeSame:
        rosLoc.ptr[d] = uLoc.ptr[d];
        rosDims.ptr[d] = u;
        break;
      case OutputModeFull:
        rosLoc.ptr[d] = t - h + 1;
        rosDims.ptr[d] = u + h - 1;
        break;
      default: break;
    }
  }
}

}  // namespace BP
