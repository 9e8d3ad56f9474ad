#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "orvane/filters/bands.h"
#include "orvane/filters/crew.h"
#include "orvane/filters/match_options.h"
#include "orvane/filters/matching_geometry.h"
#include "orvane/matching/normalised_scores.h"

namespace BP::filters::detail {

/// The map and the search of a metric whose products are divided by norms. The best match is the greatest score.
template <class T>
class NormalisedSearch {
 public:
  /// Keeps the geometry and the elements of the pattern, which has its extents. Both must outlive it.
  NormalisedSearch(const MatchingGeometry& matchGeometry, const MatchOptions& options, const T* pattern)
      : geometry(matchGeometry),
        wantsBest(options.best),
        hasMap(options.map),
        isCoefficient(options.metric == Metric::correlationCoefficient) {
    setTemplate(pattern);
  }

  /// Takes other elements for later runs.
  void setTemplate(const T* pattern) {
    elements = pattern;
    workers.clear();
    workers.push_back(std::make_unique<Worker>(*this));
  }

  /// Finds the best match, if that is wanted, and fills the map, if it has elements, with the threads of a crew. The
  /// geometry has a position.
  void run(const StoredImage<T>& image, Match<T>& match, Crew& crew) {
    const Rectangle computed = intersection(geometry.positions, geometry.inside);
    const Bands bands(BoxTables(boxOf(computed, 2)), 2, elementCount(geometry.patternExtents), crew, true);
    std::vector<Best> best(static_cast<std::size_t>(bands.size()));
    workers.resize(static_cast<std::size_t>(crew.getThreads()));
    crew.begin(bands.size());
    crew.run(bands.size(), [&](int worker, int k) {
      const BoxTables band = bands[k];
      runBand(image, {band.loc[0], band.loc[1], band.dims[0], band.dims[1]}, match.map,
              workerAt(static_cast<std::size_t>(worker)), best[static_cast<std::size_t>(k)]);
    });
    Best all;
    for (const Best& b : best) {
      if (b.found) put(b.score, b.location[0], b.location[1], all);
    }
    if (wantsBest) takeFirstAtEdge(all);
    match.found = all.found;
    match.score = all.score;
    match.location = all.location;
    crew.end();
  }

  /// The scores of a rectangle of positions, which go to `out` without gaps: 0 where the template crosses an edge.
  void fill(const StoredImage<T>& image, const Rectangle& area, T* out) {
    std::fill_n(out, area.width * area.height, T(0));
    const Rectangle computed = intersection(area, geometry.inside);
    if (computed.isEmpty()) return;
    compute(workers[0]->scores, image, computed, out + (computed.x - area.x) + area.width * (computed.y - area.y),
            area.width);
  }

 private:
  static constexpr std::int64_t bandRows = 24;

  /// The best of the positions so far.
  struct Best {
    bool found = false;
    T score{};
    std::array<std::int64_t, 2> location{};
  };
  /// What a thread works with: scores, and some rows of them where there is no map.
  struct Worker {
    explicit Worker(const NormalisedSearch& search)
        : scores(search.geometry.patternDims[0], search.geometry.patternDims[1], search.isCoefficient) {
      scores.setTemplate(search.elements);
      if (!search.hasMap) band.resize(bandRows * static_cast<std::size_t>(search.geometry.imageDims[0]));
    }
    NormalisedScores<T> scores;
    std::vector<T> band;
  };

  /// Calls for different workers may come at the same time.
  Worker& workerAt(std::size_t i) {
    if (!workers[i]) workers[i] = std::make_unique<Worker>(*this);
    return *workers[i];
  }

  void runBand(const StoredImage<T>& image, const Rectangle& computed, Array<T>& map, Worker& worker,
               Best& best) const {
    T* const first = hasMap ? map.data() + mapIndex(computed) : nullptr;
    for (std::int64_t row = 0; row < computed.height; row += bandRows) {
      const Rectangle rows{computed.x, computed.y + row, computed.width, std::min(bandRows, computed.height - row)};
      const std::ptrdiff_t outPitch = hasMap ? geometry.positions.width : rows.width;
      T* const out = hasMap ? first + outPitch * row : worker.band.data();
      compute(worker.scores, image, rows, out, outPitch);
      if (wantsBest) take(rows, out, outPitch, best);
    }
  }

  std::int64_t mapIndex(const Rectangle& r) const {
    const Rectangle& all = geometry.positions;
    return r.isEmpty() ? 0 : (r.x - all.x) + all.width * (r.y - all.y);
  }

  void compute(NormalisedScores<T>& of, const StoredImage<T>& image, const Rectangle& area, T* out,
               std::ptrdiff_t outPitch) const {
    const std::ptrdiff_t first = (area.x - geometry.inside.x) + image.pitch * (area.y - geometry.inside.y);
    of.compute(image, first, static_cast<int>(area.width), static_cast<int>(area.height), out, outPitch);
  }

  static bool isBetter(T score, T best) { return score > best || (std::isnan(best) && !std::isnan(score)); }

  void take(const Rectangle& area, const T* out, std::ptrdiff_t outPitch, Best& best) const {
    for (std::int64_t y = 0; y < area.height; ++y) {
      for (std::int64_t x = 0; x < area.width; ++x) put(out[x + outPitch * y], area.x + x, area.y + y, best);
    }
  }

  static void put(T score, std::int64_t x, std::int64_t y, Best& best) {
    if (best.found && !isBetter(score, best.score)) return;
    best.found = true;
    best.score = score;
    best.location = {x, y};
  }

  /// Takes the first position at which the template crosses an edge; all others of them have its score, 0.
  void takeFirstAtEdge(Best& best) const {
    const Rectangle &all = geometry.positions, computed = intersection(all, geometry.inside);
    if (computed.isEmpty() || computed.y > all.y || computed.x > all.x) {
      put(0, all.x, all.y, best);
    } else if (computed.width < all.width) {
      put(0, computed.x + computed.width, all.y, best);
    } else if (computed.height < all.height) {
      put(0, all.x, computed.y + computed.height, best);
    }
  }

  const MatchingGeometry& geometry;
  bool wantsBest;
  bool hasMap;
  bool isCoefficient;
  const T* elements = nullptr;
  std::vector<std::unique_ptr<Worker>> workers;
};

}  // namespace BP::filters::detail
