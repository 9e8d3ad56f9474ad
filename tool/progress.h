#pragma once

#include <chrono>
#include <cstdint>

namespace BP::tool {

/// A line on the terminal about long work: from the first second on, what part is done, how fast, and how long the rest
/// will take. Nothing is shown where stderr is no terminal.
class Progress {
 public:
  /// `all` units of work are to be done; a unit is `pixels` pixels.
  Progress(std::int64_t all, std::int64_t pixels);
  /// Takes the line away.
  ~Progress();
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  /// Tells that so many units are done.
  void done(std::int64_t units);

 private:
  using Clock = std::chrono::steady_clock;

  std::int64_t total;
  double pixelsPerUnit;
  Clock::time_point start = Clock::now();
  Clock::time_point shown = start;
  bool isTerminal;
  bool hasLine = false;
};

}  // namespace BP::tool
