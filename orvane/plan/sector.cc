#include "orvane/plan/sector.h"

#include <algorithm>

namespace BP {

Sector::~Sector() = default;

void Sector::reset(setupModeT stage) {
  if (stage == setupStart || stage == setupInvoke) isEmpty = false;
}

bool OuterSector::getIsListed(int d) const {
  const int *pre = preEdge->ptr, *post = postEdge->ptr;
  return std::find(pre, pre + preEdgeCount, d) != pre + preEdgeCount ||
         std::find(post, post + postEdgeCount, d) != post + postEdgeCount;
}

void OuterSector::reset(setupModeT stage) {
  Sector::reset(stage);
  if (stage != setupStart && stage != setupInvoke) return;
  preEdgeCount = 0;
  postEdgeCount = 0;
}

}  // namespace BP
