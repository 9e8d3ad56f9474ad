#include <signal.h>

#include <algorithm>
#include <cstdlib>
#include <exception>
#include <new>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "orvane/core/version.h"
#include "orvane/lanes/target.h"
#include "tool/command_line.h"
#include "tool/file.h"
#include "tool/messages.h"
#include "tool/operations.h"
#include "tool/text.h"
#include "tool/usage_text.h"

namespace {

using namespace BP::tool;

constexpr int refused = 2;  // the exit code of all errors

/// The error of a call without arguments.
int tellUsage(const std::string& usage) {
  tellTable("arguments are missing", usage);
  return refused;
}

/// Takes the vector target that the environment names, for those who compare results or times.
void forceTarget() {
  const char* const wanted = std::getenv("ORVANE_TARGET");
  if (wanted == nullptr || BP::lanes::forceTarget(wanted)) return;
  std::string allowed;
  for (const std::string_view target : BP::lanes::getTargets()) allowed += std::string(target) + ", ";
  throw std::runtime_error("ORVANE_TARGET " + inQuotes(wanted) + ": allowed here are " + allowed +
                           std::string(BP::lanes::plain));
}

int run(const std::vector<std::string>& words) {
  forceTarget();
  if (words.empty()) return tellUsage(usageText());
  const std::string& first = words.front();
  if (first == "--help" || first == "-h") {
    printOut(usageText());
    return 0;
  }
  if (first == "--version") {
    printOut(std::string("orvane ") + orvaneblockprocbrekk_version + ", vector target " +
             std::string(BP::lanes::getTarget()) + "\n");
    return 0;
  }
  const Operation& operation = operationNamed(first);
  if (words.size() == 1 && std::ranges::any_of(operation.options, &Option::isRequired)) {
    return tellUsage(usageText(operation));
  }
  std::optional<Values> values;
  try {
    values = parseArguments(operation, {words.begin() + 1, words.end()});
  } catch (const std::runtime_error& error) {
    const std::string text = error.what();
    if (text.ends_with('?')) throw;  // the text has a suggestion
    throw std::runtime_error(text + "; see orvane " + first + " --help");
  }
  if (values) return operation.run(*values);
  printOut(usageText(operation));
  return 0;
}

}  // namespace

int main(int count, char** arguments) {
  // Writing beyond the limit of a file's size then fails with an error, which is reported, instead of a signal.
  signal(SIGXFSZ, SIG_IGN);
  try {
    return run({arguments + (count > 0 ? 1 : 0), arguments + count});
  } catch (const std::bad_alloc&) {
    tell("not enough memory");
  } catch (const std::exception& error) {
    tell(error.what());
  }
  return refused;
}
