// A filter along each of the two dimensions in turn.
#include <initializer_list>

#include "bench/limits.h"
#include "bench/opencv_peer.h"
#include "bench/scene.h"

namespace bench {
namespace {

using namespace BP::filters;

template <class UT, class HT>
void measureWindow(Harness& harness, std::int64_t side, std::int64_t window) {
  using Output = ConvolutionOutput<UT, HT>;  // of the first pass too
  const Subject subject{"separable",
                        typeName<UT, HT>(),
                        extentsText(side),
                        extentsText(window),
                        2.0 * static_cast<double>(window),
                        (pairsPerTap<UT, HT> + pairsPerTap<Output, HT>) / 2};
  if (!harness.wants(subject)) return;
  const Array<UT> input = randomArray<UT>({side, side});
  const Array<HT> first = randomArray<HT>({window}), second = randomArray<HT>({window});
  SeparableConvolution<UT, HT> job(first, second, input.extents(), mirrored);
  Array<Output> output(job.outputExtents());
  const auto outputs = static_cast<double>(output.size());
  const std::function<void()> run = [&] { job.run(input, output); };
  Sampler peer;
  Array<Output> peerOutput(output.extents());
  if constexpr (std::is_same_v<UT, HT> && !isComplex<UT>) {
    const std::function<void()> theirs = openCvSeparable<UT>(input, first, second, peerOutput);
    if (theirs) {
      run();
      theirs();
      checkPeer(output, peerOutput, static_cast<double>(window * window));
      peer = timed(theirs, outputs);
    }
  }
  harness.measure(subject, timed(run, outputs), {{"sepFilter2D", peer}}, arithmeticPeak<RealOf<UT>>());
}

template <class UT, class HT>
void measureType(Harness& harness) {
  const bool isReal = pairsPerTap<UT, HT> == 1;
  if (harness.settings.quick) {
    if (isReal) measureWindow<UT, HT>(harness, 512, 15);
    return;
  }
  for (const std::int64_t side : {512, 1024, 4096}) {
    for (const std::int64_t window : {3, 7, 15, 31}) {
      if (isReal || side == 1024) measureWindow<UT, HT>(harness, side, window);
    }
  }
}

}  // namespace

void measureSeparable(Harness& harness) {
#define ORVANE_MEASURE(UT, HT) measureType<UT, HT>(harness);
  ORVANE_FOR_CONVOLUTION_PAIRS(ORVANE_MEASURE)
#undef ORVANE_MEASURE
}

}  // namespace bench
