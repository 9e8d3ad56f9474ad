#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <type_traits>

#include "orvane/core/stored.h"
#include "orvane/core/window_front.h"
#include "orvane/filters/array.h"
#include "orvane/filters/checks.h"
#include "orvane/filters/convolution_geometry.h"
#include "orvane/filters/job.h"
#include "orvane/filters/stored_array.h"
#include "orvane/filters/team.h"
#include "orvane/host/reference_host.h"

namespace BP::filters::detail {

/// A filter over plain elements: its geometry, and fronts that share its runs, with the memory that they use.
template <class UT, class YT>
class PlainFilterJob {
 public:
  using Front = WindowFront<AnyCorrelation, UT, YT>;

  virtual ~PlainFilterJob() = default;
  PlainFilterJob(const PlainFilterJob&) = delete;
  PlainFilterJob& operator=(const PlainFilterJob&) = delete;

  /// Returns the number of outputs that were clipped to the output's type.
  std::int64_t run(const StoredArray& input, const StoredArray& output) {
    checkArray("input", input.data, input.layout, geometry.inputExtents);
    checkArray("output", output.data, output.layout, geometry.outputExtents);
    if (geometry.positions.isEmpty()) return 0;
    checkDisjoint({input.data, input.layout, storedBytes<UT>(input.type)},
                  {output.data, output.layout, storedBytes<YT>(output.type)});
    // Fronts only read their input; they take elements that are stored in another type for what they are.
    arrays = {static_cast<UT*>(const_cast<void*>(input.data)), static_cast<YT*>(const_cast<void*>(output.data)),
              input.type, output.type};
    inputStrides.set(input.layout);
    outputStrides.set(output.layout);
    team->run(static_cast<std::size_t>(geometry.rank), geometry.taps);
    std::int64_t clipped = 0;
    team->forEachInRun([&](Member& member) {
      throwMessages(member.host);
      clipped += member.front->takeClipped();
    });
    return clipped;
  }

  const Extents& outputExtents() const { return geometry.outputExtents; }
  const ConvolutionGeometry& getGeometry() const { return geometry; }

 protected:
  PlainFilterJob(const ConvolutionGeometry& newGeometry, const ConvolutionOptions& options)
      : geometry(newGeometry), crew(options.threads, options.progress) {}

  /// Makes the first front. A derived class calls this when all that its fronts need is there.
  void start() {
    team.emplace(crew, [this] { return std::make_unique<Member>(*this); });
  }
  virtual std::unique_ptr<Front> makeFront(ReferenceHost& host) = 0;
  /// Starts a front over these arrays.
  virtual void bind(Front& front, UT* input, YT* output) = 0;

  ConvolutionGeometry geometry;

 private:
  struct Arrays {
    UT* input = nullptr;
    YT* output = nullptr;
    Stored inputType = Stored::asComputed;
    Stored outputType = Stored::asComputed;
    bool operator==(const Arrays&) const = default;
  };

  /// A front with its host. It starts over the arrays of a run, unless its last run used the same ones; every run reads
  /// filters and pad value from their fixed addresses.
  struct Member {
    explicit Member(PlainFilterJob& owner) : job(owner), front(job.makeFront(host)) {
      if (job.geometry.hasRegion) getProcessor().setRegion(job.geometry.region.get());
      if (job.team) getProcessor().shareIntermediate(job.team->first().getProcessor());
    }
    AnyCorrelation& getProcessor() { return front->getProcessor(); }
    void begin() {
      getProcessor().setStrides(job.inputStrides.get(), job.outputStrides.get());
      front->setStored(job.arrays.inputType, job.arrays.outputType);
      if (bound != job.arrays) {
        bound = {};  // a start that fails leaves the front between two sets of arrays
        job.bind(*front, job.arrays.input, job.arrays.output);
        bound = job.arrays;
      }
      front->takeClipped();  // of a run that ended early
      front->beginOutputs();
    }
    template <class Work>
    void compute(Work&& work) {
      checkVendor([&] { work(getProcessor()); });
    }

    PlainFilterJob& job;
    ReferenceHost host;
    std::unique_ptr<Front> front;  // destroyed before the memory that it uses
    Arrays bound;
  };

  Arrays arrays;
  LineStrides inputStrides, outputStrides;
  Crew crew;
  std::optional<Team<Member>> team;
};

}  // namespace BP::filters::detail
