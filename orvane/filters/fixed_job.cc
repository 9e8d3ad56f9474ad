#include "orvane/filters/fixed_job.h"

#include <utility>

#include "orvane/filters/checks.h"
#include "orvane/filters/fixed_runner.h"

namespace BP::filters {

namespace detail {

using KarnDSPFixpt::Fixpt;

std::unique_ptr<Fixpt> FixedJob::makeOwn(const RoleDescription& role, std::int64_t count, ReferenceHost& owner) {
  return std::unique_ptr<Fixpt>(
      KarnDSPFixpt::FixptFactory::createFixpt(handleOf(role, owner), static_cast<int>(count), 0));
}

void FixedJob::checkPad(std::complex<double> value, const RoleDescription& input) {
  checkPadValue(value, input.isComplex);
  const auto cast = makeOwn(input, 1, ownHost);
  cast->setComplex(value.real(), value.imag());
  if (cast->toDouble() == value.real() && cast->imaginaryToDouble() == value.imag()) return;
  refuse("pad value", textOf(value), "it must be a value of the input's type " + toText(input.value));
}

std::vector<FixedStatistics> FixedJob::statistics() const {
  std::vector<FixedStatistics> result;
  for (const auto& [label, total] : totals) {
    if (total.casts == 0) continue;
    result.push_back(total);
    result.back().label = label;
  }
  return result;
}

void FixedFilterJob::run(const FixedView& newInput, const MutableFixedView& newOutput) {
  checkFixed("input", newInput, inputRole, geometry.inputExtents);
  checkFixed("output", newOutput, outputRole, geometry.outputExtents);
  if (geometry.positions.isEmpty()) return;
  const auto memoryOf = [](const FixedView& view) {
    return Memory{view.data(), view.layout(), static_cast<std::size_t>(bytesOfValue(view.type(), view.isComplex()))};
  };
  checkDisjoint(memoryOf(newInput), memoryOf(newOutput));
  inputData = newInput.data();
  outputData = newOutput.data();
  inputStrides.set(newInput.layout());
  outputStrides.set(newOutput.layout());
  constexpr std::int64_t costOfProduct = 4;
  team->run(static_cast<std::size_t>(geometry.rank), costOfProduct * geometry.taps);
  team->forEachInRun([this](Member& member) {
    throwMessages(member.host);
    gather(*member.front, member.host);
  });
}

FixedArray FixedFilterJob::run(const FixedView& newInput) {
  FixedArray result(geometry.outputExtents, outputRole.value, outputRole.isComplex);
  run(newInput, result.view());
  return result;
}

void FixedFilterJob::setPadValue(std::complex<double> value) {
  checkPad(value, inputRole);
  padValue = value;
  forEachMember([&](Member& member) { member.padValue->setComplex(value.real(), value.imag()); });
}

std::vector<FixedStatistics> FixedFilterJob::statistics() {
  forEachMember([this](Member& member) { gather(*member.front, member.host); });
  return FixedJob::statistics();
}

void FixedFilterJob::start(const RoleDescription& newInput, const RoleDescription& newOutput,
                           std::complex<double> newPad) {
  if (geometry.usesPadValue()) checkPad(newPad, newInput);
  inputRole = newInput;
  outputRole = newOutput;
  padValue = newPad;
  team.emplace(crew, [this] { return std::make_unique<Member>(*this); });
}

/// What the set-up of further members counts is not told.
FixedFilterJob::Member::Member(FixedFilterJob& owner) : job(owner), isFirst(!job.team) {
  OwnArrays arrays{job.makeOwn(job.inputRole, 0, host), job.makeOwn(job.outputRole, 0, host),
                   job.makeOwn(job.inputRole, 1, host)};
  arrays.padValue->setComplex(job.padValue.real(), job.padValue.imag());
  input = arrays.input.get();
  output = arrays.output.get();
  padValue = arrays.padValue.get();
  job.makeFront(*this, std::move(arrays));
  if (job.geometry.hasRegion) getProcessor().setRegion(job.geometry.region.get());
  throwMessages(host);
  if (!isFirst) getProcessor().shareIntermediate(job.team->first().getProcessor());
}

void FixedFilterJob::Member::begin() {
  input->setValPtr(const_cast<void*>(job.inputData));  // the front only reads it
  output->setValPtr(job.outputData);
  getProcessor().setStrides(job.inputStrides.get(), job.outputStrides.get());
  front->beginOutputs();
  if (!isFirst) drop(*front, host);
}

}  // namespace detail

FixedRunner::FixedRunner(std::unique_ptr<detail::FixedFilterJob> newJob)
    : job(std::move(newJob), "fixed-point filter") {}

void FixedRunner::run(const FixedView& input, const MutableFixedView& output) { job->run(input, output); }
FixedArray FixedRunner::run(const FixedView& input) { return job->run(input); }
void FixedRunner::setPadValue(std::complex<double> value) { job->setPadValue(value); }
const Extents& FixedRunner::outputExtents() const { return job->outputExtents(); }
Rectangle FixedRunner::positions() const { return rectangleOf(job->getGeometry().positions); }
const Extents& FixedRunner::windowExtents() const { return job->getGeometry().windowExtents; }
std::vector<FixedStatistics> FixedRunner::statistics() { return job->statistics(); }

}  // namespace BP::filters
