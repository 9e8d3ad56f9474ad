#include <algorithm>
#include <vector>

#include "python/src/filter.h"

namespace BP::python {

void refusePair(const char* inputName, Element input, const char* filterName, Element filter) {
  const auto isOf = [](Element e, Element first, Element last) { return e >= first && e <= last; };
  if (input == Element::boolean) {
    throw WrongType(std::string(inputName) +
                    ": bool inputs have no sums; use astype(numpy.float32), or median and match, which take bool");
  }
  if (!isOf(filter, Element::float32, Element::complex128)) {
    throw WrongType(std::string(filterName) + ": elements of " + nameOf(filter) +
                    "; allowed are float32, float64, complex64 and complex128");
  }
  if (isOf(input, Element::int32, Element::uint32)) {
    throw WrongType(std::string(filterName) +
                    ": float does not hold all integers of 32 bits; give the filter elements of float64");
  }
  throw WrongType(std::string(filterName) + ": elements of " + nameOf(filter) + ", those of the " + inputName +
                  " are " + nameOf(input) + "; they differ in precision, convert one, as by astype()");
}

void refuseOutput(Element output, Element sums) {
  const bool isReal = sums == Element::float32 || sums == Element::float64;
  throw WrongType("output: elements of " + nameOf(output) + "; they must be " + nameOf(sums) +
                  (isReal ? ", or integers of 8, 16 or 32 bits" : ""));
}

namespace {

/// A `Convolution` or a `SeparableConvolution`.
template <class UT, class HT, class Job>
class PlainFilter final : public Filter {
 public:
  explicit PlainFilter(Job newJob) : job(std::move(newJob)) {}

  Element inputElement() const override { return elementOf<UT>(); }
  Element outputElement() const override { return elementOf<typename Job::Output>(); }
  const Extents& outputExtents() const override { return job.outputExtents(); }
  const Extents& windowExtents() const override { return job.windowExtents(); }
  Box positions() const override { return boxOf(job.positions(), job.windowExtents().rank()); }
  std::int64_t run(const Memory& input, const Memory& output) override {
    return runInto<UT, typename Job::Output>(job, input, output);
  }
  void setFilters(std::span<const Memory> filters) override {
    if constexpr (requires { job.setFilters(filters[0].view<const HT>(), filters[1].view<const HT>()); }) {
      job.setFilters(filters[0].view<const HT>(), filters[1].view<const HT>());
    } else {
      job.setFilter(filters[0].view<const HT>());
    }
  }
  void setPadValue(std::complex<double> value) override { job.setPadValue(value); }

 private:
  Job job;
};

/// Calls `make` with the C++ types of input and filter. Throws `WrongType` for types that do not go together.
template <class Make>
std::unique_ptr<Filter> withTypes(const FilterRequest& request, Make&& make) {
  const Element filter = request.filters[0].element;
  return visitElement(filter, [&]<class HT>(std::type_identity<HT>) {
    return visitElement(request.input, [&]<class UT>(std::type_identity<UT>) -> std::unique_ptr<Filter> {
      if constexpr (isFilterPair<UT, HT>()) {
        return make.template operator()<UT, HT>();
      } else {
        refusePair("input", request.input, "filter", filter);
      }
    });
  });
}

/// The options with the region as a rectangle.
ConvolutionOptions withRectangle(const FilterRequest& request) {
  ConvolutionOptions options = request.options;
  if (request.region) options.region = rectangleOf(*request.region);
  return options;
}

}  // namespace

std::unique_ptr<Filter> makeConvolution(const FilterRequest& request) {
  if (request.inputExtents.rank() > 2) return makeCorrelation(request);
  return withTypes(request, [&]<class UT, class HT>() -> std::unique_ptr<Filter> {
    using Job = Convolution<UT, HT>;
    return std::make_unique<PlainFilter<UT, HT, Job>>(
        Job(request.filters[0].view<const HT>(), request.inputExtents, withRectangle(request)));
  });
}

std::unique_ptr<Filter> makeSeparable(const FilterRequest& request) {
  return withTypes(request, [&]<class UT, class HT>() -> std::unique_ptr<Filter> {
    using Job = SeparableConvolution<UT, HT>;
    return std::make_unique<PlainFilter<UT, HT, Job>>(Job(request.filters[0].view<const HT>(),
                                                          request.filters[1].view<const HT>(), request.inputExtents,
                                                          withRectangle(request)));
  });
}

}  // namespace BP::python
