#pragma once

#include <signal.h>

#include <filesystem>
#include <string>

namespace BP::tool {

/// Blocks all signals but those of faults as long as it lives.
class SignalHold {
 public:
  SignalHold();
  ~SignalHold();
  SignalHold(const SignalHold&) = delete;
  SignalHold& operator=(const SignalHold&) = delete;

 private:
  sigset_t before{};
};

/// A temporary file. It is removed with this object unless it was renamed.
///
/// It is also removed when a signal ends the program, except for SIGKILL, which no program can handle. Up to
/// `maxTemporaryFiles` of them can exist at a time.
class TemporaryFile {
 public:
  /// Makes an empty file in `folder` and opens it; `descriptor` is -1 and `errno` set if that fails.
  explicit TemporaryFile(const std::filesystem::path& folder);
  ~TemporaryFile();
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;

  const std::string& name() const { return path; }
  /// The open descriptor, which the caller closes.
  int descriptor() const { return openDescriptor; }
  /// Gives the file its final name; false, with `errno` set, if that fails.
  bool rename(const std::filesystem::path& target);

 private:
  void forget();

  std::string path;
  int openDescriptor = -1;
  int slot = -1;
};

inline constexpr int maxTemporaryFiles = 8;

}  // namespace BP::tool
