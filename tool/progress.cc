#include "tool/progress.h"

#include <unistd.h>

#include <array>
#include <cstdio>

namespace BP::tool {

Progress::Progress(std::int64_t all, std::int64_t pixels)
    : total(all), pixelsPerUnit(static_cast<double>(pixels)), isTerminal(::isatty(STDERR_FILENO) == 1) {}

Progress::~Progress() {
  if (hasLine) std::fputs("\r\x1b[K", stderr);
}

void Progress::done(std::int64_t units) {
  if (!isTerminal || units <= 0) return;
  const Clock::time_point now = Clock::now();
  constexpr std::chrono::milliseconds patience(1000), interval(200);
  if (now - start < patience || now - shown < interval) return;
  shown = now;
  const double seconds = std::chrono::duration<double>(now - start).count();
  const double part = static_cast<double>(units) / static_cast<double>(total);
  const double megapixels = static_cast<double>(units) * pixelsPerUnit / seconds * 1e-6;
  std::array<char, 100> text{};
  std::snprintf(text.data(), text.size(), "\r\x1b[Korvane: %.0f %%, %.3g megapixels a second, %.0f s left", 100 * part,
                megapixels, seconds / part - seconds);
  std::fputs(text.data(), stderr);
  hasLine = true;
}

}  // namespace BP::tool
