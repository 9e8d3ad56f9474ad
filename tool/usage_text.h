#pragma once

#include <string>
#include <string_view>

#include "tool/operation.h"

/// Texts that tell how the command is used. No line is longer than 80 columns, as far as words allow.
namespace BP::tool {

inline constexpr std::size_t textColumns = 80;

/// The usage text of an operation.
std::string usageText(const Operation& operation);

/// The usage text of the command, which lists the operations.
std::string usageText();

/// The arguments of an operation in short, as in "orvane chart OUT [OPTIONS]".
std::string synopsis(const Operation& operation);

/// The names of an option and the form of its value, as in "-k, --kernel KERNEL".
std::string optionHead(const Option& option);

/// The meaning of an option, whether it is required, and its default.
std::string optionMeaning(const Option& option);

/// `text` with its lines broken. Neighbouring lines are a paragraph, which is filled anew; but a line that begins with
/// a space, or has two of them side by side, is a row of a table: it stays by itself, and what is broken off goes under
/// the beginning of its last column. A line that ends in a colon ends a paragraph, and begins one where the line before
/// ends in a full stop.
std::string filledText(std::string_view text);

}  // namespace BP::tool
