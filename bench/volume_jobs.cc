// Correlation of a volume, beside SciPy's.
#include <string>

#include "bench/elements.h"
#include "bench/limits.h"
#include "orvane/filters/correlation_nd.h"

namespace bench {
namespace {

using namespace BP::filters;

template <class T>
void measureCube(Harness& harness, std::int64_t side) {
  const Subject subject{"volume", elementName<T>(), extentsText(side, 3), "3x3x3", 27};
  if (!harness.wants(subject)) return;
  const Array<T> input = randomArray<T>({side, side, side});
  CorrelationND<T> job(randomArray<T>({3, 3, 3}), input.extents(),
                       {.mode = OutputMode::same, .pad = PadRule::symmetric});
  Array<T> output(job.outputExtents());
  const auto outputs = static_cast<double>(output.size());
  const Sampler scipy = harness.scipySampler("correlate " + elementName<T>() + ' ' + std::to_string(side), outputs);
  harness.measure(subject, timed([&] { job.run(input, output); }, outputs), {{"SciPy", scipy}}, arithmeticPeak<T>());
}

}  // namespace

void measureVolume(Harness& harness) {
  const std::int64_t side = harness.settings.quick ? 128 : 256;
  measureCube<float>(harness, side);
  measureCube<double>(harness, side);
}

}  // namespace bench
