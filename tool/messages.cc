#include "tool/messages.h"

#include <cstdio>
#include <string_view>

#include "tool/text.h"

namespace BP::tool {

namespace {

// A failure to write to stderr cannot be reported anywhere else, so it is ignored.
void write(const std::string& text) { std::fwrite(text.data(), 1, text.size(), stderr); }

}  // namespace

void tell(const std::string& text) { write("orvane: " + legible(text) + "\n"); }

void tellTable(const std::string& title, const std::string& table) {
  std::string lines = table.empty() ? "" : "orvane: " + legible(title) + "\n";
  for (std::string_view rest = table; !rest.empty();) {
    const std::size_t length = rest.find('\n');
    lines += legible(rest.substr(0, length)) + "\n";
    rest.remove_prefix(length == std::string_view::npos ? rest.size() : length + 1);
  }
  write(lines);
}

}  // namespace BP::tool
