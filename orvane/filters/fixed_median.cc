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
                 const MedianOptions& options)
      : FixedFilterJob({inputExtents, window, detail::convolutionOptions(options), detail::maxIndex, "window"},
                       detail::convolutionOptions(options), types.modes),
        roles(types) {
    start(roles.input, roles.output, options.pad.value);
  }

 private:
  void makeFront(Member& member, OwnArrays arrays) override {
    auto made = std::make_unique<MedianFilterTolk<Fixpt, Fixpt>>(
        member.host.getAdaptor(), geometry.rank, geometry.filterDims.data(), geometry.rank, geometry.inputDims.data(),
        geometry.pad, geometry.mode, false, handleOf(roles.input, member.host), handleOf(roles.output, member.host),
        handleOf(roles.accumulator, member.host));
    member.host.provideWorkVectors(made->getAllocator());
    made->setup(arrays.input.release(), arrays.output.release(), arrays.padValue.release(), false);
    member.front = std::move(made);
  }

  detail::FixedMedianRoles roles;
};

}  // namespace

FixedMedian::FixedMedian(const Extents& window, const Extents& inputExtents, const FixedMedianTypes& types,
                         const MedianOptions& options)
    : FixedRunner(std::make_unique<FixedMedianJob>(window, inputExtents, types, options)) {}

}  // namespace BP::filters
