#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "fuzz/byte_source.h"
#include "fuzz/target.h"
#include "orvane/filters/bands.h"
#include "orvane/lanes/target.h"
#include "tests/support/random_job.h"

namespace BP::fuzz {

/// Runs a job by the plain loops, and then in two other ways that the source chooses: on a vector target, with gaps
/// between lines, in threads, for a region, or as a tile. All must give the same bits and the same counts.
inline void compareWays(const test::RandomJob& job, ByteSource& source) {
  static const std::vector<std::string_view> targets = lanes::getTargets();
  [[maybe_unused]] static const auto before = filters::detail::setLeastWorkOfThreads(0);

  lanes::forceTarget(lanes::plain);
  const test::JobResult whole = job.run({});
  for (int way = 0; way < 2; ++way) {
    const int number = pick(source, 0, static_cast<int>(targets.size()));
    const std::string_view target = number == 0 ? lanes::plain : targets[static_cast<std::size_t>(number - 1)];
    lanes::forceTarget(target);
    test::Variation how{.pitched = pick(source, 0, 2) == 0, .threads = pick(source, 0, 15) == 0 ? 3 : 1};
    const std::string text = job.text + ", on " + std::string(target) + (how.pitched ? ", with gaps" : "") +
                             (how.threads > 1 ? ", in threads" : "");
    if (!job.isFilter || pick(source, 0, 1) == 0) {
      require(job.run(how) == whole, text);
      continue;
    }
    how.region = test::randomBox(source, job.positions, 50);
    how.asTile = pick(source, 0, 1) == 0;
    const test::JobResult part = job.run(how);
    const filters::Box wanted = filters::detail::positionsIn(job.positions, *how.region);
    require(
        part.othersAreUntouched && part.positions.extents == wanted.extents &&
            part.bytes == test::cropped(whole.bytes, job.positions, wanted, whole.elementBytes),
        text + (how.asTile ? ", tile " : ", region ") + toText(how.region->start) + ", " + toText(how.region->extents));
  }
}

}  // namespace BP::fuzz
