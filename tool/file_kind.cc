#include "tool/file_kind.h"

#include <algorithm>

namespace BP::tool {

namespace {

using namespace std::string_view_literals;

/// A kind of file and its first bytes.
struct Kind {
  std::string_view start;
  std::string_view name;
};

constexpr Kind kinds[] = {{"\x93NUMPY"sv, "an NPY array"},
                          {"\x89PNG"sv, "a PNG picture"},
                          {"\xff\xd8\xff"sv, "a JPEG picture"},
                          {"GIF8"sv, "a GIF picture"},
                          {"BM"sv, "a BMP picture"},
                          {"II*\0"sv, "a TIFF picture"},
                          {"MM\0*"sv, "a TIFF picture"},
                          {"%PDF"sv, "a PDF document"},
                          {"PK\3\4"sv, "a ZIP archive or an office document"},
                          {"\x1f\x8b"sv, "a gzip archive"},
                          {"\177ELF"sv, "a program"}};

}  // namespace

std::string otherKind(std::string_view bytes) {
  const auto kind = std::ranges::find_if(kinds, [&](const Kind& k) { return bytes.starts_with(k.start); });
  if (kind != std::end(kinds)) return ": it is " + std::string(kind->name);
  const bool hasMark = bytes.starts_with("\xff\xfe") || bytes.starts_with("\xfe\xff");
  const auto nuls = std::ranges::count(bytes, '\0');
  // Latin text in UTF-16 has a zero byte in every character.
  const bool isWide =
      bytes.size() >= 4 && 3 * static_cast<std::size_t>(nuls) > bytes.size() && (bytes[0] == 0) != (bytes[1] == 0);
  if (hasMark || isWide) return ": it looks like UTF-16 text; UTF-8 is needed";
  return {};
}

}  // namespace BP::tool
