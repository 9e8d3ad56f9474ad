#pragma once

#include "orvane/exec/kernel.h"
#include "orvane/exec/sector_walk.h"

namespace BP {

/// The kernel of an algorithm with scores at two-dimensional positions: each operation is one walk (see sector_walk.h)
/// compiled for the sector's kind, the use of the results, the pad and the algorithm, without a branch on any of them.
/// With an algorithm that is walked by an iterator (it says so by `walksByIterator`) all operations are empty.
/// An algorithm can refuse a sector, by `canRun`; nothing is read or written then.
template <class Out, class Algo, class Alloc>
class TerminalKernel : public Kernel<Out, Alloc> {
 public:
  TerminalKernel(Alloc* alloc, Out* scratch, Algo* algo) : Kernel<Out, Alloc>(alloc, scratch), algorithm(algo) {}

  void setup(setupModeT stage) override {
    this->output->setup(stage);
    algorithm->setup(stage);
  }

  void searchOutside(OutsideSector& s, Out& result, CleverPtr<int>& best) override { searchOver(s, result, best); }
  void searchBoundary(BoundarySector& s, Out& result, CleverPtr<int>& best) override { searchOver(s, result, best); }
  void searchInside(InsideSector& s, Out& result, CleverPtr<int>& best) override { searchOver(s, result, best); }
  void runOutside(OutsideSector& s, Out& result) override { runOver(s, result); }
  void runBoundary(BoundarySector& s, Out& result) override { runOver(s, result); }
  void runInside(InsideSector& s, Out& result) override {
    if (!canRun()) return;
    if constexpr (requires { algorithm->runWholeSector(s, result); }) {
      if (algorithm->runWholeSector(s, result)) return;
    }
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

 private:
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

  /// Has `walk(scorer, geometry)` go over the sector, unless it is not to be run.
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
};

}  // namespace BP
