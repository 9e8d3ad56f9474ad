#include <string>

#include "tool/completion_text.h"
#include "tool/file.h"
#include "tool/names.h"
#include "tool/operations.h"
#include "tool/reference_text.h"
#include "tool/usage_text.h"

namespace BP::tool {

namespace {

constexpr Named<std::string (*)()> shells[] = {{"bash", bashCompletion}};

int runHelp(const Values& values) {
  printOut(values.has("OPERATION") ? usageText(operationNamed(values["OPERATION"])) : usageText());
  return 0;
}

int runCompletion(const Values& values) {
  printOut(rowNamed(shells, values["SHELL"], "SHELL").value());
  return 0;
}

/// An operation without options that prints a text.
template <std::string (*text)()>
Operation printing(const std::string& name, const std::string& summary, const std::string& example) {
  return {.name = name, .summary = summary, .options = {}, .details = {}, .example = example, .run = [](const Values&) {
            printOut(text());
            return 0;
          }};
}

}  // namespace

Operation listOperation() { return printing<listText>("list", "Lists the operations, one a line", "list"); }

Operation helpOperation() {
  return {.name = "help",
          .summary = "Prints the usage of an operation",
          .options = {{.name = "OPERATION", .meaning = "One of the operations; without it the usage lists them all"}},
          .details = {},
          .example = "help convolve",
          .run = runHelp};
}

Operation completionOperation() {
  return {.name = "completion",
          .summary = "Prints a script with which a shell completes operations and options",
          .options = {{.name = "SHELL", .meaning = "The shell", .allowed = namesOf(shells), .isRequired = true}},
          .details = "An installed Orvane brings the script along. Elsewhere: source <(orvane completion bash)\n",
          .example = "completion bash",
          .run = runCompletion};
}

Operation manOperation() {
  return printing<manualPage>("man", "Prints the manual page of the command", "man > orvane.1");
}

Operation referenceOperation() {
  return printing<referencePage>("reference", "Prints the reference of all operations as Markdown",
                                 "reference > command.md");
}

}  // namespace BP::tool
