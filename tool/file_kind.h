#pragma once

#include <string>
#include <string_view>

namespace BP::tool {

/// As in ": it is a PNG picture" for the first bytes of a file of a well-known binary kind, or ": it looks like UTF-16
/// text" for text that is not UTF-8; empty for other bytes. For errors about a file that was expected to be another.
std::string otherKind(std::string_view bytes);

}  // namespace BP::tool
