#pragma once

#include <string>

/// What the command says on stderr. Every text is made legible first (see `legible`).
namespace BP::tool {

/// One line, after "orvane: ".
void tell(const std::string& text);

/// The line `title`, after "orvane: ", and below it the lines of `table`, each of which ends in a line break.
void tellTable(const std::string& title, const std::string& table);

}  // namespace BP::tool
