// The table of benchmarks: see docs/performance.md. It is run by bench/run, which knows where SciPy is.
#include <CLI/CLI.hpp>

#include "bench/harness.h"
#include "orvane/lanes/target.h"

// The library of SystemC, measured beside ours, asks for it; nothing here is simulated.
extern "C" __attribute__((visibility("default"))) int sc_main(int, char*[]) { return 0; }

namespace {

std::string targetNames() {
  std::string names;
  for (const std::string_view name : BP::lanes::getTargets()) names += std::string(name) + ", ";
  return names + std::string(BP::lanes::plain);
}

int run(int argc, char** argv) {
  bench::Settings settings;
  std::string json;
  CLI::App app("Measures Orvane beside its peers and beside the limits of the processor.");
  app.add_option("--json", json, "write what was measured to FILE as well")->type_name("FILE");
  app.add_option("--filter", settings.filter,
                 "only rows in which each word of TEXT begins a word of job, type, image or window")
      ->type_name("TEXT");
  app.add_flag("--quick", settings.quick, "few sizes and repeats, in less than a minute");
  app.add_option("--target", settings.target, "the vector target to run: " + targetNames())->type_name("NAME");
  app.add_option("--scipy", settings.scipy, "the program that times SciPy")->type_name("PROGRAM");
  try {
    app.parse(argc, argv);
  } catch (const CLI::Success& asked) {
    return app.exit(asked);
  } catch (const CLI::ParseError& error) {
    throw std::invalid_argument(error.what());
  }
  if (!BP::lanes::forceTarget(settings.target)) {
    throw std::invalid_argument("--target: " + settings.target + "; allowed are " + targetNames());
  }
  settings.target = BP::lanes::getTarget();

  bench::Harness harness(settings);
  for (const auto measure : {bench::measureLimits, bench::measureConvolution, bench::measureSeparable,
                             bench::measureMedians, bench::measureMatching, bench::measureVolume, bench::measureCalls,
                             bench::measurePlan, bench::measureFixedConvolutions, bench::measureFixedPoint}) {
    measure(harness);
  }
  if (!harness.hasRows()) throw std::invalid_argument("--filter: no row has all of: " + settings.filter);
  if (!json.empty()) harness.writeJson(json);
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    return run(argc, argv);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "orvane: %s\n", error.what());
    return 2;
  }
}
