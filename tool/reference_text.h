#pragma once

#include <string>

/// Texts about all operations, made from their descriptions.
namespace BP::tool {

/// The name and the summary of each operation, one a line.
std::string listText();

/// The manual page of the command, in the markup of man(7).
std::string manualPage();

/// The reference of the command, in Markdown.
std::string referencePage();

}  // namespace BP::tool
