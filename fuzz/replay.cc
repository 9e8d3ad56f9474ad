// Runs a target on files, and on all files of folders: what a build without libFuzzer links in its place.
#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

#include "fuzz/target.h"

namespace {

namespace fs = std::filesystem;

void replay(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  const std::vector<char> bytes{std::istreambuf_iterator<char>(file), {}};
  std::printf("%s\n", path.c_str());
  std::fflush(stdout);
  LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
}

}  // namespace

int main(int count, char** arguments) {
  std::vector<fs::path> paths;
  for (int i = 1; i < count; ++i) {
    if (!fs::is_directory(arguments[i])) {
      paths.emplace_back(arguments[i]);
      continue;
    }
    for (const fs::directory_entry& entry : fs::directory_iterator(arguments[i])) paths.push_back(entry.path());
  }
  std::ranges::sort(paths);
  for (const fs::path& path : paths) replay(path);
  std::printf("%zu inputs replayed\n", paths.size());
  return paths.empty() ? 1 : 0;
}
