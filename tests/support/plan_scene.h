#pragma once

#include <memory>
#include <set>
#include <vector>

#include "orvane/host/reference_host.h"
#include "orvane/input/pad_extended_input.h"
#include "orvane/plan/moving_roi_plan.h"

namespace BP::test {

/// A table that a vector fills; write through `ptr`, or assign a list of the same length.
struct Table : CleverPtr<int> {
  std::vector<int> values;
  explicit Table(std::vector<int> v) : values(std::move(v)) { ptr = values.data(); }
};

/// A rectangle of positions, and whether there is one at all.
struct RegionSpec {
  std::vector<int> loc, dims;
  bool isRestricted() const { return !loc.empty(); }
};

/// Calls `visit` with every position from `start` to `end`, dimension 0 first.
template <class VisitT>
void forEachPosition(const std::vector<int>& start, const std::vector<int>& end, VisitT&& visit) {
  for (std::vector<int> p = start; p.back() <= end.back();) {
    visit(p);
    for (std::size_t d = 0; ++p[d] > end[d] && d + 1 < p.size(); ++d) p[d] = start[d];
  }
}

/// The region of support of an output mode.
inline RegionSpec supportOf(OutputModeEnum mode, const std::vector<int>& h, const std::vector<int>& centre,
                            const std::vector<int>& u) {
  RegionSpec support{centre, u};
  for (std::size_t d = 0; d < u.size(); ++d) {
    if (mode == OutputModeSame) support.loc[d] = 0;
    if (mode == OutputModeFull) support.loc[d] -= h[d] - 1;
    if (mode != OutputModeSame) support.dims[d] += (mode == OutputModeFull ? 1 : -1) * (h[d] - 1);
  }
  return support;
}

/// Everything that a plan refers to, for a filter with its centre over an input, and the plan.
class PlanScene {
 public:
  using P = MovingROIPlan<double, double, AllocatorTolk>;

  PlanScene(std::vector<int> h, std::vector<int> centre, std::vector<int> u, RegionSpec first, RegionSpec second,
            int reach, bool padUsesData)
      : rank(static_cast<int>(u.size())),
        hDims(std::move(h)),
        hLoc(std::move(centre)),
        uDims(std::move(u)),
        firstLoc(first.loc),
        firstDims(first.dims),
        secondLoc(second.loc),
        secondDims(second.dims) {
    for (int& value : hLoc.values) value = -value;
    if (padUsesData) {
      input = std::make_unique<PadExtendedInput<double, double, AllocatorTolk, PadTypeSymmetric>>(
          &allocator, rank, uDims, zeros, zeros, data);
    } else {
      input = std::make_unique<Input<double, double, AllocatorTolk>>(&allocator, rank, uDims, zeros, zeros, data);
    }
    firstRegion = makeRegion(first, firstDims, firstLoc);
    secondRegion = makeRegion(second, secondDims, secondLoc);
    scope = std::make_unique<Scope>(*firstRegion, *secondRegion, reach);
    plan = std::make_unique<P>(&allocator, rank, &filter, false, input.get(), &output, scope.get());
    host.provideWorkVectors(allocator);
    allocator.refreshWorkVectors();
    plan->setup(setupAttachWork);
    plan->setup(setupLinkTables);
    setup(setupStart);
  }

  void setup(setupModeT stage) {
    input->setup(stage);
    for (int d = 0; d < rank; ++d) hEnd.values[at(d)] = hDims.values[at(d)] - 1;
    plan->setup(stage);
  }

  static std::size_t at(int d) { return static_cast<std::size_t>(d); }

  ReferenceHost host;
  AllocatorTolk allocator{host.getAdaptor()};
  int rank;
  Table hDims, hLoc, uDims, firstLoc, firstDims, secondLoc, secondDims;
  Table zeros{std::vector<int>(8, 0)}, hStart{std::vector<int>(8, 0)}, hEnd{std::vector<int>(8, 0)};
  Table yDims{std::vector<int>(8, 0)}, yOrigin{std::vector<int>(8, 0)};
  CleverPtr<double> data, yData;
  TraversableBlock filter{rank, hDims, zeros, hLoc, hStart, hEnd};
  std::unique_ptr<Input<double, double, AllocatorTolk>> input;
  Output<double, AllocatorTolk> output{&allocator, rank, yDims, yOrigin, zeros, yData};
  std::unique_ptr<Region> firstRegion, secondRegion;
  std::unique_ptr<Scope> scope;
  std::unique_ptr<P> plan;

 private:
  std::unique_ptr<Region> makeRegion(const RegionSpec& region, Table& dims, Table& loc) const {
    if (!region.isRestricted()) return std::make_unique<UnrestrictedRegion>();
    return std::make_unique<RestrictedRegion>(rank, dims, loc);
  }
};

/// A copy of a sector.
struct SectorCopy {
  enum Kind { inside, boundary, outside } kind;
  std::vector<int> start, end, preEdge, postEdge;
  bool operator==(const SectorCopy&) const = default;
};

/// A processor that keeps copies of the sectors it is to run, in order.
struct SectorRecorder {
  std::vector<SectorCopy> sectors;

  void runSector(InsideSector& s) { sectors.push_back(copy(s, SectorCopy::inside)); }
  void runSector(BoundarySector& s) { sectors.push_back(copyOuter(s, SectorCopy::boundary)); }
  void runSector(OutsideSector& s) { sectors.push_back(copyOuter(s, SectorCopy::outside)); }

 private:
  static SectorCopy copy(Sector& s, SectorCopy::Kind kind) {
    return {kind,
            {s.getStart().ptr, s.getStart().ptr + s.getNumDims()},
            {s.getEnd().ptr, s.getEnd().ptr + s.getNumDims()},
            {},
            {}};
  }
  static SectorCopy copyOuter(OuterSector& s, SectorCopy::Kind kind) {
    SectorCopy result = copy(s, kind);
    result.preEdge.assign(s.getPreEdge().ptr, s.getPreEdge().ptr + s.getPreEdgeCount());
    result.postEdge.assign(s.getPostEdge().ptr, s.getPostEdge().ptr + s.getPostEdgeCount());
    return result;
  }
};

/// The sectors of the scene's plan, in order.
inline std::vector<SectorCopy> sectorsOf(PlanScene& scene) {
  SectorRecorder recorder;
  scene.plan->forEachSector(&recorder);
  return recorder.sectors;
}

}  // namespace BP::test
