// Correlation of a volume, beside SciPy's.
#include <cstdio>
#include <stdexcept>

#include "bench/elements.h"
#include "bench/limits.h"
#include "orvane/filters/correlation_nd.h"

namespace bench {
namespace {

using namespace BP::filters;

/// What SciPy takes for the same, as its program says.
Sampler scipyCorrelation(const std::string& program, const std::string& type, std::int64_t side, double outputs) {
  const std::string command = program + ' ' + type + ' ' + std::to_string(side);
  return [command, outputs] {
    FILE* pipe = popen(command.c_str(), "r");
    double seconds = 0;
    const bool hasRead = pipe != nullptr && std::fscanf(pipe, "%lf", &seconds) == 1;
    if (pipe == nullptr || pclose(pipe) != 0 || !hasRead) throw std::runtime_error("cannot run " + command);
    return 1e9 * seconds / outputs;
  };
}

template <class T>
void measureCube(Harness& harness, std::int64_t side) {
  const Subject subject{"volume", elementName<T>(), extentsText(side, 3), "3x3x3", 27};
  if (!harness.wants(subject)) return;
  const Array<T> input = randomArray<T>({side, side, side});
  CorrelationND<T> job(randomArray<T>({3, 3, 3}), input.extents(),
                       {.mode = OutputMode::same, .pad = PadRule::symmetric});
  Array<T> output(job.outputExtents());
  const auto outputs = static_cast<double>(output.size());
  Sampler scipy;
  if (!harness.settings.scipy.empty()) {
    scipy = scipyCorrelation(harness.settings.scipy, elementName<T>(), side, outputs);
  }
  harness.measure(subject, timed([&] { job.run(input, output); }, outputs), {{"SciPy", scipy}}, arithmeticPeak<T>());
}

}  // namespace

void measureVolume(Harness& harness) {
  const std::int64_t side = harness.settings.quick ? 128 : 256;
  measureCube<float>(harness, side);
  measureCube<double>(harness, side);
}

}  // namespace bench
