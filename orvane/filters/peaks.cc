#include "orvane/filters/peaks.h"

#include <algorithm>
#include <cmath>
#include <numeric>

#include "orvane/filters/checks.h"
#include "orvane/filters/parabola.h"

namespace BP::filters {

namespace {

using detail::refuse;

/// A map of scores, of which a choice takes one after another.
template <class Score>
class PeakChoice {
 public:
  PeakChoice(const Match<Score>& matchWithMap, const PeakOptions& peaks)
      : match(matchWithMap),
        options(peaks),
        width(match.positions.width),
        height(match.positions.height),
        greatest(greatestIsBest(match.metric)),
        isTaken(match.map.size()) {
    for (std::size_t i = 0; i < match.map.size(); ++i) {
      if (match.map[i] == match.map[i]) candidates.push_back(static_cast<std::int32_t>(i));
    }
    std::ranges::make_heap(candidates, [this](auto a, auto b) { return isWorse(a, b); });
  }

  std::vector<Peak<Score>> take() {
    std::vector<Peak<Score>> peaks;
    while (!candidates.empty() && static_cast<std::int64_t>(peaks.size()) < options.count) {
      std::ranges::pop_heap(candidates, [this](auto a, auto b) { return isWorse(a, b); });
      const std::int64_t i = candidates.back();
      candidates.pop_back();
      if (isTaken[static_cast<std::size_t>(i)]) continue;
      peaks.push_back(peakAt(i % width, i / width));
      takeRound(i % width, i / width);
    }
    return peaks;
  }

 private:
  Score at(std::int64_t i) const { return match.map[static_cast<std::size_t>(i)]; }
  bool isWorse(std::int32_t a, std::int32_t b) const {
    const Score x = at(a), y = at(b);
    if (x == y) return a > b;
    return greatest ? x < y : x > y;
  }

  /// Takes out everything nearer than the distance.
  void takeRound(std::int64_t x, std::int64_t y) {
    const double reach = std::min(options.distance, static_cast<double>(width + height));
    const auto rows = static_cast<std::int64_t>(std::ceil(reach));
    for (std::int64_t j = std::max(y - rows, std::int64_t{0}); j < std::min(y + rows + 1, height); ++j) {
      for (std::int64_t i = std::max(x - rows, std::int64_t{0}); i < std::min(x + rows + 1, width); ++i) {
        const auto dx = static_cast<double>(i - x), dy = static_cast<double>(j - y);
        if (dx * dx + dy * dy < reach * reach) isTaken[static_cast<std::size_t>(i + width * j)] = true;
      }
    }
  }

  Peak<Score> peakAt(std::int64_t x, std::int64_t y) const {
    Peak<Score> peak;
    const std::int64_t i = x + width * y;
    peak.location = {match.positions.x + x, match.positions.y + y};
    peak.score = at(i);
    peak.window = match.originWindow;
    peak.window.x += peak.location[0];
    peak.window.y += peak.location[1];
    const std::array<std::int64_t, 2> place{x, y}, extents{width, height}, step{1, width};
    for (std::size_t d = 0; d < 2; ++d) {
      peak.refined[d] = static_cast<double>(peak.location[d]);
      if (!options.refine || place[d] == 0 || place[d] == extents[d] - 1) continue;
      const auto scoreAt = [&](std::int64_t index) { return static_cast<double>(at(index)); };
      peak.refined[d] += detail::parabolaOffset(scoreAt(i - step[d]), scoreAt(i), scoreAt(i + step[d]), greatest);
    }
    return peak;
  }

  const Match<Score>& match;
  const PeakOptions& options;
  std::int64_t width, height;
  bool greatest;
  std::vector<bool> isTaken;
  std::vector<std::int32_t> candidates;  ///< a heap of indices, the best score on top
};

}  // namespace

template <class Score>
std::vector<Peak<Score>> matches(const Match<Score>& match, const PeakOptions& peaks) {
  if (peaks.count < 1) refuse("count", std::to_string(peaks.count), "it must be at least 1");
  if (!(peaks.distance >= 0)) refuse("distance", detail::textOf(peaks.distance), "it must be at least 0");
  if (match.map.size() == 0 && !match.positions.isEmpty()) {
    refuse("match", "no map", "its options must say map = true");
  }
  return PeakChoice<Score>(match, peaks).take();
}

template std::vector<Peak<float>> matches(const Match<float>&, const PeakOptions&);
template std::vector<Peak<double>> matches(const Match<double>&, const PeakOptions&);
template std::vector<Peak<std::int32_t>> matches(const Match<std::int32_t>&, const PeakOptions&);

}  // namespace BP::filters
