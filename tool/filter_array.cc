#include "tool/filter_array.h"

#include <complex>
#include <cstring>
#include <stdexcept>
#include <type_traits>

#include "orvane/filters/array.h"
#include "orvane/filters/correlation_nd.h"
#include "tool/elements.h"

namespace BP::tool {

namespace {

using filters::Extents;

bool isFloating(ElementType type) {
  return isComplex(type) || type == ElementType::float32 || type == ElementType::float64;
}

template <class T>
constexpr ElementType typeOf() {
  if constexpr (IsComplex<T>::value) return sizeof(T) == 8 ? ElementType::complex64 : ElementType::complex128;
  return sizeof(T) == 4 ? ElementType::float32 : ElementType::float64;
}

template <class T>
Array packed(filters::Array<T> values, const SampleScaling& scaling) {
  using Real = std::conditional_t<sizeof(T) == (IsComplex<T>::value ? 8 : 4), float, double>;
  const auto scale = static_cast<Real>(scaling.scale), offset = static_cast<Real>(scaling.offset);
  if (scaling.scale != 1 || scaling.offset != 0) {
    for (T& value : values) value = value * scale + offset;
  }
  Array result{typeOf<T>(), {values.extents().begin(), values.extents().end()}, {}};
  result.bytes.resize(values.size() * sizeof(T));
  std::memcpy(result.bytes.data(), values.data(), result.bytes.size());
  return result;
}

template <class T>
void filterPlain(const Array& input, const Extents& extents, const FilterSettings& settings,
                 const SampleScaling& scaling, FilteredArray& result) {
  const PlaneFilter<T> filter = makePlaneFilter<T>(settings, extents);
  const auto plane = elementsAs<T>(input, extents, result.rounded);
  result.array = packed(filter(plane), scaling);
}

/// T is `double` or its complex type.
template <class T>
void filterFixed(const Array& input, FixedPlaneFilter& filter, const SampleScaling& scaling, FilteredArray& result) {
  const auto plane = elementsAs<T>(input, planeExtents(input), result.rounded);
  result.array = packed(filter.run<T>(plane), scaling);
}

/// The type of sums: float32 or float64.
ElementType sumTypeFor(const Array& input, const FilterSettings& settings) {
  if (settings.sumType) return *settings.sumType;
  if (!isFloating(input.type)) {
    throw std::runtime_error("the array has elements of type " + std::string(nameOf(input.type)) +
                             ": --type must say in what they are summed; allowed are float, double");
  }
  const bool isSingle = input.type == ElementType::float32 || input.type == ElementType::complex64;
  return isSingle ? ElementType::float32 : ElementType::float64;
}

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
  return Extents(array.extents);
}

template <class T>
void correlateAs(const Array& input, const Array& kernel, const FilterSettings& settings, const SampleScaling& scaling,
                 FilteredArray& result) {
  std::uint64_t roundedInKernel = 0;
  const auto filter = elementsAs<T>(kernel, checkedRank(kernel, "kernel"), roundedInKernel);
  const auto volume = elementsAs<T>(input, checkedRank(input, "array"), result.rounded);
  result.array = packed(
      filters::correlateND(
          volume, filter,
          {.mode = settings.options.mode, .pad = settings.options.pad, .padValue = settings.options.padValue.real()}),
      scaling);
}

}  // namespace

Extents planeExtents(const Array& array) {
  if (array.extents.empty() || array.extents.size() > 2) {
    throw std::runtime_error("the array has " + std::to_string(array.extents.size()) +
                             " dimensions; allowed are 1 and 2, for one plane is filtered");
  }
  return Extents(array.extents);
}

FilteredArray filterArray(const Array& input, const FilterSettings& settings, const SampleScaling& scaling) {
  const Extents extents = planeExtents(input);
  if (settings.fixed) {
    FixedPlaneFilter filter(settings, extents, isComplex(input.type));
    return filterArrayFixed(input, filter, scaling);
  }
  const bool isDouble = sumTypeFor(input, settings) == ElementType::float64;
  FilteredArray result;
  const auto run = isComplex(input.type)
                       ? (isDouble ? filterPlain<std::complex<double>> : filterPlain<std::complex<float>>)
                       : (isDouble ? filterPlain<double> : filterPlain<float>);
  run(input, extents, settings, scaling, result);
  return result;
}

FilteredArray filterArrayFixed(const Array& input, FixedPlaneFilter& filter, const SampleScaling& scaling) {
  FilteredArray result;
  (isComplex(input.type) ? filterFixed<std::complex<double>> : filterFixed<double>)(input, filter, scaling, result);
  result.fixedTable = filter.table();
  return result;
}

FilteredArray correlateVolume(const Array& input, const Array& kernel, const FilterSettings& settings,
                              const SampleScaling& scaling) {
  if (settings.fixed || settings.options.normalise != filters::Normalisation::none) {
    throw std::runtime_error("--nd allows neither --fixed nor --normalise");
  }
  if (settings.options.padValue.imag() != 0)
    throw std::runtime_error("--pad constant: with --nd the value must be real");
  checkedRank(input, "array");
  FilteredArray result;
  const bool isDouble = sumTypeFor(input, settings) == ElementType::float64;
  (isDouble ? correlateAs<double> : correlateAs<float>)(input, kernel, settings, scaling, result);
  return result;
}

}  // namespace BP::tool
