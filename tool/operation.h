#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// How the operations of the command describe themselves. Parsing, usage texts, shell completion, the manual page and
/// the reference are all made from these descriptions.
namespace BP::tool {

/// An argument of an operation: an option such as "--kernel", or a positional argument such as "IN".
struct Option {
  std::string name;
  std::string meaning;                    ///< one line
  std::string form = {};                  ///< stands for the value in texts, as in "NUMBER"
  std::string defaultValue = {};          ///< the value if none is given; empty if there is no such value
  std::vector<std::string> allowed = {};  ///< all values, if they are a few names; they are the form, too
  bool isRequired = false;
  char shortName = 0;  ///< a letter that stands for the name behind a single hyphen, 0 if there is none

  bool isPositional() const { return !name.starts_with('-'); }
  /// A flag takes no value.
  bool isFlag() const { return !isPositional() && form.empty() && allowed.empty(); }
  /// The form, or the allowed values as in "valid|same|full".
  std::string shownForm() const;
};

/// The arguments of one call, as they were typed.
class Values {
 public:
  void set(const std::string& name, const std::string& text) { texts[name] = text; }
  /// True if the argument was given or has a default.
  bool has(std::string_view name) const { return texts.contains(name); }
  /// The value of an argument; throws `std::logic_error` if it has none.
  const std::string& operator[](std::string_view name) const;
  /// The value of an argument, if it has one.
  std::optional<std::string> find(std::string_view name) const;

 private:
  std::map<std::string, std::string, std::less<>> texts;
};

/// One operation of the command, as in `orvane convolve`.
struct Operation {
  std::string name;
  std::string summary;          ///< one line
  std::vector<Option> options;  ///< positional arguments in their order, and options
  std::string details;          ///< lines of text that follow the options in the usage text
  std::string example;          ///< a call without the word `orvane`
  /// Does the work and returns the exit code. Errors are `std::runtime_error` or `std::invalid_argument` with one line.
  int (*run)(const Values& values);
};

}  // namespace BP::tool
