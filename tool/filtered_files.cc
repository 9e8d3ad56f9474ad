#include "tool/filtered_files.h"

#include <optional>
#include <stdexcept>
#include <utility>

#include "tool/checksum.h"
#include "tool/file.h"
#include "tool/messages.h"
#include "tool/option_values.h"
#include "tool/stream_filter.h"
#include "tool/text.h"

namespace BP::tool {

namespace {

std::string sides(std::int64_t width, std::int64_t height) {
  return std::to_string(width) + "x" + std::to_string(height);
}

void checkShape(const PictureHeader& in, const Window& window, const std::string& name) {
  if (in.rows() == 0 || in.rowSamples() == 0) {
    throw std::runtime_error("the array is empty (" + sides(in.width, in.height) + "); extents must be 1 or more");
  }
  const bool fits = window.width <= in.width && window.height <= in.height;
  if (fits || window.mode != filters::OutputMode::valid) return;
  throw std::runtime_error("the " + name + " of " + sides(window.width, window.height) +
                           " is larger than the image of " + sides(in.width, in.height) +
                           "; with --mode same or full it may be");
}

}  // namespace

std::vector<Option> fileOptions() {
  return {{.name = "IN",
           .meaning = "Picture, each colour channel of which is filtered, or array: PNG, TIFF, JPEG, NPY",
           .isRequired = true},
          {.name = "OUT", .meaning = "Picture or array to write, may be IN", .isRequired = true}};
}

std::vector<Option> streamOptions() {
  std::vector<Option> options = {
      {.name = "--axes",
       .meaning = "Names the axes of an array, such as ZYX for a stack of planes or YXC for colours",
       .form = "AXES"}};
  for (Option& option : writeOptions()) options.push_back(std::move(option));
  options.push_back({.name = "--memory",
                     .meaning = "Bands of the picture are as high as N MiB allow; results do not depend on it",
                     .form = "N",
                     .defaultValue = "256"});
  options.push_back(threadsOption());
  options.push_back(
      {.name = "--quiet", .meaning = "Does not say what was clipped, rounded or dropped", .shortName = 'q'});
  return options;
}

std::string memoryDetails() {
  return "\nPictures of any size are read, filtered and written in bands. With the pad circular, a picture that does "
         "not "
         "fit the memory is read twice, which a pipe cannot be.";
}

StreamSettings streamSettings(const Values& values) {
  constexpr int maxMemory = 1 << 24;
  StreamSettings settings{.in = values["IN"],
                          .out = values["OUT"],
                          .axes = values.find("--axes").value_or(""),
                          .write = writeSettings(values)};
  settings.memory = static_cast<std::size_t>(parseWhole(values["--memory"], 1, maxMemory, "--memory")) << 20;
  settings.threads = static_cast<unsigned>(threadsOf(values));
  settings.isQuiet = values.has("--quiet");
  return settings;
}

std::unique_ptr<RowReader> openInput(const StreamSettings& settings) {
  std::unique_ptr<RowReader> reader = openPicture(settings.in);
  const PictureHeader& header = reader->header();
  if (!settings.axes.empty()) {
    reader->setAxes(settings.axes);
  } else if (const std::size_t rank = header.arrayExtents.size(); header.isArray() && (rank == 0 || rank > 2)) {
    throw std::runtime_error("the array has " + std::to_string(rank) +
                             " dimensions; allowed are 1 and 2, or more with --axes, such as --axes ZYX for a stack");
  }
  return reader;
}

BandShape bandShape(const PictureHeader& in, FileFormat format, ElementType type, const Window& window,
                    const std::string& name) {
  checkShape(in, window, name);
  BandShape shape{in, in, window};
  PictureHeader& out = shape.out;
  out.type = type;
  out.isBilevel = false;
  out.width = outputExtent(in.width, window.width, window.mode);
  out.height = outputExtent(in.height, window.height, window.mode);
  if (in.isArray()) {
    const std::size_t yAxis = in.xAxis + 1;
    if (yAxis == in.arrayExtents.size() && out.height > 1) out.arrayExtents.push_back(1);
    out.arrayExtents[in.xAxis] = out.width;
    if (yAxis < out.arrayExtents.size()) out.arrayExtents[yAxis] = out.height;
  }
  out = inFormat(out, format);
  return shape;
}

SampleCounts filterFile(RowReader& reader, BandFilter& filter, const BandShape& shape, const StreamSettings& settings) {
  Workers workers(settings.threads);
  OutputFiles files;
  const std::unique_ptr<RowWriter> writer = createPicture(files.open(settings.out), shape.out, settings.write, workers);
  std::optional<Checksum> checksum;
  if (settings.write.hasChecksum) checksum.emplace(shape.out);
  StreamMeans means{settings.memory, workers, checksum ? &*checksum : nullptr};
  if (!isStream(settings.in)) means.reopen = [&settings] { return openInput(settings); };
  const SampleCounts counts = streamFilter(reader, *writer, filter, shape, means);
  files.commit();
  if (checksum) printChecksum(settings.out, checksum->text());
  if (!settings.isQuiet) tellLost(settings.out, shape.in.tags, shape.out.format);
  return counts;
}

void tellCount(const std::string& out, std::uint64_t count, std::uint64_t all, const std::string& what) {
  if (count == 0) return;
  tell(out + ": " + std::to_string(count) + " of " + std::to_string(all) + " values were " + what);
}

std::uint64_t valuesOf(const PictureHeader& header) {
  return static_cast<std::uint64_t>(header.width) * static_cast<std::uint64_t>(header.rows()) *
         static_cast<std::uint64_t>(header.colours());
}

void tellFixed(const std::string& file, const std::string& table) { tellTable(file + ": fixed-point values", table); }

}  // namespace BP::tool
