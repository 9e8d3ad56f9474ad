#pragma once

#include "orvane/core/enums.h"
#include "orvane/platform/export.h"

namespace BP {

class AnyPlan;

/// Abstract root of the processors. A processor filters arrays that its maker owns.
///
/// `setup` runs one stage at a time. No object remembers which stages have run, and a stage can be repeated.
class ORVANE_API AnyBP {
 public:
  AnyBP() = default;
  AnyBP(const AnyBP&) {}
  AnyBP& operator=(const AnyBP&) { return *this; }

  /// Runs one stage of set-up through all objects of the processor.
  virtual void setup(setupModeT mode) = 0;
  virtual ~AnyBP();
  /// One run over the input as it stands.
  virtual void invoke() = 0;
  /// Sets the value that the input yields beyond its edge. `value` points to one input element. A complex element has
  /// two components; with `isComplex` false only the real one is read.
  virtual void assignPadValue(const void* value, bool isComplex) = 0;
  virtual const AnyBP* getBP() const;
};

/// Abstract root of the processors with one input and one output. A single-pass processor is its own first and
/// second pass.
class ORVANE_API AnyCorrelation : public AnyBP {
 public:
  virtual const AnyCorrelation* getConvCorr1() const;
  virtual const AnyCorrelation* getConvCorr2() const;
};

/// Abstract root of template matching.
class ORVANE_API AnyTemplateMatching : public AnyBP {
 public:
  virtual AnyPlan& getPlan() const = 0;
};

}  // namespace BP
