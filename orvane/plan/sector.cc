#include "orvane/plan/sector.h"

namespace BP {

Sector::~Sector() = default;

void Sector::reset(setupModeT stage) {
  if (stage == setupStart || stage == setupInvoke) isEmpty = false;
}

void OuterSector::reset(setupModeT stage) {
  Sector::reset(stage);
  if (stage != setupStart && stage != setupInvoke) return;
  preEdgeCount = 0;
  postEdgeCount = 0;
}

}  // namespace BP
