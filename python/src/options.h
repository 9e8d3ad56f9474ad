#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>

#include "python/src/arrays.h"
#include "python/src/runs.h"

/// Choices by their names.
namespace BP::python {

/// A name and what it stands for.
template <class Value>
struct Choice {
  std::string_view name;
  Value value;
};

/// What `given` stands for in a table. Throws `std::invalid_argument`, which names `argument` and all that is allowed.
template <class Value, std::size_t n>
Value chosen(const char* argument, const std::string& given, const std::array<Choice<Value>, n>& choices) {
  for (const Choice<Value>& choice : choices) {
    if (choice.name == given) return choice.value;
  }
  std::string allowed;
  for (const Choice<Value>& choice : choices) allowed += (allowed.empty() ? "" : ", ") + std::string(choice.name);
  throw std::invalid_argument(std::string(argument) + ": " + given + "; allowed are " + allowed);
}

OutputMode modeOf(const std::string& name);
/// A rule by this library's name, or by one that means the same in NumPy, `scipy.ndimage` or `scipy.signal`.
PadRule padRuleOf(const std::string& name);

/// A region from `(start, shape)`, or None.
std::optional<Box> regionOf(const py::object& region);
std::optional<Rectangle> rectangleOf(const py::object& region);

/// The options of a filter in a dict that has all of them.
ConvolutionOptions convolutionOptionsOf(const py::dict& options, Runs& runs);
MatchOptions matchOptionsOf(const py::dict& options, Runs& runs);

}  // namespace BP::python
