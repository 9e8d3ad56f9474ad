#include <algorithm>

#include "python/src/filter.h"

namespace BP::python {

namespace {

[[noreturn]] void refuseValue(const std::string& text) { throw std::invalid_argument(text); }

/// A real pad value.
double realPad(std::complex<double> value) {
  if (value.imag() != 0) refuseValue("pad value: a complex number; the input is real, so it must be real");
  return value.real();
}

/// A `CorrelationND`, whose filter is reversed for a convolution.
template <class T, class UT>
class VolumeFilter final : public Filter {
 public:
  VolumeFilter(const FilterRequest& request, const CorrelationNDOptions& options)
      : reverses(request.options.direction != FilterDirection::correlation),
        job(walked(request.filters[0]), request.inputExtents, options) {}

  Element inputElement() const override { return elementOf<UT>(); }
  Element outputElement() const override { return elementOf<T>(); }
  const Extents& outputExtents() const override { return job.outputExtents(); }
  const Extents& windowExtents() const override { return job.windowExtents(); }
  Box positions() const override { return job.positions(); }
  std::int64_t run(const Memory& input, const Memory& output) override { return runInto<UT, T>(job, input, output); }
  void setFilters(std::span<const Memory> filters) override { job.setFilter(walked(filters[0])); }
  void setPadValue(std::complex<double> value) override { job.setPadValue(realPad(value)); }

 private:
  Array<T> walked(const Memory& filter) const {
    Array<T> copy(filter.view<const T>());
    if (reverses) std::reverse(copy.begin(), copy.end());
    return copy;
  }

  bool reverses;
  CorrelationND<T, UT> job;
};

template <class T>
class MedianFilter final : public Filter {
 public:
  MedianFilter(const FilterRequest& request, const MedianOptions& options)
      : job(request.window, request.inputExtents, options) {}

  Element inputElement() const override { return elementOf<T>(); }
  Element outputElement() const override { return elementOf<T>(); }
  const Extents& outputExtents() const override { return job.outputExtents(); }
  const Extents& windowExtents() const override { return job.windowExtents(); }
  Box positions() const override { return boxOf(job.positions(), job.windowExtents().rank()); }
  std::int64_t run(const Memory& input, const Memory& output) override {
    if (output.element != elementOf<T>()) {
      throw WrongType("output: elements of " + nameOf(output.element) + "; they must be " + nameOf(elementOf<T>()));
    }
    job.run(input.view<const T>(), output.view<T>());
    return 0;
  }
  void setFilters(std::span<const Memory>) override { throw WrongType("set_filter: a median has no filter"); }
  void setPadValue(std::complex<double> value) override { job.setPadValue(realPad(value)); }

 private:
  Median<T> job;
};

template <class T>
constexpr bool isComplex = std::is_same_v<T, std::complex<float>> || std::is_same_v<T, std::complex<double>>;

}  // namespace

std::unique_ptr<Filter> makeCorrelation(const FilterRequest& request) {
  const ConvolutionOptions& options = request.options;
  if (options.normalise != Normalisation::none) {
    refuseValue("normalise: energy; allowed is none for inputs of more than 2 dimensions");
  }
  const CorrelationNDOptions volume{options.mode, options.pad, request.region, options.threads, options.progress};
  const Element filter = request.filters[0].element;
  return visitElement(filter, [&]<class T>(std::type_identity<T>) {
    return visitElement(request.input, [&]<class UT>(std::type_identity<UT>) -> std::unique_ptr<Filter> {
      if constexpr (isFilterPair<UT, T>() && !isComplex<UT> && !isComplex<T>) {
        realPad(options.pad.value);
        return std::make_unique<VolumeFilter<T, UT>>(request, volume);
      } else if constexpr (isComplex<UT> || isComplex<T>) {
        throw WrongType("input: " + nameOf(request.input) + " with a filter of " + nameOf(filter) +
                        "; inputs of more than 2 dimensions are real");
      } else {
        refusePair("input", request.input, "filter", filter);
      }
    });
  });
}

std::unique_ptr<Filter> makeMedian(const FilterRequest& request) {
  const ConvolutionOptions& given = request.options;
  MedianOptions options{.mode = given.mode, .pad = given.pad, .threads = given.threads, .progress = given.progress};
  if (request.region) options.region = rectangleOf(*request.region);
  return visitElement(request.input, [&]<class T>(std::type_identity<T>) -> std::unique_ptr<Filter> {
    if constexpr (isComplex<T>) {
      throw WrongType("input: " + nameOf(request.input) + "; complex numbers have no order, so they have no median");
    } else {
      return std::make_unique<MedianFilter<T>>(request, options);
    }
  });
}

}  // namespace BP::python
