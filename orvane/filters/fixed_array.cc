#include "orvane/filters/fixed_array.h"

#include <algorithm>
#include <limits>
#include <new>
#include <stdexcept>
#include <type_traits>
#include <vector>

#include "orvane/filters/checks.h"
#include "orvane/filters/fixed_values.h"

namespace BP::filters {

namespace {

using KarnDSPFixpt::DSPDataAttributesHandle;
using KarnDSPFixpt::Fixpt;

void checkValues(const void* data, const Layout& layout, bool isComplex) {
  const std::int64_t most = isComplex ? detail::maxComplexElements : detail::maxIndex;
  detail::checkExtents("values", layout.extents(), most);
  detail::checkArray("values", data, layout, layout.extents(), most);
}

/// Calls `take(number in memory, number)` for each element of an array of one dimension or more.
template <class Take>
void forEachElement(const Layout& layout, Take&& take) {
  const std::int64_t width = layout.extents()[0];
  layout.forEachLine([&](std::ptrdiff_t first, std::ptrdiff_t number) {
    for (std::int64_t i = 0; i < width; ++i) take(first + i, number * width + i);
  });
}

/// A handle for an array of `type` that is never multiplied.
DSPDataAttributesHandle plainHandle(const FixedType& type, bool isComplex, const FixedModes& modes,
                                    brekk::BrekkAdaptorTolk* adaptor) {
  return detail::makeHandle({"value", type, type, type, isComplex}, detail::CoreModes(modes), adaptor);
}

template <class T>
void quantiseAll(const ArrayView<const T>& values, const MutableFixedView& output, const FixedModes& modes,
                 FixedStatistics* statistics) {
  constexpr bool isComplex = !std::is_same_v<T, double>;
  checkValues(values.data(), values.layout(), isComplex);
  detail::checkedContainerBits("output", output.type());
  detail::checkFixed("output", output, {"output", output.type(), {}, {}, isComplex}, values.extents());
  std::vector<std::ptrdiff_t> lines;
  output.layout().forEachLine([&](std::ptrdiff_t first, std::ptrdiff_t) { lines.push_back(first); });
  const std::int64_t width = values.extents()[0];
  brekk::BrekkAdaptorTolk adaptor;
  const auto fixed = detail::makeAlias(plainHandle(output.type(), isComplex, modes, &adaptor), output.data());
  values.layout().forEachLine([&](std::ptrdiff_t first, std::ptrdiff_t number) {
    for (std::int64_t i = 0; i < width; ++i) {
      const T& value = values.data()[first + i];
      Fixpt& element = (*fixed)[static_cast<int>(lines[static_cast<std::size_t>(number)] + i)];
      if constexpr (isComplex) {
        element.setComplex(value.real(), value.imag());
      } else {
        element = value;
      }
    }
  });
  if (statistics != nullptr) detail::addCounts(*fixed->takeProperties()->getLogStruct(), *statistics);
}

template <class T>
FixedArray quantised(const ArrayView<const T>& values, const FixedType& type, const FixedModes& modes,
                     FixedStatistics* statistics) {
  constexpr bool isComplex = !std::is_same_v<T, double>;
  checkValues(values.data(), values.layout(), isComplex);
  FixedArray result(values.extents(), type, isComplex);
  quantiseAll(values, result.view(), modes, statistics);
  return result;
}

/// Calls `take(i, value)` for each value.
template <class Take>
void forEachValue(const FixedView& values, Take&& take) {
  detail::checkedContainerBits("values", values.type());
  checkValues(values.data(), values.layout(), values.isComplex());
  const auto fixed = detail::makeAlias(plainHandle(values.type(), values.isComplex(), {}, nullptr), values.data());
  forEachElement(values.layout(), [&](std::ptrdiff_t from, std::ptrdiff_t to) {
    take(static_cast<std::size_t>(to), (*fixed)[static_cast<int>(from)]);
  });
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

std::ptrdiff_t bytesOfValue(const FixedType& type, bool isComplex) {
  return std::ptrdiff_t{checkedContainerBits("type", type) / 8} * (isComplex ? 2 : 1);
}

std::size_t bytesOf(const Extents& extents, const FixedType& type, bool isComplex) {
  const auto bytes = static_cast<std::size_t>(bytesOfValue(type, isComplex));
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

FixedArray::FixedArray(const FixedView& view) : FixedArray(view.extents(), view.type(), view.isComplex()) {
  const std::ptrdiff_t valueBytes = detail::bytesOfValue(kind, complex);
  const std::ptrdiff_t lineBytes = (size.rank() > 0 ? size[0] : 1) * valueBytes;
  const auto* const from = static_cast<const std::byte*>(view.data());
  view.layout().forEachLine([&](std::ptrdiff_t first, std::ptrdiff_t number) {
    std::copy_n(from + first * valueBytes, lineBytes, bytes.data() + number * lineBytes);
  });
}

FixedArray quantise(ArrayView<const double> values, const FixedType& type, const FixedModes& modes,
                    FixedStatistics* statistics) {
  return quantised(values, type, modes, statistics);
}

FixedArray quantise(ArrayView<const std::complex<double>> values, const FixedType& type, const FixedModes& modes,
                    FixedStatistics* statistics) {
  return quantised(values, type, modes, statistics);
}

void quantiseInto(ArrayView<const double> values, const MutableFixedView& output, const FixedModes& modes,
                  FixedStatistics* statistics) {
  quantiseAll(values, output, modes, statistics);
}

void quantiseInto(ArrayView<const std::complex<double>> values, const MutableFixedView& output, const FixedModes& modes,
                  FixedStatistics* statistics) {
  quantiseAll(values, output, modes, statistics);
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
