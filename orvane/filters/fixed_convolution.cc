#include "orvane/filters/fixed_convolution.h"

#include <map>
#include <string>
#include <utility>

#include "orvane/filters/convolution_front.h"
#include "orvane/filters/fixed_roles.h"

namespace BP::filters {

namespace detail {

namespace {

using KarnDSPFixpt::DSPDataAttributesHandle;
using KarnDSPFixpt::Fixpt;

std::string describe(const FixedType& type, bool isComplex) {
  return filters::toText(type) + (isComplex ? " complex" : "");
}

/// An array of the role's type and these extents.
void checkFixed(const char* argument, const FixedView& view, const RoleDescription& role, const Extents& extents) {
  if (view.type() != role.value || view.isComplex() != role.isComplex) {
    refuse(argument, "type " + describe(view.type(), view.isComplex()),
           "it must be " + describe(role.value, role.isComplex));
  }
  checkArray(argument, view.data(), view.extents(), extents);
}

std::size_t bytesOf(const FixedView& view) { return detail::bytesOf(view.extents(), view.type(), view.isComplex()); }

}  // namespace

/// One fixed-point convolution: its front, which owns the arrays below, and totals of its statistics.
class FixedConvolutionJob {
 public:
  FixedConvolutionJob(const FixedView& newFilter, const Extents& inputExtents, const FixedTypes& types,
                      const ConvolutionOptions& options)
      : geometry(inputExtents, newFilter.extents(), options, mostElements(types, newFilter)),
        roles(types, newFilter.type(), newFilter.isComplex(), geometry.norm != NormNone),
        modes(types.modes) {
    checkFixed("filter", newFilter, roles.filter, geometry.filterExtents);
    start(options, newFilter, nullptr);
  }

  FixedConvolutionJob(const FixedView& first, const FixedView& newSecond, const Extents& inputExtents,
                      const FixedTypes& types, const ConvolutionOptions& options)
      : geometry(inputExtents, first.extents(), newSecond.extents(), options, mostElements(types, first)),
        roles(types, first.type(), first.isComplex(), false),
        modes(types.modes) {
    checkFixed("first filter", first, roles.filter, geometry.filterExtents);
    checkFixed("second filter", newSecond, roles.filter, geometry.secondExtents);
    start(options, first, &newSecond);
  }

  void run(const FixedView& newInput, const MutableFixedView& newOutput) {
    checkFixed("input", newInput, roles.input, geometry.inputExtents);
    checkFixed("output", newOutput, roles.output, geometry.outputExtents);
    checkDisjoint(newInput.data(), bytesOf(newInput), newOutput.data(), bytesOf(newOutput));
    input->setValPtr(const_cast<void*>(newInput.data()));  // the front only reads it
    output->setValPtr(newOutput.data());
    runFront(*front, host);
  }

