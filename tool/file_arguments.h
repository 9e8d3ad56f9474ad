#pragma once

#include <cstdint>
#include <string>

#include <CLI/CLI.hpp>

namespace BP::tool {

/// What the operations that filter a file have in common.
struct FileArguments {
  std::string in;
  std::string out;
  bool quiet = false;
};

/// Adds IN and OUT to an operation, the arguments that come first.
void addFiles(CLI::App& operation, FileArguments& arguments);

/// True if `path` names an array, false if a picture.
bool isArrayName(const std::string& path);

/// Says on stderr that `count` of `all` values of `out` were not kept as they were, if there are any.
void tellCount(const std::string& out, std::uint64_t count, std::uint64_t all, const std::string& what);

/// Tells on stderr what happened to the fixed-point values of `file`, if there were any.
void tellFixed(const std::string& file, const std::string& table);

}  // namespace BP::tool
