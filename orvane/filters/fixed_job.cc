#include "orvane/filters/fixed_job.h"

#include <utility>

#include "orvane/filters/checks.h"
#include "orvane/filters/fixed_runner.h"

namespace BP::filters {

namespace detail {

using KarnDSPFixpt::Fixpt;

std::unique_ptr<Fixpt> FixedJob::makeOwn(const RoleDescription& role, std::int64_t count) {
  return std::unique_ptr<Fixpt>(KarnDSPFixpt::FixptFactory::createFixpt(handleOf(role), static_cast<int>(count), 0));
}

void FixedJob::checkPad(std::complex<double> value, const RoleDescription& input) {
  checkPadValue(value, input.isComplex);
  const auto cast = makeOwn(input, 1);
  cast->setComplex(value.real(), value.imag());
  if (cast->toDouble() == value.real() && cast->imaginaryToDouble() == value.imag()) return;
  refuse("padValue", textOf(value), "it must be a value of the input's type " + toText(input.value));
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
  checkDisjoint(newInput.data(), bytesOf(newInput), newOutput.data(), bytesOf(newOutput));
  input->setValPtr(const_cast<void*>(newInput.data()));  // the front only reads it
  output->setValPtr(newOutput.data());
  runFront(*front, getHost());
  gather(*front);
}

FixedArray FixedFilterJob::run(const FixedView& newInput) {
  FixedArray result(geometry.outputExtents, outputRole.value, outputRole.isComplex);
  run(newInput, result.view());
  return result;
}

void FixedFilterJob::setPadValue(std::complex<double> value) {
  checkPad(value, inputRole);
  padValue->setComplex(value.real(), value.imag());
}

std::vector<FixedStatistics> FixedFilterJob::statistics() {
  gather(*front);
  return FixedJob::statistics();
}

FixedFilterJob::Arrays FixedFilterJob::makeArrays(const RoleDescription& newInput, const RoleDescription& newOutput,
                                                  std::complex<double> newPad) {
  if (geometry.usesPadValue()) checkPad(newPad, newInput);
  inputRole = newInput;
  outputRole = newOutput;
  Arrays arrays{makeOwn(inputRole, 0), makeOwn(outputRole, 0), makeOwn(inputRole, 1)};
  arrays.padValue->setComplex(newPad.real(), newPad.imag());
  input = arrays.input.get();
  output = arrays.output.get();
  padValue = arrays.padValue.get();
  return arrays;
}

void FixedFilterJob::start(std::unique_ptr<Front> newFront) {
  front = std::move(newFront);
  throwMessages(getHost());
}

}  // namespace detail

FixedRunner::FixedRunner(std::unique_ptr<detail::FixedFilterJob> newJob)
    : job(std::move(newJob), "fixed-point filter") {}

void FixedRunner::run(const FixedView& input, const MutableFixedView& output) { job->run(input, output); }
FixedArray FixedRunner::run(const FixedView& input) { return job->run(input); }
void FixedRunner::setPadValue(std::complex<double> value) { job->setPadValue(value); }
const Extents& FixedRunner::outputExtents() const { return job->outputExtents(); }
std::vector<FixedStatistics> FixedRunner::statistics() { return job->statistics(); }

}  // namespace BP::filters
