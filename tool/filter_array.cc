#include "tool/filter_array.h"

#include <complex>
#include <cstring>
#include <stdexcept>
#include <type_traits>

#include "orvane/filters/array.h"
#include "tool/plane_filter.h"

namespace BP::tool {

namespace {

using filters::Extents;

template <class T>
struct IsComplex : std::false_type {};
template <class T>
struct IsComplex<std::complex<T>> : std::true_type {};

bool isComplex(ElementType type) { return type == ElementType::complex64 || type == ElementType::complex128; }
bool isFloating(ElementType type) {
  return isComplex(type) || type == ElementType::float32 || type == ElementType::float64;
}

template <class T>
constexpr ElementType typeOf() {
  if constexpr (IsComplex<T>::value) return sizeof(T) == 8 ? ElementType::complex64 : ElementType::complex128;
  return sizeof(T) == 4 ? ElementType::float32 : ElementType::float64;
}

/// A real value in another type; counts it if that does not have it.
template <class To, class From>
To converted(From value, std::uint64_t& rounded) {
  const To result = static_cast<To>(value);
  if constexpr (!std::is_same_v<To, From>) {  // `long double` holds every whole number of 64 bits
    const auto before = static_cast<long double>(value);
    if (before == before && before != static_cast<long double>(result)) ++rounded;
  }
  return result;
}

/// The elements as To, which is complex if they are.
template <class To>
filters::Array<To> elementsAs(const Array& array, const Extents& extents, std::uint64_t& rounded) {
  filters::Array<To> result(extents);
  visitElements(array, [&](const auto* elements) {
    using From = std::remove_cvref_t<decltype(*elements)>;
    for (std::size_t i = 0; i < result.size(); ++i) {
      if constexpr (IsComplex<To>::value && IsComplex<From>::value) {
        using Real = typename To::value_type;
        std::uint64_t parts = 0;
        result[i] = {converted<Real>(elements[i].real(), parts), converted<Real>(elements[i].imag(), parts)};
        rounded += parts > 0 ? 1 : 0;
      } else if constexpr (!IsComplex<To>::value && !IsComplex<From>::value) {
        result[i] = converted<To>(elements[i], rounded);
      }
    }
  });
  return result;
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
void filterFixed(const Array& input, const Extents& extents, const FilterSettings& settings,
                 const SampleScaling& scaling, FilteredArray& result) {
  FixedPlaneFilter filter(settings, extents, IsComplex<T>::value);
  const auto plane = elementsAs<T>(input, extents, result.rounded);
  result.array = packed(filter.run<T>(plane), scaling);
  result.fixedTable = filter.table();
}

/// The precision of sums: float32 or float64.
ElementType sumTypeFor(const Array& input, const FilterSettings& settings) {
  if (settings.sumType) return *settings.sumType;
  if (!isFloating(input.type)) {
    throw std::runtime_error("the array has elements of type " + std::string(nameOf(input.type)) +
                             ": --type must say in what they are summed; allowed are float, double");
  }
  const bool isSingle = input.type == ElementType::float32 || input.type == ElementType::complex64;
  return isSingle ? ElementType::float32 : ElementType::float64;
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
  const bool isFixed = settings.fixed.has_value();
  const bool isDouble = isFixed || sumTypeFor(input, settings) == ElementType::float64;
  FilteredArray result;
  const auto run = isComplex(input.type) ? (isFixed    ? filterFixed<std::complex<double>>
                                            : isDouble ? filterPlain<std::complex<double>>
                                                       : filterPlain<std::complex<float>>)
                                         : (isFixed    ? filterFixed<double>
                                            : isDouble ? filterPlain<double>
                                                       : filterPlain<float>);
  run(input, extents, settings, scaling, result);
  return result;
}

}  // namespace BP::tool
