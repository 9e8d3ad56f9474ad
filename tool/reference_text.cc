#include "tool/reference_text.h"

#include <algorithm>
#include <string_view>

#include "orvane/core/version.h"
#include "tool/operations.h"
#include "tool/text.h"
#include "tool/usage_text.h"

namespace BP::tool {

namespace {

/// Text for man(7): hyphens that can be copied, and no line that begins like a command.
std::string roff(std::string_view text) {
  std::string result;
  bool beginsLine = true;
  for (const char c : text) {
    if (beginsLine && (c == '.' || c == '\'')) result += "\\&";
    result += c == '\\' ? "\\e" : c == '-' ? "\\-" : std::string(1, c);
    beginsLine = c == '\n';
  }
  return result;
}

std::string manualSection(const Operation& operation) {
  std::string text =
      ".SS " + operation.name + "\n" + roff(operation.summary) + ".\n.PP\n.B " + roff(synopsis(operation)) + "\n";
  for (const Option& option : operation.options) {
    text += ".TP\n.B " + roff(optionHead(option)) + "\n" + roff(optionMeaning(option)) + ".\n";
  }
  if (!operation.details.empty()) text += ".PP\n.nf\n" + roff(filledText(operation.details)) + ".fi\n";
  return text + ".PP\nExample:\n.B " + roff("orvane " + operation.example) + "\n";
}

/// Text for a cell of a Markdown table.
std::string cell(const std::string& text) {
  std::string result;
  for (const char c : text) result += c == '|' ? "\\|" : std::string(1, c);
  return result;
}

std::string referenceSection(const Operation& operation) {
  std::string text =
      "\n## " + operation.name + "\n\n" + operation.summary + ".\n\n```\n" + synopsis(operation) + "\n```\n";
  if (!operation.options.empty()) text += "\n| argument | meaning |\n|---|---|\n";
  for (const Option& option : operation.options) {
    text += "| `" + cell(optionHead(option)) + "` | " + cell(optionMeaning(option)) + " |\n";
  }
  if (!operation.details.empty()) text += "\n```\n" + filledText(operation.details) + "```\n";
  return text + "\nExample: `orvane " + operation.example + "`\n";
}

constexpr std::string_view exitCodes[] = {"0: done; compare: no difference", "1: compare: there are differences",
                                          "2: an error, which one line on stderr explains; no file was changed, or "
                                          "all were, if only the report of a finished run failed"};

}  // namespace

std::string listText() {
  std::size_t width = 0;
  for (const Operation& operation : operations()) width = std::max(width, operation.name.size());
  std::string text;
  for (const Operation& operation : operations()) {
    text += operation.name + std::string(width + 2 - operation.name.size(), ' ') + operation.summary + "\n";
  }
  return text;
}

std::string manualPage() {
  std::string text = ".TH ORVANE 1 \"\" \"orvane " + std::string(orvaneblockprocbrekk_version) +
                     "\"\n.SH NAME\norvane \\- sliding\\-window filters for pictures and arrays\n"
                     ".SH SYNOPSIS\n.B orvane\n.I OPERATION\n[\\fIARGUMENTS\\fR]\n.SH OPERATIONS\n";
  for (const Operation& operation : operations()) text += manualSection(operation);
  text += ".SH EXIT STATUS\n";
  for (const std::string_view code : exitCodes) {
    text += ".TP\n.B " + std::string(code.substr(0, 1)) + "\n" + roff(code.substr(3)) + ".\n";
  }
  return text;
}

std::string referencePage() {
  std::string text =
      "# The command\n\nThis page is printed by `orvane reference`. `orvane help OPERATION` prints the same about one "
      "operation.\n\n| exit code | meaning |\n|---|---|\n";
  for (const std::string_view code : exitCodes) {
    text += "| " + std::string(code.substr(0, 1)) + " | " + std::string(code.substr(3)) + " |\n";
  }
  for (const Operation& operation : operations()) text += referenceSection(operation);
  return text;
}

}  // namespace BP::tool
