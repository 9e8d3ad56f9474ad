#pragma once

#include "orvane/core/enums.h"
#include "orvane/plan/region.h"
#include "orvane/platform/export.h"

namespace BP {

/// Two regions that the output must lie in, and how far processing reaches beyond the inside.
///
/// `reach` 0: positions whose window lies wholly in the input; 1: also those whose window crosses an edge; 2 (and any
/// other value): also those whose window misses the input. The regions belong to the maker.
class ORVANE_API Scope {
 public:
  Scope(const Region& one, const Region& other, int reachCode) : first(&one), second(&other), reach(reachCode) {}
  virtual ~Scope();

  const Region& getFirst() const { return *first; }
  const Region& getSecond() const { return *second; }
  int getReach() const { return reach; }

 private:
  const Region* first;
  const Region* second;
  int reach;
};

/// The reach that an output mode needs: 0 for valid, 1 for same and full, 2 for any other value.
ORVANE_API int reachOf(OutputModeEnum outputMode);

}  // namespace BP
