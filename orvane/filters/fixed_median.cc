#include "orvane/filters/fixed_median.h"

#include <memory>
#include <utility>

#include "orvane/filters/fixed_job.h"
#include "orvane/filters/fixed_roles.h"
#include "orvane/median/median_filter_tolk.h"

namespace BP::filters {

namespace {

/// One fixed-point median filter.
class FixedMedianJob : public detail::FixedFilterJob {
 public:
  FixedMedianJob(const Extents& window, const Extents& inputExtents, const FixedMedianTypes& types,
                 const MedianOptions<double>& options)
      : FixedFilterJob({inputExtents, window, {.mode = options.mode, .pad = options.pad}, detail::maxIndex, "window"},
                       types.modes) {
    const detail::FixedMedianRoles roles(types);
    Arrays arrays = makeArrays(roles.input, roles.output, options.padValue);
    auto made = std::make_unique<MedianFilterTolk<Fixpt, Fixpt>>(
        getHost().getAdaptor(), geometry.rank, geometry.filterDims.data(), geometry.rank, geometry.inputDims.data(),
        geometry.pad, geometry.mode, false, handleOf(roles.input), handleOf(roles.output), handleOf(roles.accumulator));
    getHost().provideWorkVectors(made->getAllocator());
    made->setup(arrays.input.release(), arrays.output.release(), arrays.padValue.release(), false);
    start(std::move(made));
  }
};

}  // namespace

FixedMedian::FixedMedian(const Extents& window, const Extents& inputExtents, const FixedMedianTypes& types,
                         const MedianOptions<double>& options)
    : FixedRunner(std::make_unique<FixedMedianJob>(window, inputExtents, types, options)) {}

}  // namespace BP::filters
