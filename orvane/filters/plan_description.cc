#include "orvane/filters/plan_description.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <stdexcept>
#include <string>

#include "orvane/core/allocator.h"
#include "orvane/core/host_dims.h"
#include "orvane/core/visit_enumerator.h"
#include "orvane/input/pad_extended_input.h"
#include "orvane/plan/moving_roi_plan.h"
#include "orvane/plan/window_tables.h"

namespace BP {

namespace {

void require(bool condition, const std::string& message) {
  if (!condition) throw std::invalid_argument(message);
}

std::string dimensions(std::size_t rank) { return std::to_string(rank) + (rank == 1 ? " dimension" : " dimensions"); }

void checkRange(const std::string& what, const std::vector<int>& values, std::size_t rank, int least) {
  require(values.size() == rank, what + " has " + dimensions(values.size()) + ", but the input has " +
                                     std::to_string(rank) + "; they must have the same number");
  for (const int value : values) {
    require(value >= least && value <= longestPlanExtent, what + ": " + std::to_string(value) + " is not one of " +
                                                              std::to_string(least) + " to " +
                                                              std::to_string(longestPlanExtent));
  }
}

/// Refuses extents whose product a signed 32-bit index does not reach; those below 1 hold no element.
void checkElements(const std::string& what, const std::vector<int>& extents) {
  constexpr std::int64_t most = std::numeric_limits<int>::max();
  std::int64_t elements = 1;
  for (const int extent : extents) {
    elements *= std::max(extent, 1);
    require(elements <= most, what + " has more than " + std::to_string(most) + " elements");
  }
}

void check(const PlanRequest& request) {
  const std::size_t rank = request.input.size();
  require(rank >= 1 && rank <= highestPlanRank,
          "input has " + dimensions(rank) + "; allowed are 1 to " + std::to_string(highestPlanRank));
  checkRange("input", request.input, rank, 1);
  checkRange("window", request.window, rank, 1);
  checkElements("input", request.input);
  require(request.mode >= OutputModeValid && request.mode <= OutputModeFull, "mode is none of valid, same, full");
  require(!request.reach || (*request.reach >= 0 && *request.reach <= 2),
          "reach: " + std::to_string(request.reach.value_or(0)) + " is not one of 0 to 2");
  if (!request.region) return;
  checkRange("first position of the region", request.region->first, rank, -longestPlanExtent);
  checkRange("extents of the region", request.region->extents, rank, 1);
  checkElements("region", request.region->extents);
}

void assignTable(CleverPtr<int>& table, const std::vector<int>& values) {
  allocatePlain(table, static_cast<int>(values.size()));
  std::ranges::copy(values, table.ptr);
}

/// All that a plan refers to, for a checked request. There is no host and no array of elements.
class PlanScene {
 public:
  explicit PlanScene(const PlanRequest& request)
      : rank(static_cast<int>(request.input.size())),
        tables(&allocator, rank),
        filter(rank, hDims, tables.hOrigin, tables.hLoc, tables.hStart, tables.hEnd),
        output(&allocator, rank, tables.yDims, tables.yOrigin, tables.yLoc, noData),
        support(rank, tables.rosDims, tables.rosLoc),
        interest(rank, interestDims, interestLoc) {
    assignTable(hDims, request.window);
    assignTable(uDims, request.input);
    allocatePlain(hCentre, rank);
    computeCentres(hCentre, rank, hDims);
    if (request.region) {
      assignTable(interestDims, request.region->extents);
      assignTable(interestLoc, request.region->first);
    }
    tables.place(rank, hCentre);
    tables.computeHStart(rank);
    tables.computeHEnd(rank, hDims);
    tables.computeROS(request.mode, rank, hDims, uDims);
    makeInput(request.pad);
    makePlan(request);
  }

  std::vector<int> centre() const { return {hCentre.ptr, hCentre.ptr + rank}; }
  int reach() const { return scope->getReach(); }
  PlanRegion outputs() const {
    return {{tables.yOrigin.ptr, tables.yOrigin.ptr + rank}, {tables.yDims.ptr, tables.yDims.ptr + rank}};
  }
  PlanDimension dimension(int d) const;

