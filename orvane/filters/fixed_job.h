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

/// The common part of all fixed-point jobs: a host, modes, a way to make arrays, totals of statistics.
class FixedJob {
 public:
  explicit FixedJob(const FixedModes& fixedModes) : modes(fixedModes) {}

  ReferenceHost& getHost() { return host; }
  KarnDSPFixpt::DSPDataAttributesHandle handleOf(const RoleDescription& role) {
    return makeHandle(role, modes, host.getAdaptor());
  }

  /// A new array of a role, which owns `count` values. With a count of 0 it uses other memory, which it gets later.
  std::unique_ptr<KarnDSPFixpt::Fixpt> makeOwn(const RoleDescription& role, std::int64_t count);

  /// Throws `std::invalid_argument` unless the type of `input` has `value`.
  void checkPad(std::complex<double> value, const RoleDescription& input);

  /// Adds the counts of `front` since the last call to the totals. It is called after each run, because a front counts
  /// in 32 bits.
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

  /// The totals of all labels with at least one cast.
  std::vector<FixedStatistics> statistics() const;

 private:
  /// Makes a front write its statistics into a map during the object's lifetime.
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

/// A filter with an input, an output and a pad value, which may be unused. Its front owns these arrays.
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

  /// The arrays, before the front owns them.
  struct Arrays {
    std::unique_ptr<Fixpt> input;
    std::unique_ptr<Fixpt> output;
    std::unique_ptr<Fixpt> padValue;
  };

  FixedFilterJob(const ConvolutionGeometry& newGeometry, const FixedModes& fixedModes)
      : FixedJob(fixedModes), geometry(newGeometry) {}

  /// Makes input and output without values, and the pad value. Throws `std::invalid_argument` for a pad value that the
  /// input's type does not have.
  Arrays makeArrays(const RoleDescription& newInput, const RoleDescription& newOutput, std::complex<double> newPad);
  /// Keeps the front, which now owns the arrays.
  void start(std::unique_ptr<Front> newFront);

  ConvolutionGeometry geometry;

 private:
  RoleDescription inputRole;
  RoleDescription outputRole;
  std::unique_ptr<Front> front;  // destroyed before the memory that it uses
  Fixpt* input = nullptr;
  Fixpt* output = nullptr;
  Fixpt* padValue = nullptr;
};

}  // namespace BP::filters::detail
