// Planning: what a call pays ahead of its first output.
#include <stdexcept>

#include "bench/harness.h"
#include "tests/support/plan_scene.h"

namespace bench {
namespace {

using namespace BP;
using test::PlanScene;

/// Takes the sectors as a processor does, and has them run in no time.
struct IdleProcessor {
  template <class SectorT>
  void runSector(SectorT& sector) {
    keep(sector.getStart().ptr[0]);
  }
};

/// A replan and all sectors of it, as in each call of a processor.
void plan(Harness& harness, PlanScene&& scene, const char* type, int sectors) {
  const Subject subject{"plan", type, "640x480", "3x3"};
  if (!harness.wants(subject)) return;
  IdleProcessor processor;
  const auto run = [&] {
    scene.plan->setup(setupInvoke);
    scene.plan->forEachSector(&processor);
  };
  run();
  const int found = scene.plan->getInsideCount() + scene.plan->getBoundaryCount() + scene.plan->getOutsideCount();
  if (found != sectors) throw std::runtime_error("a plan has another number of sectors");
  harness.measure(subject, timed(run, 1));
}

}  // namespace

void measurePlan(Harness& harness) {
  plan(harness, {{3, 3}, {1, 1}, {640, 480}, {{1, 1}, {638, 478}}, {}, 0, false}, "valid, 1 sector", 1);
  plan(harness, {{3, 3}, {1, 1}, {640, 480}, {{0, 0}, {640, 480}}, {}, 1, true}, "same, 9 sectors", 9);
  plan(harness, {{3, 3}, {1, 1}, {640, 480}, {}, {{-5, -5}, {650, 490}}, 2, true}, "all 25 sectors", 25);
}

}  // namespace bench
