#include "tool/command_line.h"

#include <algorithm>
#include <stdexcept>
#include <string_view>

#include <CLI/CLI.hpp>

#include "tool/text.h"
#include "tool/usage_text.h"

namespace BP::tool {

namespace {

/// Adds the options of `operation` to the parser `app`, which puts what it reads into `values`.
void addOptions(CLI::App& app, const Operation& operation, Values& values) {
  for (const Option& option : operation.options) {
    const std::string& name = option.name;
    const std::string names = option.shortName == 0 ? name : std::string("-") + option.shortName + "," + name;
    if (option.isFlag()) {
      app.add_flag_callback(names, [&values, &name] { values.set(name, ""); });
      continue;
    }
    app.add_option_function<std::string>(names, [&values, &name](const std::string& text) { values.set(name, text); });
    if (!option.defaultValue.empty()) values.set(name, option.defaultValue);
  }
}

/// Refuses arguments that the parser did not know. An unknown option is named first, as the others may be its values.
void checkRemaining(const std::vector<std::string>& remaining, const Operation& operation) {
  if (remaining.empty()) return;
  const auto option =
      std::ranges::find_if(remaining, [](const std::string& text) { return text.size() > 1 && text.starts_with('-'); });
  if (option == remaining.end()) throw std::runtime_error("unexpected argument " + inQuotes(remaining.front()));
  const std::string name = option->substr(0, option->find('='));
  std::vector<std::string> known = {"--help"};
  for (const Option& other : operation.options) {
    if (!other.isPositional()) known.push_back(other.name);
  }
  throw std::runtime_error("unknown option " + inQuotes(name) + suggestion(name, known));
}

void checkRequired(const Operation& operation, const Values& values) {
  for (const Option& option : operation.options) {
    if (!option.isRequired || values.has(option.name)) continue;
    throw std::runtime_error(option.name + " is required; usage: " + synopsis(operation));
  }
}

/// Refuses an option without a value or with two. The parser's own message is about counts of arguments.
[[noreturn]] void refuseCount(const CLI::ArgumentMismatch& error) {
  const std::string text = error.what();
  const bool isMissing = text.find("missing") != std::string::npos;
  throw std::runtime_error(text.substr(0, text.find(':')) + (isMissing ? " needs a value" : " is given twice"));
}

}  // namespace

std::optional<Values> parseArguments(const Operation& operation, const std::vector<std::string>& arguments) {
  Values values;
  CLI::App app;
  addOptions(app, operation, values);
  app.allow_extras();
  try {
    app.parse(std::vector<std::string>(arguments.rbegin(), arguments.rend()));
  } catch (const CLI::CallForHelp&) {
    return std::nullopt;
  } catch (const CLI::ArgumentMismatch& error) {
    refuseCount(error);
  }
  // A mistyped option is also a missing one, so unknown options are refused before missing ones.
  checkRemaining(app.remaining(), operation);
  checkRequired(operation, values);
  return values;
}

}  // namespace BP::tool
