#include "orvane/plan/scope.h"

namespace BP {

Scope::~Scope() = default;

int reachOf(OutputModeEnum outputMode) {
  switch (outputMode) {
    case OutputModeValid: return 0;
    case OutputModeSame:
    case OutputModeFull: return 1;
    default: return 2;
  }
}

}  // namespace BP
