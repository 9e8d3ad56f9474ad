#pragma once

#include <type_traits>

#include "orvane/exec/fixed_sum_walk.h"
#include "orvane/exec/kernel.h"
#include "orvane/exec/line_walk.h"
#include "orvane/exec/sector_walk.h"

namespace BP {

/// The kernel of an algorithm with scores at two-dimensional positions. Each operation is one walk (see sector_walk.h),
/// compiled for the sector's kind, the use of the results, the pad and the algorithm, without a branch on any of them.
/// All operations are empty for an algorithm with a member `walksByIterator`. An algorithm can refuse to run, by
/// `canRun`; nothing is read or written then. It can take over an inside sector, by `runWholeSector`, and it can have
/// lane sums, which compute inside and boundary sectors line by line (see `LineWalk`). Sectors that these decline take
/// the walk.
template <class Out, class Algo, class Alloc>
class TerminalKernel : public Kernel<Out, Alloc> {
 public:
  TerminalKernel(Alloc* alloc, Out* scratch, Algo* algo)
      : Kernel<Out, Alloc>(alloc, scratch), algorithm(algo), lines(&algo->getLaneSums()) {}

  void setup(setupModeT stage) override {
    this->output->setup(stage);
    algorithm->setup(stage);
    if (stage != setupResize && stage != setupStart) return;
    const auto& filter = algorithm->getFilter();
    const int rank = isEmpty ? filter.getNumDims() : std::min(filter.getNumDims(), 2);
    lines.resize(filter, algorithm->getInput().getBlock(), rank);
    if constexpr (requires { lines.setScratch(this->output->getBlock().getData().ptr); }) {
      lines.setScratch(this->output->getBlock().getData().ptr);
    }
  }

  void searchOutside(OutsideSector& s, Out& result, CleverPtr<int>& best) override { searchOver(s, result, best); }
  void searchBoundary(BoundarySector& s, Out& result, CleverPtr<int>& best) override { searchOver(s, result, best); }
  void searchInside(InsideSector& s, Out& result, CleverPtr<int>& best) override { searchOver(s, result, best); }
  void runOutside(OutsideSector& s, Out& result) override { runOver(s, result); }
  void runBoundary(BoundarySector& s, Out& result) override {
    if (isEmpty || runByLines(s, &s, result)) return;
    runOver(s, result);
  }
  void runInside(InsideSector& s, Out& result) override {
    if (!canRun()) return;
    if constexpr (requires { algorithm->runWholeSector(s, result); }) {
      if (algorithm->runWholeSector(s, result)) return;
    }
    if (isEmpty || runByLines(s, nullptr, result)) return;
    runOver(s, result);
  }
  void stepSearchOutside(OutsideSector& s, Out& result, CleverPtr<int>& best) override {
    stepSearchOver(s, result, best);
  }
  void stepSearchBoundary(BoundarySector& s, Out& result, CleverPtr<int>& best) override {
    stepSearchOver(s, result, best);
  }
  void stepSearchInside(InsideSector& s, Out& result, CleverPtr<int>& best) override {
    stepSearchOver(s, result, best);
  }

  Algo& getAlgorithm() const { return *algorithm; }

 protected:
  /// Has the lanes compute a sector, whose edge lists are `edges`; false, and nothing done, if they do not.
  bool runByLines(const Sector& sector, const OuterSector* edges, Out& result) {
    if constexpr (!std::is_same_v<Lanes, NoLanes>) {
      auto& in = algorithm->getInput();
      constexpr int padType = Algo::InputType::padType;
      if (edges != nullptr && padType == 0) return false;
      const auto& u = in.getBlock();
      const LineSource source{u.getData().ptr, u.getDims().ptr, u.getNumDims(), padType, in.padValues().ptr};
      return lines.run(source, sector, edges, algorithm->getFilter(), u, result.getBlock(),
                       result.getBlock().getData().ptr);
    }
    return false;
  }

 private:
  using Lanes = typename Algo::Lanes;
  static constexpr bool isEmpty = requires { Algo::walksByIterator; };

  bool canRun() const {
    if constexpr (requires { algorithm->canRun(); }) return algorithm->canRun();
    return true;
  }

  auto scorerOf(InsideSector& sector, const WalkGeometry& walk) {
    return InsideScorer<Algo, Out>(*algorithm, sector, *this->output, walk);
  }
  template <class SectorT>
  auto scorerOf(SectorT& sector, const WalkGeometry& walk) {
    return OuterScorer<Algo, Out, SectorT>(*algorithm, sector, *this->output, walk);
  }

  /// Calls `walk(scorer, geometry)` for the sector, unless the algorithm refuses.
  template <class SectorT, class WalkT>
  void walkOver(SectorT& sector, const Out& result, WalkT&& walk) {
    if constexpr (!isEmpty) {
      if (!canRun()) return;
      const WalkGeometry geometry = walkGeometry(*algorithm, sector, result);
      walk(scorerOf(sector, geometry), geometry);
    }
  }

  template <class SectorT>
  void runOver(SectorT& sector, Out& result) {
    walkOver(sector, result,
             [&](auto scorer, const WalkGeometry& geometry) { runWalk(scorer, geometry, *this->output, result); });
  }

  template <class SectorT>
  void searchOver(SectorT& sector, Out& result, CleverPtr<int>& bestIndex) {
    if constexpr (!isEmpty) {
      walkOver(sector, result, [&](auto scorer, const WalkGeometry& geometry) {
        searchWalk(scorer, geometry, BestMatch<Algo, Out>(*algorithm, *this->output, bestIndex));
      });
    }
  }

  template <class SectorT>
  void stepSearchOver(SectorT& sector, Out& result, CleverPtr<int>& bestIndex) {
    if constexpr (!isEmpty) {
      walkOver(sector, result, [&](auto scorer, const WalkGeometry& geometry) {
        stepSearchWalk(scorer, geometry, BestMatch<Algo, Out>(*algorithm, *this->output, bestIndex), bestIndex);
      });
    }
  }

  Algo* algorithm;
  typename WalkOf<Lanes>::type lines;
};

}  // namespace BP
