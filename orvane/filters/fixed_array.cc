#include "orvane/filters/fixed_array.h"

#include <limits>
#include <new>
#include <stdexcept>

#include "orvane/filters/checks.h"
#include "orvane/filters/fixed_values.h"

namespace BP::filters {

namespace {

using KarnDSPFixpt::DSPDataAttributesHandle;
using KarnDSPFixpt::Fixpt;

void checkValues(const void* data, const Extents& extents, bool isComplex) {
  detail::checkExtents("values", extents, isComplex ? detail::maxComplexElements : detail::maxIndex);
  detail::checkArray("values", data, extents, extents);
}

/// A handle for an array of `type` that is never multiplied.
DSPDataAttributesHandle plainHandle(const FixedType& type, bool isComplex, const FixedModes& modes,
                                    brekk::BrekkAdaptorTolk* adaptor) {
  return detail::makeHandle({"value", type, type, type, isComplex}, detail::CoreModes(modes), adaptor);
}

template <class T>
FixedArray quantiseAll(const ArrayView<const T>& values, const FixedType& type, const FixedModes& modes,
                       FixedStatistics* statistics) {
  constexpr bool isComplex = !std::is_same_v<T, double>;
  checkValues(values.data(), values.extents(), isComplex);
  FixedArray result(values.extents(), type, isComplex);
  brekk::BrekkAdaptorTolk adaptor;
  const auto fixed = detail::makeAlias(plainHandle(type, isComplex, modes, &adaptor), result.data());
  const int count = static_cast<int>(elementCount(values.extents()));
  for (int i = 0; i < count; ++i) {
    if constexpr (isComplex) {
      (*fixed)[i].setComplex(values.data()[i].real(), values.data()[i].imag());
    } else {
      (*fixed)[i] = values.data()[i];
    }
  }
  if (statistics != nullptr) detail::addCounts(*fixed->takeProperties()->getLogStruct(), *statistics);
  return result;
}

/// Calls `take(i, value)` for each value.
template <class Take>
void forEachValue(const FixedView& values, Take&& take) {
  detail::checkedContainerBits("values", values.type());
  checkValues(values.data(), values.extents(), values.isComplex());
  const auto fixed = detail::makeAlias(plainHandle(values.type(), values.isComplex(), {}, nullptr), values.data());
  const int count = static_cast<int>(elementCount(values.extents()));
  for (int i = 0; i < count; ++i) take(static_cast<std::size_t>(i), (*fixed)[i]);
}

}  // namespace

namespace detail {

int checkedContainerBits(std::string_view argument, const FixedType& type) {
  constexpr int maxWord = static_cast<int>(KarnDSPFixpt::maxWord);
  if (type.word < 1 || type.word > maxWord) {
    refuse(argument, type.word == 0 ? "no type" : "word length " + std::to_string(type.word),
           "allowed are word lengths of 1 to " + std::to_string(maxWord));
  }
  if (type.fraction < -detail::maxFraction || type.fraction > detail::maxFraction) {
    refuse(argument, "fraction length " + std::to_string(type.fraction),
           "allowed are -" + std::to_string(detail::maxFraction) + " to " + std::to_string(detail::maxFraction));
  }
  int bits = 8;
  while (bits < type.word) bits *= 2;
  return bits;
}

void checkContainer(int bits, const FixedType& type) {
  const int container = checkedContainerBits("type", type);
  if (bits == container) return;
  refuse("type", toText(type) + " for elements of " + std::to_string(bits) + " bits",
         "its values are stored in elements of " + std::to_string(container) + " bits");
}

std::size_t bytesOf(const Extents& extents, const FixedType& type, bool isComplex) {
  const auto bytes = static_cast<std::size_t>(checkedContainerBits("type", type) / 8) * (isComplex ? 2 : 1);
  const std::size_t count = sizeOf(extents);
  if (count > static_cast<std::size_t>(std::numeric_limits<std::ptrdiff_t>::max()) / bytes) throw std::bad_alloc();
  return count * bytes;
}

}  // namespace detail

FixedType fixedType(std::string_view text) {
  const KarnDSPFixpt::FixptType type = KarnDSPFixpt::parseFixptType(text);
  const FixedType result{static_cast<int>(type.word), type.fraction, type.isSigned};
  detail::checkedContainerBits("type \"" + std::string(text) + "\"", result);
  return result;
}

std::string toText(const FixedType& type) {
  return (type.isSigned ? "s" : "u") + std::to_string(type.word) + "." + std::to_string(type.fraction);
}

FixedArray::FixedArray(const Extents& extents, const FixedType& type, bool isComplex)
    : size(extents), kind(type), complex(isComplex), bytes(detail::bytesOf(extents, type, isComplex)) {}

FixedArray quantise(ArrayView<const double> values, const FixedType& type, const FixedModes& modes,
                    FixedStatistics* statistics) {
  return quantiseAll(values, type, modes, statistics);
}

FixedArray quantise(ArrayView<const std::complex<double>> values, const FixedType& type, const FixedModes& modes,
                    FixedStatistics* statistics) {
  return quantiseAll(values, type, modes, statistics);
}

Array<double> toDouble(const FixedView& values) {
  if (values.isComplex()) detail::refuse("values", "complex", "they must be real");
  Array<double> result(values.extents());
  forEachValue(values, [&](std::size_t i, const Fixpt& value) { result[i] = value.toDouble(); });
  return result;
}

Array<std::complex<double>> toComplex(const FixedView& values) {
  Array<std::complex<double>> result(values.extents());
  forEachValue(values, [&](std::size_t i, const Fixpt& value) {
    result[i] = {value.toDouble(), value.imaginaryToDouble()};
  });
  return result;
}

}  // namespace BP::filters
