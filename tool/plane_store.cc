#include "tool/plane_store.h"

#include <complex>
#include <limits>
#include <stdexcept>
#include <type_traits>

namespace BP::tool {

bool isWhole(ElementType type) {
  return visitType(type, [](auto zero) { return std::is_integral_v<decltype(zero)>; });
}

std::pair<double, double> rangeOf(ElementType type) {
  if (type == ElementType::boolean) return {0, 1};
  return visitType(type, [](auto zero) -> std::pair<double, double> {
    using Limits = std::numeric_limits<decltype(zero)>;
    if constexpr (Limits::is_integer) {
      return {static_cast<double>(Limits::min()), static_cast<double>(Limits::max())};
    } else {
      throw std::logic_error("a type without a range");
    }
  });
}

ElementType sumTypeFor(ElementType type, const std::optional<ElementType>& asked) {
  const bool isSingle = type == ElementType::float32 || type == ElementType::complex64;
  const ElementType real = asked.value_or(isSingle ? ElementType::float32 : ElementType::float64);
  if (!isComplex(type)) return real;
  return real == ElementType::float32 ? ElementType::complex64 : ElementType::complex128;
}

template <class T>
PlaneStore<T> makeStore(ElementType type, int channels, const SampleScaling& scaling) {
  const auto step = static_cast<std::size_t>(channels);
  return visitType(type, [&](auto zero) -> PlaneStore<T> {
    using To = decltype(zero);
    if constexpr (std::is_same_v<To, T>) {
      return [=](const T* from, std::size_t count, std::uint8_t* to, SampleCounts&) {
        storeScaled(from, count, scaling, reinterpret_cast<T*>(to), step);
      };
    } else if constexpr (std::is_integral_v<To> && sizeof(To) <= 4 && !IsComplex<T>::value) {
      return [=](const T* from, std::size_t count, std::uint8_t* to, SampleCounts& counts) {
        storeRounded(from, count, scaling, reinterpret_cast<To*>(to), step, counts);
      };
    } else {
      throw std::logic_error("sums do not become samples of type " + std::string(nameOf(type)));
    }
  });
}

template PlaneStore<float> makeStore(ElementType, int, const SampleScaling&);
template PlaneStore<double> makeStore(ElementType, int, const SampleScaling&);
template PlaneStore<std::complex<float>> makeStore(ElementType, int, const SampleScaling&);
template PlaneStore<std::complex<double>> makeStore(ElementType, int, const SampleScaling&);

}  // namespace BP::tool