  FixedArray run(const FixedView& newInput) {
    FixedArray result(geometry.outputExtents, roles.output.value, roles.output.isComplex);
    run(newInput, result.view());
    return result;
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

  void setPadValue(std::complex<double> value) {
    checkPad(value);
    padValue->setComplex(value.real(), value.imag());
  }

  const Extents& outputExtents() const { return geometry.outputExtents; }

  std::vector<FixedStatistics> statistics() {
    FixptLogMap counts;
    front->setFixptLogMap(&counts);
    front->setup(setupFinish);
    front->setFixptLogMap(nullptr);
    std::vector<FixedStatistics> result;
    for (const auto& [label, properties] : counts) addCounts(*properties->getLogStruct(), totals[label]);
    for (auto& [label, total] : totals) {
      total.label = label;
      if (total.casts > 0) result.push_back(total);
    }
    return result;
  }

 private:
  static std::int64_t mostElements(const FixedTypes& types, const FixedView& filter) {
    return types.inputIsComplex || filter.isComplex() ? mostComplexElements : greatestIndex;
  }
  DSPDataAttributesHandle handleOf(const RoleDescription& role) { return makeHandle(role, modes, host.getAdaptor()); }

  /// A new array of a role with values of its own.
  std::unique_ptr<Fixpt> makeOwn(const RoleDescription& role, std::int64_t count) {
    return std::unique_ptr<Fixpt>(KarnDSPFixpt::FixptFactory::createFixpt(handleOf(role), static_cast<int>(count), 0));
  }

  void copyValues(const FixedView& from, Fixpt& to) {
    copyStored(*makeAlias(to.attributes(), from.data()), to, static_cast<int>(elementCount(from.extents())));
  }

  /// Throws unless `value` is one of the input's type.
  void checkPad(std::complex<double> value) {
    checkPadValue(value, roles.input.isComplex);
    const auto cast = makeOwn(roles.input, 1);
    cast->setComplex(value.real(), value.imag());
    if (cast->toDouble() == value.real() && cast->imaginaryToDouble() == value.imag()) return;
    refuse("padValue", textOf(value), "it must be a value of the input's type " + toText(roles.input.value));
  }

  /// Makes the front and hands it arrays: filters and pad value with copies of the values, input and output without.
  void start(const ConvolutionOptions& options, const FixedView& newFilter, const FixedView* newSecond) {
    if (geometry.usesPadValue()) checkPad(options.padValue);
    front =
        geometry.norm == NormNone
            ? makeFront<Fixpt, Fixpt, Fixpt>(host, geometry, handleOf(roles.input), handleOf(roles.output),
                                             handleOf(roles.filter), handleOf(roles.accumulator))
            : makeFront<Fixpt, Fixpt, Fixpt>(host, geometry, handleOf(roles.input), handleOf(roles.output),
                                             handleOf(roles.filter), handleOf(roles.accumulator), handleOf(roles.sqrt));
    auto newInput = makeOwn(roles.input, 0), newOutput = makeOwn(roles.output, 0), newPad = makeOwn(roles.input, 1);
    auto first = makeOwn(roles.filter, elementCount(geometry.filterExtents));
    copyValues(newFilter, *first);
    newPad->setComplex(options.padValue.real(), options.padValue.imag());
    input = newInput.get();
    output = newOutput.get();
    padValue = newPad.get();
    filter = first.get();
    if (newSecond != nullptr) {
      auto second = makeOwn(roles.filter, elementCount(geometry.secondExtents));
      copyValues(*newSecond, *second);
      secondFilter = second.get();
      front->setup(first.release(), second.release(), newInput.release(), newOutput.release(), newPad.release(), true);
    } else {
      front->setup(first.release(), newInput.release(), newOutput.release(), newPad.release(), true);
    }
    throwMessages(host);
  }

  ConvolutionGeometry geometry;
  FixedRoles roles;
  CoreModes modes;
  ReferenceHost host;
  std::unique_ptr<ConvCorrTolk<Fixpt, Fixpt, Fixpt>> front;  // owns the arrays below
  Fixpt* filter = nullptr;
  Fixpt* secondFilter = nullptr;
  Fixpt* input = nullptr;
  Fixpt* output = nullptr;
  Fixpt* padValue = nullptr;
  std::map<std::string, FixedStatistics> totals;
};

}  // namespace detail

FixedConvolutionRunner::FixedConvolutionRunner(std::unique_ptr<detail::FixedConvolutionJob> newJob)
    : job(std::move(newJob)) {}
FixedConvolutionRunner::FixedConvolutionRunner(FixedConvolutionRunner&&) noexcept = default;
FixedConvolutionRunner& FixedConvolutionRunner::operator=(FixedConvolutionRunner&&) noexcept = default;
FixedConvolutionRunner::~FixedConvolutionRunner() = default;

void FixedConvolutionRunner::run(const FixedView& input, const MutableFixedView& output) {
  detail::used(job).run(input, output);
}
FixedArray FixedConvolutionRunner::run(const FixedView& input) { return detail::used(job).run(input); }
void FixedConvolutionRunner::setPadValue(std::complex<double> value) { detail::used(job).setPadValue(value); }
const Extents& FixedConvolutionRunner::outputExtents() const { return detail::used(job).outputExtents(); }
std::vector<FixedStatistics> FixedConvolutionRunner::statistics() { return detail::used(job).statistics(); }

FixedConvolution::FixedConvolution(const FixedView& filter, const Extents& inputExtents, const FixedTypes& types,
                                   const ConvolutionOptions& options)
    : FixedConvolutionRunner(std::make_unique<detail::FixedConvolutionJob>(filter, inputExtents, types, options)) {}
void FixedConvolution::setFilter(const FixedView& filter) { detail::used(job).setFilter(filter); }

FixedSeparableConvolution::FixedSeparableConvolution(const FixedView& first, const FixedView& second,
                                                     const Extents& inputExtents, const FixedTypes& types,
                                                     const ConvolutionOptions& options)
    : FixedConvolutionRunner(
          std::make_unique<detail::FixedConvolutionJob>(first, second, inputExtents, types, options)) {}
void FixedSeparableConvolution::setFilters(const FixedView& first, const FixedView& second) {
  detail::used(job).setFilters(first, second);
}

}  // namespace BP::filters
