// Correlation of a volume, beside SciPy's in the same run.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <string>

#include "orvane/filters/correlation_nd.h"

namespace {

using namespace BP::filters;

/// A float volume of `side` in each dimension with a filter of 3 by 3 by 3.
void correlateVolume(benchmark::State& state) {
  const std::int64_t side = state.range(0);
  const Array<float> volume({side, side, side});
  Array<float> filter({3, 3, 3});
  std::fill(filter.begin(), filter.end(), 1.0F);
  CorrelationND<float> correlation(filter, volume.extents(), {.mode = OutputMode::same, .pad = PadRule::symmetric});
  Array<float> result(correlation.outputExtents());
  for (auto _ : state) correlation.run(volume, result.view());
  state.SetItemsProcessed(state.iterations() * side * side * side * 27);
}

/// Seconds that SciPy takes for the same; below 0 where it is not to be had.
double scipySeconds(std::int64_t side) {
  const std::string program =
      "import numpy, scipy.ndimage, time\n"
      "u = numpy.zeros((" +
      std::to_string(side) +
      ",) * 3, 'f4')\n"
      "h = numpy.ones((3, 3, 3), 'f4')  # it skips zeros\n"
      "y = numpy.empty_like(u)\n"
      "start = time.perf_counter()\n"
      "scipy.ndimage.correlate(u, h, output=y, mode='reflect')\n"
      "print(time.perf_counter() - start)\n";
  FILE* pipe = popen(("/usr/bin/python3 -c \"" + program + "\" 2>/dev/null").c_str(), "r");
  if (pipe == nullptr) return -1;
  double seconds = -1;
  if (std::fscanf(pipe, "%lf", &seconds) != 1) seconds = -1;
  pclose(pipe);
  return seconds;
}

void scipyVolume(benchmark::State& state) {
  for (auto _ : state) {
    const double seconds = scipySeconds(state.range(0));
    if (seconds < 0) return state.SkipWithError("scipy is not installed");
    state.SetIterationTime(seconds);
  }
  state.SetItemsProcessed(state.iterations() * state.range(0) * state.range(0) * state.range(0) * 27);
}

BENCHMARK(correlateVolume)->Name("volume 3x3x3/orvane")->Arg(256)->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK(scipyVolume)
    ->Name("volume 3x3x3/scipy")
    ->Arg(256)
    ->Unit(benchmark::kMillisecond)
    ->Iterations(3)
    ->UseManualTime();

}  // namespace
