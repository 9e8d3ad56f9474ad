#include "tool/usage_text.h"

#include <algorithm>
#include <vector>

#include "tool/operations.h"
#include "tool/text.h"

namespace BP::tool {

namespace {

/// The number of columns that UTF-8 text takes: its bytes without those that continue a character.
std::size_t columnsOf(std::string_view text) {
  return static_cast<std::size_t>(
      std::ranges::count_if(text, [](char c) { return (static_cast<unsigned char>(c) & 0xc0u) != 0x80; }));
}

/// The pieces of a word that lines may part: a long list without spaces behind its commas and bars.
std::vector<std::string_view> piecesOf(std::string_view word, std::size_t room) {
  std::vector<std::string_view> pieces;
  while (columnsOf(word) > room) {
    const std::size_t end = word.substr(0, room).find_last_of(",|");
    if (end == std::string_view::npos) break;
    pieces.push_back(word.substr(0, end + 1));
    word.remove_prefix(end + 1);
  }
  pieces.push_back(word);
  return pieces;
}

/// Appends the words of `text` to `result`, whose last line is `start` columns long; lines after that begin with
/// `indent` spaces.
void fill(std::string& result, std::string_view text, std::size_t start, std::size_t indent) {
  std::size_t column = start;
  bool beginsLine = true;
  for (const std::string_view word : split(text, ' ')) {
    if (word.empty()) continue;
    bool beginsWord = true;
    for (const std::string_view piece : piecesOf(word, textColumns - indent)) {
      const bool hasSpace = !beginsLine && beginsWord;
      if (column + columnsOf(piece) + (hasSpace ? 1 : 0) > textColumns && column > indent) {
        result += "\n" + std::string(indent, ' ');
        column = indent;
      } else if (hasSpace) {
        result += ' ';
        ++column;
      }
      result += piece;
      column += columnsOf(piece);
      beginsLine = beginsWord = false;
    }
  }
  result += "\n";
}

bool isTableRow(std::string_view line) { return line.starts_with(' ') || line.find("  ") != std::string_view::npos; }

/// A row of a table that is too long: its last column is filled.
void fillRow(std::string& result, std::string_view line) {
  constexpr std::size_t maxIndent = 40;
  std::size_t begin = line.rfind("  ");
  begin = begin == std::string_view::npos ? 0 : line.find_first_not_of(' ', begin);
  if (begin == std::string_view::npos || begin > maxIndent) begin = line.find_first_not_of(' ');
  result += line.substr(0, begin);
  fill(result, line.substr(begin), columnsOf(line.substr(0, begin)), columnsOf(line.substr(0, begin)));
}

/// A row of two columns, of which the second begins in column `middle`.
std::string row(const std::string& head, const std::string& meaning, std::size_t middle) {
  std::string result = "  " + head;
  if (result.size() + 2 > middle) {
    result += "\n" + std::string(middle, ' ');
  } else {
    result.resize(middle, ' ');
  }
  fill(result, meaning, middle, middle);
  return result;
}

std::string rows(const Operation& operation, bool isPositional) {
  constexpr std::size_t middle = 26;
  std::string text;
  for (const Option& option : operation.options) {
    if (option.isPositional() == isPositional) text += row(optionHead(option), optionMeaning(option), middle);
  }
  return text;
}

}  // namespace

std::string filledText(std::string_view text) {
  std::string result, paragraph;
  const auto endParagraph = [&] {
    if (!paragraph.empty()) fill(result, paragraph, 0, 0);
    paragraph.clear();
  };
  if (text.ends_with('\n')) text.remove_suffix(1);
  if (text.empty()) return {};
  for (const std::string_view line : split(text, '\n')) {
    if (!line.empty() && !isTableRow(line)) {
      if (line.ends_with(':') && paragraph.ends_with('.')) endParagraph();
      paragraph.append(paragraph.empty() ? "" : " ").append(line);
      if (line.ends_with(':')) endParagraph();
      continue;
    }
    endParagraph();
    if (columnsOf(line) > textColumns) {
      fillRow(result, line);
    } else {
      result.append(line).append("\n");
    }
  }
  endParagraph();
  return result;
}

std::string optionHead(const Option& option) {
  const std::string names = (option.shortName == 0 ? "" : std::string("-") + option.shortName + ", ") + option.name;
  return names + (option.isFlag() || option.isPositional() ? "" : " " + option.shownForm());
}

std::string optionMeaning(const Option& option) {
  return option.meaning + (option.isRequired && !option.isPositional() ? " (required)" : "") +
         (option.defaultValue.empty() ? "" : " (default " + option.defaultValue + ")");
}

std::string synopsis(const Operation& operation) {
  std::string text = "orvane " + operation.name;
  bool hasOptional = false;
  for (const Option& option : operation.options) {
    const std::string form = option.name + (option.isPositional() || option.isFlag() ? "" : " " + option.shownForm());
    if (option.isRequired) {
      text += " " + form;
    } else if (option.isPositional()) {
      text += " [" + form + "]";
    } else {
      hasOptional = true;
    }
  }
  return text + (hasOptional ? " [OPTIONS]" : "");
}

std::string usageText(const Operation& operation) {
  std::string text;
  fill(text, operation.summary + ".", 0, 0);
  text += "\nUsage: ";
  fill(text, synopsis(operation), 7, 9);
  if (const std::string arguments = rows(operation, true); !arguments.empty()) text += "\nArguments:\n" + arguments;
  text += "\nOptions:\n" + rows(operation, false) + "  -h, --help              Prints this text\n";
  if (!operation.details.empty()) text += "\n" + filledText(operation.details);
  return text + (operation.example.empty() ? "" : "\nExample: orvane " + operation.example + "\n");
}

std::string usageText() {
  constexpr std::size_t middle = 16;
  std::string text =
      "Sliding-window filters for pictures, bit for bit the same on every machine.\n\n"
      "Usage: orvane OPERATION [ARGUMENTS] [OPTIONS]\n\nOperations:\n";
  for (const Operation& operation : operations()) text += row(operation.name, operation.summary, middle);
  return text +
         "\nOptions:\n  -h, --help      Prints this text\n  --version       Prints version and vector target\n"
         "\n`orvane help OPERATION` prints the usage of an operation.\n";
}

}  // namespace BP::tool
