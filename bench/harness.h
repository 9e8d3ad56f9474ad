#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

/// Times jobs of this library beside peers and beside the processor's limits. A *job* is one kind of work on one size;
/// its *peers* do the same work in another way, or work that it is to be compared with.
namespace bench {

/// What is measured: the columns that name a row of the table.
struct Subject {
  std::string job, type;
  std::string image, window;  ///< extents as in "512x512"; empty where there are none
  double taps = 0;            ///< of one output; 0 where there are no sums of products
  double pairs = 1;           ///< multiplications of real numbers, each with an addition, in a tap
};

/// Measures once, and returns the time of one output in ns.
using Sampler = std::function<double()>;

/// Keeps a value, and with it the work that led to it, from being optimised away.
template <class T>
void keep(const T& value) {
  asm volatile("" : : "g"(&value) : "memory");
}

/// Times `action`, which makes `outputs` outputs, in the calling thread's own processor time: while other programs have
/// their turn it does not count. Actions are repeated to fill two milliseconds; the first sample finds out how often,
/// and is no measurement.
Sampler timed(std::function<void()> action, double outputs);

struct Peer {
  std::string name;
  Sampler sampler;  ///< empty where the peer is not installed
};

struct Settings {
  std::string filter;  ///< only rows that hold each of these words (see `Harness::wants`)
  bool quick = false;  ///< few repeats; jobs leave sizes out as well
  std::string scipy;   ///< the program that times SciPy; empty: none
  std::string target;  ///< name of the vector target in use
};

/// Runs jobs and keeps what it measured. Each row is printed when it is known.
class Harness {
 public:
  explicit Harness(Settings given);

  const Settings settings;

  /// Whether each word of the filter begins one of the words of the row: its job, type, image and window.
  bool wants(const Subject& subject) const;

  /// Samples ours, the peers and the arithmetic peak in turn, so that all of them see the same machine, and takes the
  /// medians. There is one row for each peer, or one without a peer. `peak` gives ns of one multiplication and
  /// addition; it may be empty.
  void measure(const Subject& subject, const Sampler& ours, const std::vector<Peer>& peers = {},
               const Sampler& peak = {});

  /// The processor time that SciPy takes for a job of `bench/scipy_peer`, as that program says; empty without SciPy.
  /// Throws `std::runtime_error` if it cannot be run.
  Sampler scipySampler(const std::string& arguments, double outputs) const;

  /// Writes all rows, as a list of objects. Throws `std::runtime_error` if the file cannot be written.
  void writeJson(const std::string& path) const;

  bool hasRows() const { return !rows.empty(); }

 private:
  struct Row {
    Subject subject;
    double nsPerOutput = 0, fractionOfPeak = 0;  ///< 0: not known
    std::string peer;                            ///< empty: none
    double peerNs = 0;

    double gtapPerSecond() const { return subject.taps / nsPerOutput; }
    double speedup() const { return peerNs / nsPerOutput; }
  };

  void print(const Row& row);

  std::vector<Row> rows;
};

/// Extents as text: "3x3".
std::string extentsText(std::int64_t side, int rank = 2);

// The jobs, each in a source of its own.
void measureLimits(Harness& harness);
void measureConvolution(Harness& harness);
void measureSeparable(Harness& harness);
void measureMatching(Harness& harness);
void measureVolume(Harness& harness);
void measureCalls(Harness& harness);
void measurePlan(Harness& harness);
void measureFixedConvolutions(Harness& harness);
void measureFixedPoint(Harness& harness);
void measureMedians(Harness& harness);

}  // namespace bench
