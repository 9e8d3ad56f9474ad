#include "orvane/plan/margins.h"

#include <algorithm>

namespace BP {

Margins::~Margins() = default;

DimensionSections sectionsOf(const DimensionGeometry& g) {
  if (g.outputExtent < 1) {
    const int at = g.outputOrigin;
    return {{at, at, at, at, at}, {0, 0, 0, 0, 0}, false};
  }
  const auto clamp = [&](int count) { return std::clamp(count, 0, g.outputExtent); };

  // Numbers of outputs before the input's first element and behind its last one, for a window of one element.
  const int before = g.inputOrigin - g.outputOrigin;
  const int behind = g.outputEnd - g.inputEnd + g.outputOrigin;
  const int filterReach = g.filterLoc + g.filterEnd;  // the window's last element, relative to the position

  const int lowOut = clamp(before - filterReach);   // the window's last element lies below the input
  const int lowAll = clamp(before - g.filterLoc);   // the window's first element lies below the input
  const int highOut = clamp(behind + g.filterLoc);  // counted from the top: the first element lies above the input
  const int highAll = clamp(behind + filterReach);  // the last element lies above the input

  const int lowStart = g.outputOrigin + lowOut;
  int lowWidth = lowAll - lowOut;
  const int highOutStart = g.outputOrigin + g.outputEnd + 1 - highOut;
  int highWidth = highAll - highOut;
  int highStart = highOutStart - highWidth;

  const bool overlap = lowStart + lowWidth - 1 >= highStart;
  if (overlap) {
    const int lowEnd = lowStart + lowWidth;
    lowWidth = highStart - lowStart;
    highWidth = highOutStart - lowEnd;
    highStart = lowEnd;
  }
  return {{lowStart + lowWidth, lowStart, highStart, g.outputOrigin, highOutStart},
          {g.outputExtent - highWidth - highOut - lowWidth - lowOut, lowWidth, highWidth, lowOut, highOut},
          overlap};
}

}  // namespace BP
