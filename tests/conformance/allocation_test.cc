// A run allocates for its sectors, never for a position.
#include <gtest/gtest.h>

#include <atomic>
#include <complex>
#include <cstdlib>
#include <memory>
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

/// Allocations of one run of a 5 by 3 filter, or of filters of 5 and 3 taps, over a square input.
template <class HT, class UT>
int allocationsOfARun(int side, PadTypeEnum padType, NormEnum norm, bool isVarSize, bool isSeparable = false) {
  using YT = decltype(UT() * HT());
  int hDims[] = {5, 3}, h1Dims[] = {5, 1}, h2Dims[] = {1, 3}, uDims[] = {side, side};
  std::vector<HT> h(15, HT(1)), h2(3, HT(1));
  std::vector<UT> u(static_cast<std::size_t>(side * side), UT(1));
  std::vector<YT> y(static_cast<std::size_t>((side + 4) * (side + 2)));
  const UT padValue(2);
  ReferenceHost host;
  using Front = ConvCorrTolk<HT, UT, YT>;
  const auto front = isSeparable ? std::make_unique<Front>(host.getAdaptor(), 2, h1Dims, 2, h2Dims, 2, uDims, padType,
                                                           OutputModeFull, AlgorithmModeConvolution, isVarSize)
                                 : std::make_unique<Front>(host.getAdaptor(), 2, hDims, 2, uDims, padType,
                                                           OutputModeFull, AlgorithmModeConvolution, norm, isVarSize);
  host.provideWorkVectors(front->getAllocator());
  if (isSeparable) {
    front->setup(h.data(), h2.data(), u.data(), y.data(), &padValue, false);
  } else {
    front->setup(h.data(), u.data(), y.data(), &padValue, false);
  }
  const int before = allocations;
  front->computeOutputs();
  return allocations - before;
}

TEST(AllocationTest, ARunAllocatesTheSameForAnySize) {
  for (const auto padType : {PadTypeConstant, PadTypeSymmetric}) {
    for (const auto norm : {NormNone, NormWindowEnergy}) {
      for (const bool isVarSize : {false, true}) {
        const int few = allocationsOfARun<float, float>(8, padType, norm, isVarSize);
        EXPECT_EQ((allocationsOfARun<float, float>(64, padType, norm, isVarSize)), few);
        EXPECT_LE(few, 8 + 4) << "an index per boundary sector and the counters of two generators";
        using Complex = std::complex<double>;
        EXPECT_LE((allocationsOfARun<Complex, Complex>(300, padType, norm, isVarSize)), few);
        EXPECT_LE((allocationsOfARun<float, float>(300, padType, norm, isVarSize, true)), 2 * few);
      }
    }
  }
}

}  // namespace
}  // namespace BP::test
