#pragma once

#include <cstdlib>

#include "orvane/core/enums.h"

namespace BP::test {

constexpr PadTypeEnum allPads[] = {PadTypeConstant, PadTypeReplicate, PadTypeSymmetric, PadTypeCircular, PadTypeMirror};
constexpr OutputModeEnum allModes[] = {OutputModeValid, OutputModeSame, OutputModeFull};

/// Walks from coordinate 0 to coordinate `i` element by element: what the rules say, with no formula.
inline int walkTo(PadTypeEnum padType, int i, int n) {
  int at = 0, direction = 1;
  const int sign = i < 0 ? -1 : 1;
  for (int step = 0; step < std::abs(i); ++step) {
    const int next = at + sign * direction;
    if (next >= 0 && next < n) {
      at = next;
    } else if (padType == PadTypeSymmetric) {
      direction = -direction;  // the edge element stands twice
    } else if (padType == PadTypeCircular) {
      at = next < 0 ? n - 1 : 0;
    } else if (padType == PadTypeMirror && n > 1) {
      direction = -direction;  // the edge element stands once
      at += sign * direction;
    }
  }
  return at;
}

}  // namespace BP::test
