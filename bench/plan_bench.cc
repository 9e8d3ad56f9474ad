// Planning: what a call pays ahead of its first output.

#include <benchmark/benchmark.h>

#include <cstdint>
#include <vector>

#include "bench/allocation_count.h"
#include "tests/support/plan_scene.h"

namespace {

using namespace BP;
using test::PlanScene;

/// Takes the sectors as a processor does, and has them run in no time.
struct IdleProcessor {
  template <class SectorT>
  void runSector(SectorT& sector) {
    benchmark::DoNotOptimize(sector.getStart().ptr[0]);
  }
};

/// A replan and all sectors of it, as in each call of a processor.
void plan(benchmark::State& state, PlanScene&& scene, int sectors) {
  IdleProcessor processor;
  std::int64_t before = 0;
  for (auto _ : state) {
    before = allocationCount();
    scene.plan->setup(setupInvoke);
    scene.plan->forEachSector(&processor);
  }
  state.counters["allocations"] = static_cast<double>(allocationCount() - before);
  const int found = scene.plan->getInsideCount() + scene.plan->getBoundaryCount() + scene.plan->getOutsideCount();
  if (found != sectors) state.SkipWithError("the plan has another number of sectors");
  state.counters["sectors"] = found;
}

void planValid(benchmark::State& state) {
  plan(state, {{3, 3}, {1, 1}, {640, 480}, {{1, 1}, {638, 478}}, {}, 0, false}, 1);
}
void planSame(benchmark::State& state) {
  plan(state, {{3, 3}, {1, 1}, {640, 480}, {{0, 0}, {640, 480}}, {}, 1, true}, 9);
}
void planRegion(benchmark::State& state) {
  plan(state, {{3, 3}, {1, 1}, {640, 480}, {}, {{-5, -5}, {650, 490}}, 2, true}, 25);
}
BENCHMARK(planValid)->Name("plan/2-D/valid");
BENCHMARK(planSame)->Name("plan/2-D/same");
BENCHMARK(planRegion)->Name("plan/2-D/all-25-sectors");

}  // namespace
