#include "tool/filtered_files.h"

#include "tool/messages.h"
#include "tool/text.h"

namespace BP::tool {

std::vector<Option> fileOptions(const std::string& outMeaning) {
  return {{.name = "IN",
           .meaning = "PNG picture of 1 to 16 bits, each colour channel of which is filtered, or NPY array",
           .isRequired = true},
          {.name = "OUT", .meaning = outMeaning, .isRequired = true}};
}

bool isArrayName(const std::string& path) { return lowered(path).ends_with(".npy"); }

void tellCount(const std::string& out, std::uint64_t count, std::uint64_t all, const std::string& what) {
  if (count == 0) return;
  tell(out + ": " + std::to_string(count) + " of " + std::to_string(all) + " values were " + what);
}

void tellFixed(const std::string& file, const std::string& table) { tellTable(file + ": fixed-point values", table); }

}  // namespace BP::tool
