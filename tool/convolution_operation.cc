#include <algorithm>
#include <cmath>
#include <complex>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <utility>

#include "orvane/filters/convolution.h"
#include "tool/checksum.h"
#include "tool/file.h"
#include "tool/filter_settings.h"
#include "tool/filtered_files.h"
#include "tool/kernel.h"
#include "tool/operations.h"
#include "tool/option_values.h"
#include "tool/picture_file.h"
#include "tool/plane_filter.h"
#include "tool/plane_store.h"
#include "tool/text.h"
#include "tool/volume.h"

namespace BP::tool {

namespace {

SampleScaling scalingOf(const Values& values) {
  return {numberOf(values, "--scale-output"), numberOf(values, "--offset")};
}

/// Refuses settings whose sums could overflow to infinity before they become samples of `type`: the difference of two
/// infinities is no number.
void checkRange(ElementType type, const FilterSettings& settings, const SampleScaling& scaling) {
  constexpr double maxDouble = 1e300;
  const bool isFloat = settings.sumType == ElementType::float32;
  const double maxSum = isFloat ? 1e37 : maxDouble;
  const double greatest = std::ldexp(1.0, static_cast<int>(8 * sizeOf(type)));
  double reach = std::max(greatest, std::abs(settings.options.pad.value));
  for (const FilterKernel& kernel : settings.kernels) {
    double sum = 0;
    for (const double element : kernel.elements) sum += std::fabs(element);
    reach *= sum;
  }
  const bool squares = settings.options.normalise == filters::Normalisation::energy;
  const double scaled = reach * std::fabs(scaling.scale) + std::fabs(scaling.offset);
  if (reach <= maxSum && scaled <= maxDouble && (!squares || reach * reach <= maxSum)) return;
  throw std::runtime_error(std::string("kernel, scale, offset or pad value are too large: sums could exceed ") +
                           (isFloat ? "1e37" : "1e300"));
}

/// The type of the samples in OUT: that of the sums, but that of IN where whole numbers go into a picture.
ElementType outputType(const PictureHeader& in, FileFormat format, ElementType sums) {
  const bool isRounded = format != FileFormat::npy && isWhole(in.type) && sizeOf(in.type) <= 4;
  return isRounded ? in.type : sums;
}

/// Filters the file with planes of T; returns the table of fixed-point values.
template <class T>
std::string runAs(RowReader& reader, BandShape& shape, const FilterSettings& settings, const SampleScaling& scaling,
                  const StreamSettings& files, SampleCounts& counts) {
  const PlaneStore<T> store = makeStore<T>(shape.out.type, shape.out.channels, scaling);
  if constexpr (std::is_same_v<filters::RealOf<T>, double>) {
    if (settings.fixed) {
      // Rows that several bands need would be counted several times where a first pass filters them.
      shape.isWhole = settings.isSeparable() || settings.options.normalise != filters::Normalisation::none;
      FixedPlaneFilters fixed(
          [&settings](const PlanePart& part) { return FixedPlaneFilter(settings, part, IsComplex<T>::value); });
      counts = filterFile(reader, *makeBandFilter<T>(shape, fixed.maker<T>(), store, fixedBytes<T>), shape, files);
      return fixed.table();
    }
  }
  const PlaneMaker<T> make = [&settings](const PlanePart& part) { return makePlaneFilter<T>(settings, part); };
  counts = filterFile(reader, *makeBandFilter<T>(shape, make, store), shape, files);
  return {};
}

void tellCounts(const BandShape& shape, ElementType sums, const SampleCounts& counts, const StreamSettings& files) {
  if (files.isQuiet) return;
  if (isWhole(shape.out.type)) {
    const auto [least, greatest] = rangeOf(shape.out.type);
    tellCount(files.out, counts.clipped, valuesOf(shape.out),
              "clipped to " + numberText(least) + ".." + numberText(greatest) + " (see --scale-output and --offset)");
  }
  tellCount(files.out, counts.rounded, valuesOf(shape.in),
            "rounded to " + std::string(nameOf(sums)) + " before they were filtered");
}

int runOnPlanes(const Values& values, const FilterSettings& settings) {
  const SampleScaling scaling = scalingOf(values);
  const StreamSettings files = streamSettings(values);
  const std::unique_ptr<RowReader> reader = openInput(files);
  checkWritable(files.out);
  const PictureHeader& in = reader->header();
  const FileFormat format = formatFor(files.out, files.write, in.format);
  const ElementType sums = sumTypeFor(in.type, settings.fixed ? std::optional(ElementType::float64) : settings.sumType);
  const filters::ConvolutionOptions& options = settings.options;
  BandShape shape =
      bandShape(in, format, outputType(in, format, sums),
                {settings.windowWidth(), settings.windowHeight(), options.mode, options.pad.rule}, "kernel");
  if (!isComplex(in.type) && options.pad.value.imag() != 0) {
    throw std::runtime_error("--pad: elements of type " + std::string(nameOf(in.type)) +
                             " take a real value, constant:V");
  }
  if (isWhole(shape.out.type) && !settings.fixed) checkRange(in.type, settings, scaling);
  const auto run = sums == ElementType::float32     ? runAs<float>
                   : sums == ElementType::float64   ? runAs<double>
                   : sums == ElementType::complex64 ? runAs<std::complex<float>>
                                                    : runAs<std::complex<double>>;
  SampleCounts counts;
  const std::string table = run(*reader, shape, settings, scaling, files, counts);
  tellCounts(shape, sums, counts, files);
  if (!files.isQuiet) tellFixed(files.out, table);
  return 0;
}

/// Correlates an array of any rank with a kernel that is an array, too.
int runOnVolume(const Values& values, const FilterSettings& settings) {
  if (numberOf(values, "--scale") != 1) {
    throw std::runtime_error("--scale: with --nd the kernel's elements stand as they are");
  }
  const StreamSettings files = streamSettings(values);
  const Array input = readArray(files.in);
  if (formatFor(files.out, files.write, FileFormat::npy) != FileFormat::npy) {
    throw std::runtime_error("cannot write " + inQuotes(files.out) + ": with --nd the name must end in .npy");
  }
  const FilteredVolume result =
      correlateVolume(input, readArray(values["--kernel"]), settings, scalingOf(values), threadsOf(values));
  OutputFiles outputs;
  const std::string hash = addArray(outputs, files.out, result.array, files.write);
  outputs.commit();
  if (!hash.empty()) printChecksum(files.out, hash);
  if (files.isQuiet) return 0;
  tellCount(files.out, result.rounded, input.elements(),
            "rounded to " + std::string(nameOf(result.array.type)) + " before they were filtered");
  return 0;
}

template <filters::FilterDirection direction>
int runMatrix(const Values& values) {
  FilterSettings settings = filterSettings(values, direction);
  if (values.has("--nd")) return runOnVolume(values, settings);
  settings.kernels = {parseKernel(values["--kernel"], numberOf(values, "--scale"))};
  return runOnPlanes(values, settings);
}

int runSeparable(const Values& values) {
  FilterSettings settings = filterSettings(values, values.has("--correlate") ? filters::FilterDirection::correlation
                                                                             : filters::FilterDirection::convolution);
  settings.kernels = {parseLine(values["--row"], "--row"), parseLine(values["--column"], "--column")};
  std::swap(settings.kernels[1].width, settings.kernels[1].height);
  return runOnPlanes(values, settings);
}

/// The options of an operation: `kernelOptions`, and those that all three operations share.
std::vector<Option> optionsWith(const std::vector<Option>& kernelOptions, bool canNormalise) {
  std::vector<Option> all = fileOptions();
  all.insert(all.end(), kernelOptions.begin(), kernelOptions.end());
  for (Option& option : filterOptions(canNormalise)) all.push_back(std::move(option));
  all.push_back(numberOption("--scale-output", "Multiplies each sum; such as 1/2 for signed results", "1"));
  all.push_back(numberOption("--offset", "Added to each scaled sum; such as 128 for signed results", "0"));
  for (Option& option : streamOptions()) all.push_back(std::move(option));
  return all;
}

std::string detailsWith(const std::string& kernels, bool canNormalise) {
  return "Kernels:\n" + kernels + "\n" + filterDetails(canNormalise) +
         "\nWhole samples of a picture stay of their type: round(sum * scale-output + offset), ties to even, clipped "
         "to "
         "its range. Into .npy go the sums before they are rounded, and so do sums of other elements into every file: "
         "sum * scale-output + offset. Float and complex elements are summed in their precision, all others in double, "
         "or in that of --type; fixed point gives float64 or complex128.\n"
         "\nAlpha is not filtered: outputs have that of the pixel under the kernel's middle, beyond the edge by the "
         "rule "
         "of the pad, 0 with a constant one. The pages of a stack are filtered one by one. Arrays have one dimension "
         "or "
         "two, the last axis going across, or axes that --axes names.\n" +
         memoryDetails() +
         " Fixed point holds a page of the picture in memory where sums are normalised or filters are separable.\n\n" +
         formatDetails();
}

std::vector<Option> matrixOptions() {
  return {
      {.name = "--kernel", .meaning = "The filter, see below", .form = "KERNEL", .isRequired = true, .shortName = 'k'},
      kernelScaleOption()};
}

Operation matrixOperation(const std::string& name, const std::string& summary, const std::vector<Option>& kernelOptions,
                          int (*run)(const Values&)) {
  return {.name = name,
          .summary = summary,
          .options = optionsWith(kernelOptions, true),
          .details = detailsWith(kernelForms(), true),
          .example = name + " photo.png filtered.png --kernel gaussian:9:2",
          .run = run};
}

}  // namespace

Operation convolveOperation() {
  return matrixOperation(
      "convolve", "Convolution: the kernel, turned by 180 degrees, is laid over each position and the products summed",
      matrixOptions(), runMatrix<filters::FilterDirection::convolution>);
}

Operation correlateOperation() {
  std::vector<Option> options = matrixOptions();
  options.push_back(
      {.name = "--nd", .meaning = "Over all dimensions, 1 to 8, of an NPY array: KERNEL is an NPY file of that rank"});
  return matrixOperation("correlate",
                         "Correlation: the kernel is laid over each position as it is and the products summed", options,
                         runMatrix<filters::FilterDirection::correlation>);
}

Operation separableOperation() {
  const std::vector<Option> lines = {
      {.name = "--column",
       .meaning = "Numbers that run down the picture, see below",
       .form = "LINE",
       .isRequired = true,
       .shortName = 'c'},
      {.name = "--row",
       .meaning = "Numbers that run across the picture, from left to right",
       .form = "LINE",
       .isRequired = true,
       .shortName = 'r'},
      {.name = "--correlate", .meaning = "Lays row and column as they are, not turned round"}};
  return {.name = "separable",
          .summary = "Convolution with a row of numbers, then with a column: faster than with their product",
          .options = optionsWith(lines, false),
          .details = detailsWith(lineForms(), false),
          .example = "separable photo.png soft.png -c gaussian:6 -r gaussian:6",
          .run = runSeparable};
}

}  // namespace BP::tool
