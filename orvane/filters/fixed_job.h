#pragma once

#include <complex>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "orvane/core/allocator_tolk.h"
#include "orvane/core/window_front.h"
#include "orvane/filters/convolution_geometry.h"
#include "orvane/filters/fixed_values.h"
#include "orvane/filters/job.h"
#include "orvane/host/reference_host.h"

namespace BP::filters::detail {

/// What all fixed-point jobs have, whatever their fronts: a host, modes, arrays by role, totals of statistics.
class FixedJob {
 public:
  explicit FixedJob(const FixedModes& fixedModes) : modes(fixedModes) {}

  ReferenceHost& getHost() { return host; }
  KarnDSPFixpt::DSPDataAttributesHandle handleOf(const RoleDescription& role) {
    return makeHandle(role, modes, host.getAdaptor());
  }

  /// A new array of a role with values of its own; with a count of 0 it waits for some that are not.
  std::unique_ptr<KarnDSPFixpt::Fixpt> makeOwn(const RoleDescription& role, std::int64_t count);

  /// Throws unless `value` is one of the type of `input`.
  void checkPad(std::complex<double> value, const RoleDescription& input);

  /// Adds what `front` has counted since the last call to the totals: after each run, for a front counts in 32 bits.
  template <class Front>
  void gather(Front& front) {
    FixptLogMap counts;
    {
      const LogTo<Front> log(front, counts);
      front.setup(setupFinish);
    }
    for (const auto& [label, properties] : counts) addCounts(*properties->getLogStruct(), totals[label]);
    host.getAdaptor()->releaseKept();
  }

  /// The totals of all labels with a cast.
  std::vector<FixedStatistics> statistics() const;

 private:
  /// Has a front log into a map for a while.
  template <class Front>
  struct LogTo {
    LogTo(Front& logging, FixptLogMap& counts) : front(logging) { front.setFixptLogMap(&counts); }
    LogTo(const LogTo&) = delete;
    LogTo& operator=(const LogTo&) = delete;
    ~LogTo() { front.setFixptLogMap(nullptr); }
    Front& front;
  };

  CoreModes modes;
  ReferenceHost host;
  std::map<std::string, FixedStatistics> totals;
};

/// One filter with an input, an output and perhaps a pad value: its front, which owns the arrays below.
class FixedFilterJob : public FixedJob {
 public:
  virtual ~FixedFilterJob() = default;

  void run(const FixedView& newInput, const MutableFixedView& newOutput);
  FixedArray run(const FixedView& newInput);
  void setPadValue(std::complex<double> value);
  const Extents& outputExtents() const { return geometry.outputExtents; }
  std::vector<FixedStatistics> statistics();

 protected:
  using Fixpt = KarnDSPFixpt::Fixpt;
  using Front = WindowFront<AnyCorrelation, Fixpt, Fixpt>;

  /// Arrays on their way to a front.
  struct Arrays {
    std::unique_ptr<Fixpt> input;
    std::unique_ptr<Fixpt> output;
    std::unique_ptr<Fixpt> padValue;
  };

  FixedFilterJob(const ConvolutionGeometry& newGeometry, const FixedModes& fixedModes)
      : FixedJob(fixedModes), geometry(newGeometry) {}

  /// Input and output without values, and a pad value. Throws for one that the input's type does not have.
  Arrays makeArrays(const RoleDescription& newInput, const RoleDescription& newOutput, std::complex<double> newPad);
  /// Keeps the front that these arrays have gone to.
  void start(std::unique_ptr<Front> newFront);

  ConvolutionGeometry geometry;

 private:
  RoleDescription inputRole;
  RoleDescription outputRole;
  std::unique_ptr<Front> front;  // ends before what it borrows
  Fixpt* input = nullptr;
  Fixpt* output = nullptr;
  Fixpt* padValue = nullptr;
};

}  // namespace BP::filters::detail
