#pragma once

#include <algorithm>
#include <array>
#include <complex>
#include <cstddef>
#include <memory>
#include <optional>
#include <type_traits>
#include <utility>

#include "orvane/filters/job.h"
#include "orvane/filters/matching_geometry.h"
#include "orvane/filters/parabola.h"
#include "orvane/filters/team.h"
#include "orvane/filters/template_matcher.h"

namespace BP::filters::detail {

/// One match with the memory that its fronts use: extents, template, region of interest, results. One front does the
/// search, and another one makes the map; metrics whose products are divided by norms need neither.
///
/// Elements is a policy for the element types, and it holds the host. It defines the types of views, of the template's
/// copy, of scores and results, and of the front, and Normalised, if it has metrics divided by norms. It checks and
/// copies arguments, and makes fronts, scores and *aliases*. An alias is the array with which a front is set up, or
/// null if the front gets plain pointers in each run.
template <class Elements>
class MatchJob {
 public:
  using ImageView = typename Elements::ImageView;
  using PatternView = typename Elements::PatternView;
  using Scores = typename Elements::Scores;
  using Result = typename Elements::Result;

  /// `more` are further arguments for the constructor of Elements.
  template <class... More>
  MatchJob(const PatternView& newPattern, const Extents& image, const MatchOptions& options, const More&... more)
      : elements(newPattern, options.metric, more...),
        geometry(image, newPattern.extents(), options, elements.maxElements(), takesNormalised),
        metric(options.metric),
        wantsMap(options.map),
        refines(options.refine),
        pattern(elements.copyOf(newPattern, geometry.patternExtents)),
        crew(options.threads, options.progress) {
    if (refines && !elements.scoresAreReal()) refuse("refine", "true", "scores are complex, so it must be false");
    if constexpr (takesNormalised) {
      if (greatestIsBest(metric)) {
        normalised = std::make_unique<Normalised>(geometry, options, pattern.data());
        return;
      }
    }
    if (options.best) makeTeam(searchers, TMModeBestMatchNeighborhood);
    if (options.map) makeTeam(mappers, TMModeMetric);
  }
  MatchJob(const MatchJob&) = delete;
  MatchJob& operator=(const MatchJob&) = delete;

  Result run(const ImageView& image) {
    elements.checkImage(image, geometry.imageExtents);
    // The steps of such a search can read on over the end of a row, which then must be followed by the next one.
    if (geometry.leavesRows && !image.layout().isDense()) return run(typename Elements::Image(image).view());
    Result match;
    match.metric = metric;
    match.positions = geometry.positions;
    match.originWindow = geometry.windowAt({0, 0});
    if (geometry.edge > 0) match.neighbourhood = elements.makeScores({geometry.edge, geometry.edge});
    if (!geometry.hasPositions()) return match;
    if (wantsMap) match.map = elements.makeScores({match.positions.width, match.positions.height});
    if constexpr (takesNormalised) {
      if (normalised) {
        findNormalised(image, match);
        return match;
      }
    }
    imageData = const_cast<void*>(static_cast<const void*>(image.data()));  // fronts only read the image
    strides.set(image.layout());
    const bool isExhaustive = geometry.search == SearchMethodExhaustive;
    const Bands searched =
        searchers && isExhaustive ? bandsOf(intersection(geometry.positions, geometry.inside), true) : Bands();
    const Bands mapped = mappers ? bandsOf(geometry.positions, false) : Bands();
    crew.begin(searched.size() + mapped.size());
    if (searchers) findBest(searched, match);
    if (mappers) fillMap(mapped, match);
    crew.end();
    return match;
  }

  void setTemplate(const PatternView& newPattern) {
    pattern = elements.copyOf(newPattern, geometry.patternExtents);
    if constexpr (takesNormalised) {
      if (normalised) normalised->setTemplate(pattern.data());
    }
  }
  void setRegion(const std::optional<Rectangle>& region) { geometry.setRegion(region); }
  const Rectangle& positions() const { return geometry.positions; }
  const Extents& windowExtents() const { return geometry.patternExtents; }

  const Elements& getElements() const { return elements; }

 private:
  using Front = typename Elements::Front;
  static constexpr bool takesNormalised = requires { typename Elements::Normalised; };
  struct None {
    using Normalised = None;
  };
  using Normalised = typename std::conditional_t<takesNormalised, Elements, None>::Normalised;

  /// The edge of the block of scores that the search returns: the neighbourhood, or 1 for the best score alone, with
  /// those around it to refine it.
  int blockEdge() const { return std::max(geometry.edge, refines ? 3 : 1); }

  /// A front with its host and its results.
  struct Member {
    Member(MatchJob& owner, TMModeEnum mode, bool isFirstMember) : job(owner), isFirst(isFirstMember) {
      constexpr bool isVarSize = false, roiEnabled = true, roiValidEnabled = true;
      Elements& types = job.elements;
      MatchingGeometry& sizes = job.geometry;
      // Scores never read a pad value, so this pad needs none.
      front = types.makeFront(host, 2, sizes.patternDims.data(), 2, sizes.imageDims.data(), PadTypeReplicate,
                              sizes.mode, sizes.metric, mode, isVarSize, roiEnabled, roiValidEnabled, sizes.search);
      host.provideWorkVectors(front->getAllocator());
      if constexpr (requires { Elements::stored; }) front->setStored(Elements::stored, Stored::asComputed);
      auto templateAlias = types.patternAlias(host);
      auto imageAlias = types.imageAlias(host);
      auto mapAlias = types.scoresAlias(host), blockAlias = types.scoresAlias(host);
      // The front takes them over, even if its start fails.
      front->setup(templateAlias.release(), imageAlias.release(), sizes.roi.data(), mapAlias.release(), location.data(),
                   job.blockEdge(), blockAlias.release(), &blockIsValid, &regionIsValid, nullptr, false);
      throwMessages(host);
    }
    AnyTemplateMatching& getProcessor() { return front->getProcessor(); }
    void begin() {
      front->setStrides(job.strides.get(), nullptr);  // scores are dense
      front->updateInputPointers(job.imageData, job.pattern.data());
      front->updateOutputPointers(job.scores, nullptr, job.scores, nullptr, nullptr);
      front->beginOutputs();
      if constexpr (countsCasts) {
        if (!isFirst) Elements::drop(*front, host);
      }
    }
    template <class Work>
    void compute(Work&& work) {
      checkVendor([&] { work(getProcessor()); });
    }

