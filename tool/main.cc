#include <signal.h>

#include <algorithm>
#include <cstdio>
#include <exception>
#include <new>
#include <stdexcept>
#include <string>

#include "orvane/core/version.h"
#include "tool/operations.h"
#include "tool/text.h"

namespace {

using BP::tool::inQuotes;

/// One line on stderr whatever is in `text`; the exit code of all errors.
int refuse(std::string text) {
  std::ranges::replace_if(
      text, [](char c) { return static_cast<unsigned char>(c) < ' '; }, '?');
  std::fprintf(stderr, "orvane: %s\n", text.c_str());
  return 2;
}

/// Names of the operations, as in "a, b, c".
std::string operationNames(const CLI::App& command) {
  std::string names;
  for (const CLI::App* operation : command.get_subcommands({})) {
    names += (names.empty() ? "" : ", ") + operation->get_name();
  }
  return names;
}

int run(CLI::App& command, int count, char** arguments) {
  const std::string first = count > 1 ? arguments[1] : "";
  const auto named = command.get_subcommands([&](const CLI::App* app) { return app->get_name() == first; });
  const CLI::App* operation = named.empty() ? nullptr : named.front();
  const bool general = first == "--help" || first == "-h" || first == "--version";
  if (count > 1 && !general && operation == nullptr) {
    return refuse("unknown operation " + inQuotes(first) + "; allowed are " + operationNames(command));
  }
  if (count == 1 || (count == 2 && operation != nullptr)) {
    std::fputs((operation == nullptr ? command.help() : operation->help("orvane")).c_str(), stdout);
    return 0;
  }
  try {
    command.parse(count, arguments);
  } catch (const CLI::Success& asked) {  // --help, --version
    return command.exit(asked);
  } catch (const CLI::ParseError& error) {
    return refuse(std::string(error.what()) + "; see orvane " + (general ? "" : first + " ") + "--help");
  }
  return 0;
}

}  // namespace

int main(int count, char** arguments) {
  // A file that outgrows its limit is then an error to report, not the end of the program.
  signal(SIGXFSZ, SIG_IGN);
  try {
    CLI::App command("Sliding-window filters for pictures, bit for bit the same on every machine.", "orvane");
    command.set_version_flag("--version", std::string("orvane ") + orvaneblockprocbrekk_version);
    command.require_subcommand(1);
    BP::tool::addConvolution(command);
    BP::tool::addMedian(command);
    BP::tool::addMatch(command);
    BP::tool::addCompare(command);
    BP::tool::addKernel(command);
    BP::tool::addChart(command);
    BP::tool::addPatch(command);
    BP::tool::addPlan(command);
    command.footer("An operation without arguments prints its usage.");
    return run(command, count, arguments);
  } catch (const std::bad_alloc&) {
    return refuse("not enough memory");
  } catch (const std::exception& error) {
    return refuse(error.what());
  }
}
