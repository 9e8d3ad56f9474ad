#include "orvane/lanes/target.h"

#include <atomic>

#define ORVANE_LANES_LATER_AVX512
#include "orvane/lanes/dispatch.h"

namespace BP::lanes {
namespace {

constexpr struct {
  std::int64_t bit;
  std::string_view name;
} known[] = {{HWY_AVX3_DL, "avx512dl"}, {HWY_AVX3, "avx512"}, {HWY_AVX2, "avx2"},
             {HWY_SSE4, "sse4"},        {HWY_NEON, "neon"},   {HWY_SCALAR, "scalar"}};

/// The targets of this build that the machine has, as bits; the scalar one runs anywhere.
std::int64_t available() { return (hwy::SupportedTargets() | HWY_SCALAR) & HWY_TARGETS; }

std::int64_t fastest() {
  const std::int64_t bits = available();
  return bits & -bits;
}

std::atomic<std::int64_t>& inUse() {
  static std::atomic<std::int64_t> bit(fastest());
  return bit;
}

}  // namespace

std::int64_t targetInUse() { return inUse().load(std::memory_order_relaxed); }

std::vector<std::string_view> getTargets() {
  std::vector<std::string_view> names;
  for (const auto& target : known) {
    if ((available() & target.bit) != 0) names.push_back(target.name);
  }
  return names;
}

bool areInUse() { return targetInUse() != 0; }

std::string_view getTarget() {
  if (!areInUse()) return plain;
  for (const auto& target : known) {
    if (target.bit == targetInUse()) return target.name;
  }
  return "unknown";
}

bool forceTarget(std::string_view name) {
  if (name.empty()) {
    inUse() = fastest();
    return true;
  }
  if (name == plain) {
    inUse() = 0;
    return true;
  }
  for (const auto& target : known) {
    if (target.name == name && (available() & target.bit) != 0) {
      inUse() = target.bit;
      return true;
    }
  }
  return false;
}

}  // namespace BP::lanes
