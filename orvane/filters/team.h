#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

#include "orvane/filters/bands.h"
#include "orvane/filters/crew.h"

namespace BP::filters::detail {

/// The members of a job that share its runs: each has a processor of its own over the same arrays, and runs in a thread
/// of its own. The first one exists from the beginning, the others from the first run that needs them.
///
/// Member has `begin()`, which begins a run of its processor with the job's arrays, `getProcessor()`, and
/// `compute(work)`, which calls `work(processor)` and throws if that fails.
template <class Member>
class Team {
 public:
  using Make = std::function<std::unique_ptr<Member>()>;

  /// Keeps the crew, whose workers the members are.
  Team(Crew& workers, Make makeMember)
      : crew(workers), make(std::move(makeMember)), members(static_cast<std::size_t>(crew.getThreads())) {
    members[0] = make();
    hasBegun.resize(members.size());
  }

  Member& first() { return *members[0]; }
  /// The member of a worker, which has begun the present run. Calls for different workers may come at the same time.
  Member& at(int worker) {
    const auto i = static_cast<std::size_t>(worker);
    if (!members[i]) members[i] = make();
    if (!hasBegun[i]) members[i]->begin();
    hasBegun[i] = 1;
    return *members[i];
  }
  template <class Visit>
  void forEach(Visit&& visit) {
    for (const auto& member : members) {
      if (member) visit(*member);
    }
  }
  /// The same for the members that have begun the present run.
  template <class Visit>
  void forEachInRun(Visit&& visit) {
    for (std::size_t i = 0; i < members.size(); ++i) {
      if (hasBegun[i] != 0) visit(*members[i]);
    }
  }
  /// Begins a run: the first member, and the others when they are asked for.
  void beginRun() {
    std::ranges::fill(hasBegun, char{0});
    at(0);
  }

  /// Runs all phases over arrays of `rank` dimensions. An output costs about as much as `taps` products.
  void run(std::size_t rank, std::int64_t taps) {
    beginRun();
    AnyBP& processor = first().getProcessor();
    const int phases = processor.getPhaseCount();
    std::array<Bands, 2> bands;
    int count = 0;
    for (int phase = 0; phase < phases; ++phase) {
      BoxTables box;
      processor.getPhaseBox(phase, box.loc.data(), box.dims.data());
      Bands& cut = bands[static_cast<std::size_t>(phase)];
      cut = {box, rank, taps, crew};
      count += cut.size();
    }
    crew.begin(count);
    for (int phase = 0; phase < phases; ++phase) runPhase(phase, bands[static_cast<std::size_t>(phase)]);
    crew.end();
  }

  /// Runs one phase of a run that has begun.
  void runPhase(int phase, const Bands& bands) {
    crew.run(bands.size(), [&](int worker, int k) {
      at(worker).compute([&](AnyBP& processor) { processor.runBand(phase, bands[k].get()); });
    });
  }

 private:
  Crew& crew;
  Make make;
  std::vector<std::unique_ptr<Member>> members;
  std::vector<char> hasBegun;
};

}  // namespace BP::filters::detail
