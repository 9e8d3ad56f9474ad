#pragma once

#include <array>
#include <cstdint>
#include <limits>
#include <optional>
#include <span>
#include <vector>

#include "fuzz/byte_source.h"
#include "fuzz/target.h"
#include "orvane/filters/convolution.h"
#include "orvane/filters/correlation_nd.h"
#include "orvane/filters/median.h"
#include "orvane/filters/template_matcher.h"

/// Arguments that make no sense: every job refuses them with an error, or runs.
namespace BP::fuzz {

/// Mostly a small extent; else one that is 0, negative, or at a bound of what indices hold.
inline std::int64_t anyExtent(ByteSource& source) {
  constexpr std::int64_t most = std::numeric_limits<std::int64_t>::max();
  constexpr std::int64_t others[] = {0,
                                     -1,
                                     -(std::int64_t{1} << 40),
                                     std::int64_t{1} << 30,
                                     (std::int64_t{1} << 31) - 1,
                                     std::int64_t{1} << 31,
                                     (std::int64_t{1} << 32) + 3,
                                     most,
                                     -most - 1};
  if (pick(source, 0, 7) != 0) return pick(source, 1, 9);
  return others[pick(source, 0, static_cast<int>(std::size(others)) - 1)];
}

inline filters::Extents anyExtents(ByteSource& source) {
  std::array<std::int64_t, filters::Extents::maxRank> extents{};
  const int rank = pick(source, 0, 9) != 0 ? 2 : pick(source, 0, static_cast<int>(filters::Extents::maxRank));
  for (int d = 0; d < rank; ++d) extents[static_cast<std::size_t>(d)] = anyExtent(source);
  return filters::Extents(std::span<const std::int64_t>(extents.data(), static_cast<std::size_t>(rank)));
}

/// The job over arrays of its own, once with the output's extents and once with others.
template <class Job>
void runAnyhow(ByteSource& source, Job& job, const filters::Extents& input) {
  const auto count = filters::elementCount(input), outputs = filters::elementCount(job.outputExtents());
  if (count > 1000 || outputs > 1000) return;
  std::vector<float> from(static_cast<std::size_t>(count), 1), to(static_cast<std::size_t>(outputs));
  const filters::ArrayView<const float> in(pick(source, 0, 9) == 0 ? nullptr : from.data(), input);
  const filters::Extents shape = pick(source, 0, 3) == 0 ? anyExtents(source) : job.outputExtents();
  job.run(in, filters::ArrayView<float>(pick(source, 0, 9) == 0 ? from.data() : to.data(), shape));
}

/// Makes a job of arguments of any kind, and runs it if it is made.
inline void tryArguments(ByteSource& source) {
  using namespace filters;
  const Extents input = anyExtents(source), window = anyExtents(source);
  std::optional<Rectangle> region;
  if (pick(source, 0, 2) == 0) region = {anyExtent(source), anyExtent(source), anyExtent(source), anyExtent(source)};
  const auto mode = static_cast<OutputMode>(pick(source, -1, 3));
  const PadOption pad{static_cast<PadRule>(pick(source, -1, 5)), {0.5, pick(source, 0, 7) == 0 ? 1.0 : 0.0}};
  const int threads = pick(source, 0, 15) == 0 ? pick(source, -1, 2000) : 1;
  // A view checks nothing, so it must not claim more elements than there are: what a job copies is small or refused.
  const std::vector<float> taps(1000, 0.5F);
  const bool isSmall = window.rank() == 0 || elementCount(window) <= 1000;
  const ArrayView<const float> filter(isSmall ? taps.data() : nullptr, window);
  switch (pick(source, 0, 3)) {
    case 0: {
      Convolution<float> job(filter, input,
                             {.direction = static_cast<FilterDirection>(pick(source, -1, 2)),
                              .mode = mode,
                              .pad = pad,
                              .normalise = static_cast<Normalisation>(pick(source, -1, 2)),
                              .region = region,
                              .threads = threads});
      return runAnyhow(source, job, input);
    }
    case 1: {
      Median<float> job(window, input, {.mode = mode, .pad = pad, .region = region, .threads = threads});
      return runAnyhow(source, job, input);
    }
    case 2: {
      CorrelationND<float> job(filter, input, {.mode = mode, .pad = pad, .threads = threads});
      return runAnyhow(source, job, input);
    }
    default: {
      TemplateMatcher<float> job(filter, input,
                                 {.metric = static_cast<Metric>(pick(source, -1, 6)),
                                  .mode = mode,
                                  .search = static_cast<Search>(pick(source, -1, 2)),
                                  .region = region,
                                  .neighbourhood = anyExtent(source),
                                  .threads = threads});
      if (elementCount(input) > 1000) return;
      const std::vector<float> image(static_cast<std::size_t>(elementCount(input)), 1);
      job.run(ArrayView<const float>(image, input));
    }
  }
}

}  // namespace BP::fuzz