    MatchJob& job;
    bool isFirst;
    ReferenceHost host;
    std::array<int, 2> location{};
    bool blockIsValid = false;
    bool regionIsValid = false;
    std::unique_ptr<Front> front;  // destroyed before the memory that it uses
  };
  using Members = std::optional<Team<Member>>;

  static constexpr bool countsCasts = requires(Elements & e, Front& f, ReferenceHost& h) { e.gather(f, h); };

  void makeTeam(Members& team, TMModeEnum mode) {
    team.emplace(crew, [this, &team, mode] { return std::make_unique<Member>(*this, mode, !team.has_value()); });
  }

  Bands bandsOf(const Rectangle& area, bool inOrder) const {
    return {BoxTables(boxOf(area, 2)), 2, elementCount(geometry.patternExtents), crew, inOrder};
  }

  void endRun(Team<Member>& team) {
    team.forEachInRun([&](Member& member) {
      throwMessages(member.host);
      if constexpr (countsCasts) elements.gather(*member.front, member.host);
    });
  }

  void fillMap(const Bands& bands, Result& match) {
    scores = match.map.data();
    mappers->beginRun();
    mappers->runPhase(0, bands);
    endRun(*mappers);
    match.regionValid = mappers->first().regionIsValid;
  }

  /// The threads search the positions inside the image. The rest, which costs nothing, is for one of them.
  void search(const Bands& bands) {
    searchers->beginRun();
    Member& first = searchers->first();
    if (geometry.search != SearchMethodExhaustive) {
      first.compute([](AnyTemplateMatching& processor) { processor.invoke(); });
    } else {
      crew.run(bands.size(), [&](int worker, int k) {
        searchers->at(worker).compute(
            [&](AnyTemplateMatching& processor) { processor.searchBand(bands[k].get(), k == 0); });
      });
      searchers->forEachInRun([&](Member& other) {
        if (&other != &first) first.getProcessor().adoptBest(other.getProcessor());
      });
      first.compute([](AnyTemplateMatching& processor) { processor.finishSearch(); });
    }
    endRun(*searchers);
  }

  void findBest(const Bands& bands, Result& match) {
    Scores own;
    if (geometry.edge == 0) own = elements.makeScores({blockEdge(), blockEdge()});
    Scores& block = geometry.edge > 0 ? match.neighbourhood : own;
    scores = block.data();
    search(bands);
    const Member& first = searchers->first();
    match.found = true;
    match.location = {first.location[0], first.location[1]};
    match.window = geometry.windowAt(match.location);
    const int middle = centreOf(blockEdge());
    match.score = elements.scoreAt(block, middle + blockEdge() * middle);
    match.neighbourhoodValid = geometry.edge > 0 && first.blockIsValid;
    match.regionValid = first.regionIsValid;
    refine(block, match);
  }

  void findNormalised(const ImageView& image, Result& match) {
    const auto stored = elements.storedImage(image);
    normalised->run(stored, match, crew);
    match.regionValid = geometry.holds(geometry.askedRegion());
    if (!match.found) return;
    match.window = geometry.windowAt(match.location);
    Scores block = elements.makeScores({blockEdge(), blockEdge()});
    const Rectangle area{match.location[0] - centreOf(blockEdge()), match.location[1] - centreOf(blockEdge()),
                         blockEdge(), blockEdge()};
    normalised->fill(stored, area, block.data());
    refine(block, match);
    if (geometry.edge == 0) return;
    match.neighbourhoodValid = geometry.holds(area) && intersection(area, geometry.askedRegion()) == area;
    match.neighbourhood = std::move(block);
  }

  /// Refines the location by the scores around it, which `block` has in its middle.
  void refine(const Scores& block, Result& match) {
    const int middle = centreOf(blockEdge());
    for (std::size_t d = 0; d < 2; ++d) {
      match.refined[d] = static_cast<double>(match.location[d]);
      if (!refines || !geometry.hasNeighboursInside(match.location, d)) continue;
      const auto scoreAt = [&](int offset) {
        const int x = middle + (d == 0 ? offset : 0), y = middle + (d == 1 ? offset : 0);
        return std::real(elements.scoreAt(block, x + blockEdge() * y));
      };
      match.refined[d] += parabolaOffset(scoreAt(-1), scoreAt(0), scoreAt(1), greatestIsBest(metric));
    }
  }

  Elements elements;
  MatchingGeometry geometry;
  Metric metric;
  bool wantsMap;
  bool refines;
  LineStrides strides;
  typename Elements::Pattern pattern;
  void* imageData = nullptr;
  void* scores = nullptr;  ///< the map or the block of the present run
  Crew crew;
  std::unique_ptr<Normalised> normalised;
  Members searchers, mappers;
};

}  // namespace BP::filters::detail
