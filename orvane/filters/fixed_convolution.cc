#include "orvane/filters/fixed_convolution.h"

#include <memory>
#include <utility>
#include <vector>

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
      : FixedFilterJob({inputExtents, newFilter.extents(), options, maxElements(types, newFilter)}, options,
                       types.modes),
        roles(types, newFilter.type(), newFilter.isComplex(), geometry.norm != NormNone) {
    checkFixed("filter", newFilter, roles.filter, geometry.filterExtents);
    filterValues = FixedArray(newFilter);
    start(roles.input, roles.output, options.pad.value);
  }

  FixedConvolutionJob(const FixedView& first, const FixedView& newSecond, const Extents& inputExtents,
                      const FixedTypes& types, const ConvolutionOptions& options)
      : FixedFilterJob({inputExtents, first.extents(), newSecond.extents(), options, maxElements(types, first)},
                       options, types.modes),
        roles(types, first.type(), first.isComplex(), false) {
    checkFixed("first filter", first, roles.filter, geometry.filterExtents);
    checkFixed("second filter", newSecond, roles.filter, geometry.secondExtents);
    filterValues = FixedArray(first);
    secondValues = FixedArray(newSecond);
    start(roles.input, roles.output, options.pad.value);
  }

  void setFilter(const FixedView& newFilter) {
    checkFixed("filter", newFilter, roles.filter, geometry.filterExtents);
    filterValues = FixedArray(newFilter);
    forEachMember([this](Member& member) { copyFilters(member); });
  }

  void setFilters(const FixedView& first, const FixedView& newSecond) {
    checkFixed("first filter", first, roles.filter, geometry.filterExtents);
    checkFixed("second filter", newSecond, roles.filter, geometry.secondExtents);
    FixedArray firstCopy(first), secondCopy(newSecond);
    filterValues = std::move(firstCopy);
    secondValues = std::move(secondCopy);
    forEachMember([this](Member& member) { copyFilters(member); });
  }

  /// How the sums of a pass run; the second pass reads values of the output's type.
  FixedPath path(int pass) {
    const RoleDescription& from = pass == 0 ? roles.input : roles.output;
    Fixpt& taps = pass == 0 ? *firstMember().filter : *firstMember().secondFilter;
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

  /// Copies the filters' values into the arrays that the front of a member owns.
  void copyFilters(Member& member) const {
    const auto copy = [](const FixedArray& from, Fixpt& to) {
      copyStored(*makeAlias(to.attributes(), from.data()), to, static_cast<int>(elementCount(from.extents())));
    };
    copy(filterValues, *member.filter);
    if (geometry.isSeparable()) copy(secondValues, *member.secondFilter);
  }

  void makeFront(Member& member, OwnArrays arrays) override {
    const auto handle = [&](const RoleDescription& role) { return handleOf(role, member.host); };
    const auto input = handle(roles.input), output = handle(roles.output), taps = handle(roles.filter),
               accumulator = handle(roles.accumulator);
    using detail::makeFront;
    auto made = geometry.norm == NormNone
                    ? makeFront<Fixpt, Fixpt, Fixpt>(member.host, geometry, input, output, taps, accumulator)
                    : makeFront<Fixpt, Fixpt, Fixpt>(member.host, geometry, input, output, taps, accumulator,
                                                     handle(roles.sqrt));
    auto first = makeOwn(roles.filter, elementCount(geometry.filterExtents), member.host);
    member.filter = first.get();
    std::unique_ptr<Fixpt> second;
    if (geometry.isSeparable()) second = makeOwn(roles.filter, elementCount(geometry.secondExtents), member.host);
    member.secondFilter = second.get();
    copyFilters(member);
    if (geometry.isSeparable()) {
      made->setup(first.release(), second.release(), arrays.input.release(), arrays.output.release(),
                  arrays.padValue.release(), true);
    } else {
      made->setup(first.release(), arrays.input.release(), arrays.output.release(), arrays.padValue.release(), true);
    }
    member.front = std::move(made);
  }

  FixedRoles roles;
  FixedArray filterValues, secondValues;
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
