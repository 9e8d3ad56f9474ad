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
    if constexpr (hasStrips) {
      const auto& u = algorithm->getInput().getBlock();
      lines.resize(filter, u, rank, searchesInStrips || u.getStored() != Stored::asComputed);
    } else {
      lines.resize(filter, algorithm->getInput().getBlock(), rank);
    }
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
  MinIdxCollector<Alloc, typename Kernel<Out, Alloc>::Value>* getBest() override {
    if constexpr (requires { algorithm->getMinIdxCollector(); }) return &algorithm->getMinIdxCollector();
    return nullptr;
  }

 protected:
  /// Has the lanes compute a sector, whose edge lists are `edges`; false, and nothing done, if they do not.
  bool runByLines(const Sector& sector, const OuterSector* edges, Out& result) {
    if constexpr (!std::is_same_v<Lanes, NoLanes>) {
      if ((edges != nullptr && Algo::InputType::padType == 0) || !canRun()) return false;
      return lines.run(lineSource(), sector, edges, algorithm->getFilter(), algorithm->getInput().getBlock(),
                       result.getBlock(),
                       LineTarget{result.getBlock().getData().ptr, result.getBlock().getStrides().ptr,
                                  result.getBlock().getStored(), &result.getBlock().countClipped()});
    }
    return false;
  }

 private:
  auto lineSource() const {
    auto& in = algorithm->getInput();
    const auto& u = in.getBlock();
    return LineSource<std::remove_pointer_t<decltype(u.getData().ptr)>>{
        u.getData().ptr,          u.getDims().ptr,    u.getStrides().ptr, u.getNumDims(),
        Algo::InputType::padType, in.padValues().ptr, u.getStored()};
  }

  using Lanes = typename Algo::Lanes;
  static constexpr bool isEmpty = requires { Algo::walksByIterator; };

  /// Whether lanes search: their scores are those of the walk wherever nothing is read beyond an edge.
  static constexpr bool findsLeast = requires(Algo & algo, const WalkGeometry& walk) { algo.findLeast(walk); };
  static constexpr bool hasStrips = !isEmpty && !std::is_same_v<Lanes, NoLanes> &&
                                    std::is_same_v<typename WalkOf<Lanes>::type, LineWalk<Lanes>> &&
                                    Algo::InputType::padType == 0;
  static constexpr bool searchesInStrips = hasStrips && !findsLeast;
  static constexpr bool searchesInLanes = searchesInStrips || (!isEmpty && findsLeast && Algo::InputType::padType == 0);

  /// Searches a sector as the walk would; false, and nothing done, if lanes do not. What the walk leaves in the scratch
  /// output, the score of the last position, is there as well.
  template <class SectorT, class ScorerT>
  bool searchByLanes(SectorT& sector, ScorerT& score, const WalkGeometry& walk, BestMatch<Algo, Out>& best) {
    if (!searchesInLanes || !lanes::areInUse()) return false;
    if constexpr (!searchesInLanes) {
      return false;
    } else if constexpr (!std::is_same_v<SectorT, InsideSector>) {
      best.take(score, walk.lo[0], walk.lo[1]);  // all positions have this score, and the first of equals stays
      return true;
    } else if constexpr (findsLeast) {
      if (!algorithm->canFindLeast()) {
        if constexpr (hasStrips) return searchInStrips(sector, walk, best);
        return false;
      }
      best.take(score, walk.lo[0], walk.lo[1]);  // even a NaN, which stays for good
      const auto found = algorithm->findLeast(walk);
      if (found.isFound()) best.take(score, walk.lo[0] + found.x, walk.lo[1] + found.y);
      score(walk.hi[0], walk.hi[1]);
      return true;
    } else {
      return searchInStrips(sector, walk, best);
    }
  }

  /// The same for scores that have to be complete before they are compared.
  bool searchInStrips(const InsideSector& sector, const WalkGeometry& walk, BestMatch<Algo, Out>& best) {
    const auto& u = algorithm->getInput().getBlock();
    const auto take = [&](auto* strip, int firstRow, int rows, int width) {
      for (int r = 0; r < rows; ++r) {
        for (int x = 0; x < width; ++x) best.put(strip[r * width + x], walk.lo[0] + x, walk.lo[1] + firstRow + r);
      }
      assign(elementAt(this->output->getBlock().getData().ptr, 0), strip[rows * width - 1]);
    };
    return lines.runInStrips(lineSource(), sector, algorithm->getFilter(), u, take);
  }

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
        BestMatch<Algo, Out> bestMatch(*algorithm, *this->output, bestIndex);
        if (searchByLanes(sector, scorer, geometry, bestMatch)) return;
        searchWalk(scorer, geometry, bestMatch);
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
