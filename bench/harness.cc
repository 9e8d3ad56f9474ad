#include "bench/harness.h"

#include <time.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <memory>
#include <sstream>
#include <stdexcept>

namespace bench {
namespace {

/// Processor time of the calling thread, in ns.
double now() {
  timespec t{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &t);
  return 1e9 * static_cast<double>(t.tv_sec) + static_cast<double>(t.tv_nsec);
}

double timeOf(const std::function<void()>& action, std::int64_t times) {
  const double start = now();
  for (std::int64_t i = 0; i < times; ++i) action();
  return now() - start;
}

double medianOf(std::vector<double> values) {
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

/// A sampler and what it has measured.
struct Series {
  explicit Series(const Sampler& s) : sampler(s) {}
  void warmUp() const {
    if (sampler) sampler();
  }
  void sample() {
    if (sampler) values.push_back(sampler());
  }
  double median() const { return values.empty() ? 0 : medianOf(values); }

  const Sampler& sampler;
  std::vector<double> values;
};

/// A number as JSON; 0 stands for what is not known.
std::string number(double value) {
  if (value == 0 || !std::isfinite(value)) return "null";
  char text[32];
  std::snprintf(text, sizeof text, "%.5g", value);
  return text;
}

/// A text as JSON. None has anything to escape.
std::string quoted(std::string_view text) { return text.empty() ? "null" : '"' + std::string(text) + '"'; }

/// A number in a column of the table, empty where it is not known.
std::string cell(double value, int digits) {
  if (value == 0 || !std::isfinite(value)) return "";
  char text[32];
  std::snprintf(text, sizeof text, "%.*f", digits, value);
  return text;
}

/// Three digits at least, none of them behind the point from 100 on.
std::string nsCell(double ns) { return cell(ns, ns < 10 ? 3 : ns < 100 ? 2 : 0); }

constexpr const char* columns = "%-23s %-26s %-12s %-7s %10s %8s %8s  %-14s %10s %8s\n";

}  // namespace

Sampler timed(std::function<void()> action, double outputs) {
  constexpr double least = 2e6;
  return [action = std::move(action), outputs, times = std::int64_t{0}]() mutable {
    if (times == 0) {
      const double first = timeOf(action, times = 1);
      if (first > 10 * least) return first / outputs;  // long enough to tell at once
      while (timeOf(action, times) < least) times *= 2;
    }
    return timeOf(action, times) / (static_cast<double>(times) * outputs);
  };
}

std::string extentsText(std::int64_t side, int rank) {
  std::string text = std::to_string(side);
  const std::string further = 'x' + text;
  while (--rank > 0) text += further;
  return text;
}

Harness::Harness(Settings given) : settings(std::move(given)) {}

bool Harness::wants(const Subject& subject) const {
  const std::string row = ' ' + subject.job + ' ' + subject.type + ' ' + subject.image + ' ' + subject.window;
  std::istringstream words(settings.filter);
  for (std::string word; words >> word;) {
    if (row.find(' ' + word) == std::string::npos) return false;
  }
  return true;
}

void Harness::measure(const Subject& subject, const Sampler& ours, const std::vector<Peer>& peers,
                      const Sampler& peak) {
  std::vector<Series> all = {Series(ours), Series(peak)};
  for (const Peer& peer : peers) all.emplace_back(peer.sampler);
  for (const Series& series : all) series.warmUp();

  // A budget of processor time; long jobs take the least number of repeats.
  constexpr std::size_t least = 3, most = 101;
  const double end = now() + (settings.quick ? 0.1e9 : 0.5e9);
  for (std::size_t n = 0; n < least || (n < most && now() < end); ++n) {
    for (Series& series : all) series.sample();
  }

  Row row{subject, all[0].median(), 0, "", 0};
  if (peak) row.fractionOfPeak = subject.taps * subject.pairs * all[1].median() / row.nsPerOutput;
  for (std::size_t i = 0; i < peers.size(); ++i) {
    if (!peers[i].sampler) continue;
    row.peer = peers[i].name;
    row.peerNs = all[2 + i].median();
    print(row);
  }
  if (row.peer.empty()) print(row);
}

void Harness::print(const Row& row) {
  if (rows.empty()) {
    std::printf("vector target %s, one thread; times of one output in ns\n\n", settings.target.c_str());
    std::printf(columns, "job", "type", "image", "window", "ns", "Gtap/s", "of peak", "peer", "ns", "speed-up");
  }
  const Subject& s = row.subject;
  std::printf(columns, s.job.c_str(), s.type.c_str(), s.image.c_str(), s.window.c_str(),
              nsCell(row.nsPerOutput).c_str(), cell(row.gtapPerSecond(), 2).c_str(),
              cell(row.fractionOfPeak, 2).c_str(), row.peer.c_str(), nsCell(row.peerNs).c_str(),
              cell(row.speedup(), 2).c_str());
  std::fflush(stdout);
  rows.push_back(row);
}

Sampler Harness::scipySampler(const std::string& arguments, double outputs) const {
  if (settings.scipy.empty()) return {};
  return [command = settings.scipy + ' ' + arguments, outputs] {
    FILE* pipe = popen(command.c_str(), "r");
    double seconds = 0;
    const bool hasRead = pipe != nullptr && std::fscanf(pipe, "%lf", &seconds) == 1;
    if (pipe == nullptr || pclose(pipe) != 0 || !hasRead) throw std::runtime_error("cannot run " + command);
    return 1e9 * seconds / outputs;
  };
}

void Harness::writeJson(const std::string& path) const {
  const std::unique_ptr<FILE, int (*)(FILE*)> file(std::fopen(path.c_str(), "w"), std::fclose);
  if (!file) throw std::runtime_error("cannot write " + path);
  std::string text;
  for (const Row& row : rows) {
    const Subject& s = row.subject;
    text += text.empty() ? "[\n" : ",\n";
    text += R"( {"job": )" + quoted(s.job) + R"(, "type": )" + quoted(s.type) + R"(, "image": )" + quoted(s.image) +
            R"(, "window": )" + quoted(s.window) + R"(, "threads": 1, "ns_per_output": )" + number(row.nsPerOutput) +
            R"(, "gtap_per_s": )" + number(row.gtapPerSecond()) + R"(, "fraction_of_peak": )" +
            number(row.fractionOfPeak) + R"(, "peer": )" + quoted(row.peer) + R"(, "peer_ns_per_output": )" +
            number(row.peerNs) + R"(, "speedup": )" + number(row.speedup()) + R"(, "target": )" +
            quoted(settings.target) + "}";
  }
  text += text.empty() ? "[]\n" : "\n]\n";
  if (std::fputs(text.c_str(), file.get()) < 0 || std::fflush(file.get()) != 0) {
    throw std::runtime_error("cannot write " + path);
  }
}

}  // namespace bench
