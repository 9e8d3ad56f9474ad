// A run allocates for its sectors, never for a position.
#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <new>
#include <vector>

#include "orvane/convcorr/conv_corr_tolk.h"
#include "orvane/host/reference_host.h"

namespace {
std::atomic<int> allocations{0};
}  // namespace

void* operator new(std::size_t size) {
  ++allocations;
  if (void* block = std::malloc(size)) return block;
  throw std::bad_alloc();
}
void operator delete(void* block) noexcept { std::free(block); }
void operator delete(void* block, std::size_t) noexcept { std::free(block); }

namespace BP::test {
namespace {

/// Allocations of one run of a 5 by 3 filter over a square input.
int allocationsOfARun(int side, PadTypeEnum padType, NormEnum norm, bool isVarSize) {
  int hDims[] = {5, 3}, uDims[] = {side, side};
  std::vector<float> h(15, 1.0F), u(static_cast<std::size_t>(side * side), 1.0F);
  std::vector<float> y(static_cast<std::size_t>((side + 4) * (side + 2)));
  const float padValue = 2;
  ReferenceHost host;
  ConvCorrTolk<float, float, float> front(host.getAdaptor(), 2, hDims, 2, uDims, padType, OutputModeFull,
                                          AlgorithmModeConvolution, norm, isVarSize);
  host.provideWorkVectors(front.getAllocator());
  front.setup(h.data(), u.data(), y.data(), &padValue, false);
  const int before = allocations;
  front.computeOutputs();
  return allocations - before;
}

TEST(AllocationTest, ARunAllocatesTheSameForAnySize) {
  for (const auto padType : {PadTypeConstant, PadTypeSymmetric}) {
    for (const auto norm : {NormNone, NormWindowEnergy}) {
      for (const bool isVarSize : {false, true}) {
        const int few = allocationsOfARun(8, padType, norm, isVarSize);
        EXPECT_EQ(allocationsOfARun(64, padType, norm, isVarSize), few);
        EXPECT_LE(few, 8 + 4) << "an index per boundary sector and the counters of two generators";
      }
    }
  }
}

}  // namespace
}  // namespace BP::test
