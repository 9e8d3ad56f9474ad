#pragma once

#include <array>
#include <complex>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "python/src/elements.h"

/// Template matching whose element types are chosen at run time.
namespace BP::python {

/// An array of scores with what owns its memory.
struct Scores {
  std::shared_ptr<void> owner;
  Memory memory;
};

/// `BasicMatch` with scores of any type.
struct AnyMatch {
  bool found;
  std::array<std::int64_t, 2> location;
  Rectangle window;
  std::complex<double> score;
  std::array<double, 2> refined;
  bool regionValid;
  bool neighbourhoodValid;
  Rectangle positions;
  std::optional<Scores> neighbourhood;
  std::optional<Scores> map;
};

class Matcher {
 public:
  Matcher() = default;
  Matcher(const Matcher&) = delete;
  Matcher& operator=(const Matcher&) = delete;
  virtual ~Matcher() = default;

  virtual Element imageElement() const = 0;
  virtual Element scoreElement() const = 0;
  virtual const Extents& windowExtents() const = 0;
  virtual Rectangle positions() const = 0;
  virtual AnyMatch run(const Memory& image) = 0;
  /// The best matches in the map of an image; the matcher's options select the map.
  virtual std::vector<Peak<double>> runPeaks(const Memory& image, const PeakOptions& peaks) = 0;
  virtual void setTemplate(const Memory& pattern) = 0;
  virtual void setRegion(const std::optional<Rectangle>& region) = 0;
};

std::unique_ptr<Matcher> makeMatcher(const Memory& pattern, Element image, const Extents& imageExtents,
                                     const MatchOptions& options);

}  // namespace BP::python
