#include "python/src/options.h"

#include <complex>

#include <pybind11/complex.h>

namespace BP::python {

namespace {

constexpr std::array<Choice<OutputMode>, 3> modes = {
    {{"valid", OutputMode::valid}, {"same", OutputMode::same}, {"full", OutputMode::full}}};

/// This library's names first. `reflect` is missing, because it means `mirror` to NumPy and `symmetric` to SciPy.
constexpr std::array<Choice<PadRule>, 13> pads = {{{"constant", PadRule::constant},
                                                   {"replicate", PadRule::replicate},
                                                   {"symmetric", PadRule::symmetric},
                                                   {"circular", PadRule::circular},
                                                   {"mirror", PadRule::mirror},
                                                   {"edge", PadRule::replicate},
                                                   {"nearest", PadRule::replicate},
                                                   {"wrap", PadRule::circular},
                                                   {"grid-wrap", PadRule::circular},
                                                   {"grid-mirror", PadRule::symmetric},
                                                   {"symm", PadRule::symmetric},
                                                   {"grid-constant", PadRule::constant},
                                                   {"fill", PadRule::constant}}};

constexpr std::array<Choice<Normalisation>, 2> normalisations = {
    {{"none", Normalisation::none}, {"energy", Normalisation::energy}}};

constexpr std::array<Choice<FilterDirection>, 2> directions = {
    {{"convolution", FilterDirection::convolution}, {"correlation", FilterDirection::correlation}}};

constexpr std::array<Choice<Metric>, 6> metrics = {{{"sad", Metric::sad},
                                                    {"ssd", Metric::ssd},
                                                    {"maxad", Metric::maxad},
                                                    {"product", Metric::product},
                                                    {"cosine", Metric::cosine},
                                                    {"coefficient", Metric::correlationCoefficient}}};

constexpr std::array<Choice<Search>, 2> searches = {
    {{"exhaustive", Search::exhaustive}, {"three-step", Search::threeStep}}};

std::string textAt(const py::dict& options, const char* name) {
  const py::object value = options[name];
  if (!py::isinstance<py::str>(value)) {
    throw WrongType(std::string(name) + ": " + std::string(py::repr(value)) + "; it must be a name");
  }
  return value.cast<std::string>();
}

template <class T>
T numberAt(const py::dict& options, const char* name, const char* wanted) {
  const py::object value = options[name];
  try {
    return value.cast<T>();
  } catch (const py::cast_error&) {
    throw WrongType(std::string(name) + ": " + std::string(py::repr(value)) + "; it must be " + wanted);
  }
}

int threadsAt(const py::dict& options) { return numberAt<int>(options, "threads", "an integer"); }

}  // namespace

OutputMode modeOf(const std::string& name) { return chosen("mode", name, modes); }

PadRule padRuleOf(const std::string& name) {
  if (name == "reflect") {
    throw std::invalid_argument(
        "pad: reflect, which names two rules; write mirror (d c b | a b c d | c b a) for that of NumPy, "
        "symmetric (c b a | a b c | c b a) for that of SciPy");
  }
  return chosen("pad", name, pads);
}

std::optional<Box> regionOf(const py::object& region) {
  if (region.is_none()) return std::nullopt;
  const auto pair = py::reinterpret_borrow<py::tuple>(region);
  return Box{extentsOf(pair[0], "region"), extentsOf(pair[1], "region")};
}

std::optional<Rectangle> rectangleOf(const py::object& region) {
  const std::optional<Box> box = regionOf(region);
  if (!box) return std::nullopt;
  return rectangleOf(*box);
}

ConvolutionOptions convolutionOptionsOf(const py::dict& options, Runs& runs) {
  const auto value = numberAt<std::complex<double>>(options, "pad_value", "a number");
  return {.direction = chosen("direction", textAt(options, "direction"), directions),
          .mode = modeOf(textAt(options, "mode")),
          .pad = {padRuleOf(textAt(options, "pad")), value},
          .normalise = chosen("normalise", textAt(options, "normalise"), normalisations),
          .threads = threadsAt(options),
          .progress = runs.progress(options["progress"])};
}

MatchOptions matchOptionsOf(const py::dict& options, Runs& runs) {
  return {.metric = chosen("metric", textAt(options, "metric"), metrics),
          .mode = modeOf(textAt(options, "mode")),
          .search = chosen("search", textAt(options, "search"), searches),
          .region = rectangleOf(options["region"]),
          .neighbourhood = numberAt<std::int64_t>(options, "neighbourhood", "an integer"),
          .best = numberAt<bool>(options, "best", "a bool"),
          .map = numberAt<bool>(options, "map", "a bool"),
          .refine = numberAt<bool>(options, "refine", "a bool"),
          .threads = threadsAt(options),
          .progress = runs.progress(options["progress"])};
}

}  // namespace BP::python
