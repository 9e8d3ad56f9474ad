#include "tool/volume.h"

#include <stdexcept>
#include <string>

#include "orvane/filters/correlation_nd.h"
#include "tool/elements.h"
#include "tool/plane_store.h"

namespace BP::tool {

namespace {

filters::Extents checkedRank(const Array& array, const std::string& name) {
  constexpr std::size_t maxRank = 8;
  if (array.extents.empty() || array.extents.size() > maxRank) {
    throw std::runtime_error("the " + name + " has " + std::to_string(array.extents.size()) +
                             " dimensions; allowed are 1 to " + std::to_string(maxRank));
  }
  if (isComplex(array.type)) {
    throw std::runtime_error("the " + name + " has elements of type " + std::string(nameOf(array.type)) +
                             "; --nd allows real ones only");
  }
  return filters::Extents(array.extents);
}

template <class T>
void correlateAs(const Array& input, const Array& kernel, const FilterSettings& settings, const SampleScaling& scaling,
                 int threads, FilteredVolume& result) {
  std::uint64_t roundedInKernel = 0;
  const auto filter = elementsAs<T>(kernel, checkedRank(kernel, "kernel"), roundedInKernel);
  const auto volume = elementsAs<T>(input, checkedRank(input, "array"), result.rounded);
  const auto sums = filters::correlateND(
      volume, filter, {.mode = settings.options.mode, .pad = settings.options.pad, .threads = threads});
  result.array.extents.assign(sums.extents().begin(), sums.extents().end());
  result.array.bytes.resize(sums.size() * sizeof(T));
  storeScaled(sums.data(), sums.size(), scaling, result.array.as<T>(), 1);
}

}  // namespace

FilteredVolume correlateVolume(const Array& input, const Array& kernel, const FilterSettings& settings,
                               const SampleScaling& scaling, int threads) {
  if (settings.fixed || settings.options.normalise != filters::Normalisation::none) {
    throw std::runtime_error("--nd allows neither --fixed nor --normalise");
  }
  if (settings.options.pad.value.imag() != 0) {
    throw std::runtime_error("--pad constant: with --nd the value must be real");
  }
  checkedRank(input, "array");
  FilteredVolume result;
  result.array.type = sumTypeFor(input.type, settings.sumType);
  const bool isDouble = result.array.type == ElementType::float64;
  (isDouble ? correlateAs<double> : correlateAs<float>)(input, kernel, settings, scaling, threads, result);
  return result;
}

}  // namespace BP::tool
