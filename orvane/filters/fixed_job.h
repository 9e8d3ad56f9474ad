#pragma once

#include <complex>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "orvane/core/allocator_tolk.h"
#include "orvane/core/window_front.h"
#include "orvane/filters/convolution_geometry.h"
#include "orvane/filters/fixed_values.h"
#include "orvane/filters/job.h"
#include "orvane/filters/team.h"
#include "orvane/host/reference_host.h"

namespace BP::filters::detail {

/// The common part of all fixed-point jobs: modes, a host, a way to make arrays, totals of statistics.
class FixedJob {
 public:
  explicit FixedJob(const FixedModes& fixedModes) : modes(fixedModes) {}

  KarnDSPFixpt::DSPDataAttributesHandle handleOf(const RoleDescription& role, ReferenceHost& owner) {
    return makeHandle(role, modes, owner.getAdaptor());
  }
  KarnDSPFixpt::DSPDataAttributesHandle handleOf(const RoleDescription& role) { return handleOf(role, ownHost); }

  /// A new array of a role, which owns `count` values. With a count of 0 it uses other memory, which it gets later.
  std::unique_ptr<KarnDSPFixpt::Fixpt> makeOwn(const RoleDescription& role, std::int64_t count, ReferenceHost& owner);

  /// Throws `std::invalid_argument` unless the type of `input` has `value`.
  void checkPad(std::complex<double> value, const RoleDescription& input);

  /// Adds the counts of `front`, whose host is `owner`, since the last call to the totals. It is called after each run,
  /// because a front counts in 32 bits.
  template <class Front>
  void gather(Front& front, ReferenceHost& owner) {
    FixptLogMap counts;
    take(front, counts);
    for (const auto& [label, properties] : counts) addCounts(*properties->getLogStruct(), totals[label]);
    owner.getAdaptor()->releaseKept();
  }
  /// Drops them: what a front counts while it prepares itself counts once, however many fronts there are.
  template <class Front>
  static void drop(Front& front, ReferenceHost& owner) {
    FixptLogMap counts;
    take(front, counts);
    owner.getAdaptor()->releaseKept();
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

  template <class Front>
  static void take(Front& front, FixptLogMap& counts) {
    const LogTo<Front> log(front, counts);
    front.setup(setupFinish);
  }

  CoreModes modes;
  ReferenceHost ownHost;
  std::map<std::string, FixedStatistics> totals;
};

/// A filter with an input, an output and a pad value, which may be unused, and fronts that share its runs. A front owns
/// arrays of its own, which use the memory of the caller.
class FixedFilterJob : public FixedJob {
 public:
  virtual ~FixedFilterJob() = default;
  FixedFilterJob(const FixedFilterJob&) = delete;
  FixedFilterJob& operator=(const FixedFilterJob&) = delete;

  void run(const FixedView& newInput, const MutableFixedView& newOutput);
  FixedArray run(const FixedView& newInput);
  void setPadValue(std::complex<double> value);
  const Extents& outputExtents() const { return geometry.outputExtents; }
  const ConvolutionGeometry& getGeometry() const { return geometry; }
  std::vector<FixedStatistics> statistics();

 protected:
  using Fixpt = KarnDSPFixpt::Fixpt;
  using Front = WindowFront<AnyCorrelation, Fixpt, Fixpt>;

  /// A front with its host, and the arrays that it owns.
  struct Member {
    explicit Member(FixedFilterJob& owner);
    AnyCorrelation& getProcessor() { return front->getProcessor(); }
    void begin();
    template <class Work>
    void compute(Work&& work) {
      work(getProcessor());
    }

    FixedFilterJob& job;
    bool isFirst;
    ReferenceHost host;
    Fixpt* input = nullptr;
    Fixpt* output = nullptr;
    Fixpt* padValue = nullptr;
    Fixpt* filter = nullptr;
    Fixpt* secondFilter = nullptr;
    std::unique_ptr<Front> front;  // destroyed before the memory that it uses
  };

  FixedFilterJob(const ConvolutionGeometry& newGeometry, const ConvolutionOptions& options,
                 const FixedModes& fixedModes)
      : FixedJob(fixedModes), geometry(newGeometry), crew(options.threads, options.progress) {}

  /// Takes roles and pad value, and makes the first member. Throws `std::invalid_argument` for a pad value that the
  /// input's type does not have. A derived class calls this when all that its fronts need is there.
  void start(const RoleDescription& newInput, const RoleDescription& newOutput, std::complex<double> newPad);
  /// Arrays that a front takes over when it starts, even if its start fails.
  struct OwnArrays {
    std::unique_ptr<Fixpt> input, output, padValue;
  };
  /// Makes the front of a member, which has a host. Input and output have no values.
  virtual void makeFront(Member& member, OwnArrays arrays) = 0;
  /// Calls `visit` for each member there is, of which the first always exists.
  template <class Visit>
  void forEachMember(Visit&& visit) {
    team->forEach(visit);
  }
  Member& firstMember() { return team->first(); }

  ConvolutionGeometry geometry;

 private:
  RoleDescription inputRole;
  RoleDescription outputRole;
  std::complex<double> padValue;
  const void* inputData = nullptr;
  void* outputData = nullptr;
  LineStrides inputStrides, outputStrides;
  Crew crew;
  std::optional<Team<Member>> team;
};

}  // namespace BP::filters::detail
