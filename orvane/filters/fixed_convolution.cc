#include "orvane/filters/fixed_convolution.h"

#include <utility>

#include "orvane/filters/convolution_front.h"
#include "orvane/filters/fixed_job.h"
#include "orvane/filters/fixed_roles.h"

namespace BP::filters {

namespace detail {

/// One fixed-point convolution.
class FixedConvolutionJob : public FixedFilterJob {
 public:
  FixedConvolutionJob(const FixedView& newFilter, const Extents& inputExtents, const FixedTypes& types,
                      const ConvolutionOptions& options)
      : FixedFilterJob({inputExtents, newFilter.extents(), options, maxElements(types, newFilter)}, types.modes),
        roles(types, newFilter.type(), newFilter.isComplex(), geometry.norm != NormNone) {
    checkFixed("filter", newFilter, roles.filter, geometry.filterExtents);
    begin(options, newFilter, nullptr);
  }

  FixedConvolutionJob(const FixedView& first, const FixedView& newSecond, const Extents& inputExtents,
                      const FixedTypes& types, const ConvolutionOptions& options)
      : FixedFilterJob({inputExtents, first.extents(), newSecond.extents(), options, maxElements(types, first)},
                       types.modes),
        roles(types, first.type(), first.isComplex(), false) {
    checkFixed("first filter", first, roles.filter, geometry.filterExtents);
    checkFixed("second filter", newSecond, roles.filter, geometry.secondExtents);
    begin(options, first, &newSecond);
  }

  void setFilter(const FixedView& newFilter) {
    checkFixed("filter", newFilter, roles.filter, geometry.filterExtents);
    copyValues(newFilter, *filter);
  }

  void setFilters(const FixedView& first, const FixedView& newSecond) {
    checkFixed("first filter", first, roles.filter, geometry.filterExtents);
    checkFixed("second filter", newSecond, roles.filter, geometry.secondExtents);
    copyValues(first, *filter);
    copyValues(newSecond, *secondFilter);
  }

  /// How the sums of a pass run; the second pass reads values of the output's type.
  FixedPath path(int pass) {
    const RoleDescription& from = pass == 0 ? roles.input : roles.output;
    Fixpt& taps = pass == 0 ? *filter : *secondFilter;
    if (geometry.norm != NormNone || from.isComplex || roles.filter.isComplex) return FixedPath::singleValues;
    const auto left = handleOf(from), sum = handleOf(roles.accumulator), result = handleOf(roles.output);
    const auto formatIn = [](const KarnDSPFixpt::FixptType& type, const auto& handle) {
      return FixedFormat{type, handle.roundingMode(), handle.overflowMode()};
    };
    const auto count = static_cast<int>(elementCount(pass == 0 ? geometry.filterExtents : geometry.secondExtents));
    std::vector<std::int64_t> values;
    for (int n = 0; n < count; ++n) {
      values.push_back(
          static_cast<std::int64_t>(taps[geometry.algorithm == AlgorithmModeConvolution ? count - 1 - n : n].stored()));
    }
    return planFixedSum({left.type(), taps.attributes().type(), formatIn(left.productType(taps.attributes()), left),
                         formatIn(sum.type(), sum), formatIn(result.type(), result)},
                        values)
        .path;
  }

 private:
  static std::int64_t maxElements(const FixedTypes& types, const FixedView& filter) {
    return types.inputIsComplex || filter.isComplex() ? maxComplexElements : maxIndex;
  }

  static void copyValues(const FixedView& from, Fixpt& to) {
    copyStored(*makeAlias(to.attributes(), from.data()), to, static_cast<int>(elementCount(from.extents())));
  }

  /// Makes the front and gives it the arrays. Filters and pad value hold copies of their values. Input and output get
  /// their memory in each run.
  void begin(const ConvolutionOptions& options, const FixedView& newFilter, const FixedView* newSecond) {
    Arrays arrays = makeArrays(roles.input, roles.output, options.padValue);
    auto made =
        geometry.norm == NormNone
            ? makeFront<Fixpt, Fixpt, Fixpt>(getHost(), geometry, handleOf(roles.input), handleOf(roles.output),
                                             handleOf(roles.filter), handleOf(roles.accumulator))
            : makeFront<Fixpt, Fixpt, Fixpt>(getHost(), geometry, handleOf(roles.input), handleOf(roles.output),
                                             handleOf(roles.filter), handleOf(roles.accumulator), handleOf(roles.sqrt));
    auto first = makeOwn(roles.filter, elementCount(geometry.filterExtents));
    copyValues(newFilter, *first);
    filter = first.get();
    if (newSecond != nullptr) {
      auto second = makeOwn(roles.filter, elementCount(geometry.secondExtents));
      copyValues(*newSecond, *second);
      secondFilter = second.get();
      made->setup(first.release(), second.release(), arrays.input.release(), arrays.output.release(),
                  arrays.padValue.release(), true);
    } else {
      made->setup(first.release(), arrays.input.release(), arrays.output.release(), arrays.padValue.release(), true);
    }
    start(std::move(made));
  }

  FixedRoles roles;
  Fixpt* filter = nullptr;  // owned by the front
  Fixpt* secondFilter = nullptr;
};

namespace {

/// The job of a fixed-point convolution, which has no job of another class.
FixedConvolutionJob& convolutionJob(const JobHandle<FixedFilterJob>& job) {
  return static_cast<FixedConvolutionJob&>(*job);
}

}  // namespace

}  // namespace detail

FixedConvolution::FixedConvolution(const FixedView& filter, const Extents& inputExtents, const FixedTypes& types,
                                   const ConvolutionOptions& options)
    : FixedRunner(std::make_unique<detail::FixedConvolutionJob>(filter, inputExtents, types, options)) {}
void FixedConvolution::setFilter(const FixedView& filter) { detail::convolutionJob(job).setFilter(filter); }
FixedPath FixedConvolution::path() const { return detail::convolutionJob(job).path(0); }

FixedSeparableConvolution::FixedSeparableConvolution(const FixedView& first, const FixedView& second,
                                                     const Extents& inputExtents, const FixedTypes& types,
                                                     const ConvolutionOptions& options)
    : FixedRunner(std::make_unique<detail::FixedConvolutionJob>(first, second, inputExtents, types, options)) {}
void FixedSeparableConvolution::setFilters(const FixedView& first, const FixedView& second) {
  detail::convolutionJob(job).setFilters(first, second);
}
FixedPath FixedSeparableConvolution::firstPath() const { return detail::convolutionJob(job).path(0); }
FixedPath FixedSeparableConvolution::secondPath() const { return detail::convolutionJob(job).path(1); }

}  // namespace BP::filters