  template <class RecorderT>
  void recordSectors(RecorderT* recorder) {
    plan->forEachSector(recorder);
  }

 private:
  using InputT = Input<double, double, Allocator>;
  using PlanT = MovingROIPlan<double, double, Allocator>;

  void makeInput(PadTypeEnum padType) {
    const bool known = visitPadType(padType, [&](auto pad) {
      using Padded = PadExtendedInput<double, double, Allocator, pad()>;
      input = std::make_unique<Padded>(&allocator, rank, uDims, tables.uOrigin, tables.uLoc, noData);
    });
    require(known, "pad is none of the pad types");
    input->setup(setupStart);
  }

  void makePlan(const PlanRequest& request) {
    const int code = request.reach.value_or(reachOf(request.mode));
    const bool hasInterest = request.region.has_value();
    const Region& first = hasInterest && code == 2 ? static_cast<const Region&>(anywhere) : support;
    const Region& second = hasInterest ? static_cast<const Region&>(interest) : anywhere;
    scope = std::make_unique<Scope>(first, second, code);
    plan = std::make_unique<PlanT>(&allocator, rank, &filter, false, input.get(), &output, scope.get());
    plan->setup(setupLinkTables);
    // Not `setupStart`, which multiplies the output's extents: they can be far below 0 if regions lie far apart.
    plan->setup(setupInvoke);
  }

  Allocator allocator;
  int rank;
  CleverPtr<int> hDims, hCentre, uDims, interestDims, interestLoc;
  CleverPtr<double> noData;
  WindowTables tables;
  TraversableBlock filter;
  Output<double, Allocator> output;
  std::unique_ptr<InputT> input;
  RestrictedRegion support, interest;
  UnrestrictedRegion anywhere;
  std::unique_ptr<Scope> scope;
  std::unique_ptr<PlanT> plan;
};

PlanDimension PlanScene::dimension(int d) const {
  constexpr SectionCode byPosition[sectionCount] = {SectionLowOutside, SectionLowBoundary, SectionCentre,
                                                    SectionHighBoundary, SectionHighOutside};
  PlanDimension result{{}, plan->getIsHgtUpd(d)};
  std::ranges::transform(byPosition, result.sections.begin(), [&](SectionCode code) {
    const Margins& margins = plan->getMargins(code);
    return PlanSection{code, margins.getLoc().ptr[d], margins.getWidth().ptr[d]};
  });
  return result;
}

/// A processor that notes the sectors it is to run.
struct SectorRecorder {
  std::vector<PlanSector>& sectors;

  void runSector(InsideSector& sector) { note(SectorKind::inside, sector); }
  void runSector(BoundarySector& sector) { noteOuter(SectorKind::boundary, sector); }
  void runSector(OutsideSector& sector) { noteOuter(SectorKind::outside, sector); }

 private:
  void note(SectorKind kind, const Sector& sector) {
    const int* start = sector.getStart().ptr;
    const int* end = sector.getEnd().ptr;
    sectors.push_back({kind, {start, start + sector.getNumDims()}, {end, end + sector.getNumDims()}, {}, {}});
  }
  void noteOuter(SectorKind kind, const OuterSector& sector) {
    note(kind, sector);
    const int* preEdge = sector.getPreEdge().ptr;
    const int* postEdge = sector.getPostEdge().ptr;
    sectors.back().preEdge.assign(preEdge, preEdge + sector.getPreEdgeCount());
    sectors.back().postEdge.assign(postEdge, postEdge + sector.getPostEdgeCount());
  }
};

}  // namespace

PlanDescription describePlan(const PlanRequest& request) {
  check(request);
  PlanScene scene(request);
  PlanDescription result{scene.centre(), scene.reach(), scene.outputs(), {}, {}};
  checkElements("output", result.output.extents);
  for (int d = 0; d < static_cast<int>(request.input.size()); ++d) result.dimensions.push_back(scene.dimension(d));
  SectorRecorder recorder{result.sectors};
  scene.recordSectors(&recorder);
  return result;
}

}  // namespace BP
