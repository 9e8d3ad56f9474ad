#include "tool/file_arguments.h"

#include <cstdio>

#include "tool/text.h"

namespace BP::tool {

void addFiles(CLI::App& operation, FileArguments& arguments) {
  operation
      .add_option("IN", arguments.in,
                  "PNG picture of 1 to 16 bits, each colour channel of which is filtered, or NPY array")
      ->required()
      ->type_name("");
  operation.add_option("OUT", arguments.out, "Picture or array to write, of the kind of IN; may be IN")
      ->required()
      ->type_name("");
}

bool isArrayName(const std::string& path) { return lowered(path).ends_with(".npy"); }

void tellCount(const std::string& out, std::uint64_t count, std::uint64_t all, const std::string& what) {
  if (count == 0) return;
  std::fprintf(stderr, "orvane: %s: %s of %s values were %s\n", out.c_str(), std::to_string(count).c_str(),
               std::to_string(all).c_str(), what.c_str());
}

void tellFixed(const std::string& file, const std::string& table) {
  if (!table.empty()) std::fprintf(stderr, "orvane: %s: fixed-point values\n%s", file.c_str(), table.c_str());
}

}  // namespace BP::tool
