#include <memory>
#include <optional>
#include <stdexcept>
#include <string>

#include "tool/compare.h"
#include "tool/file.h"
#include "tool/filtered_files.h"
#include "tool/operations.h"
#include "tool/option_values.h"
#include "tool/picture_file.h"
#include "tool/text.h"

namespace BP::tool {

namespace {

/// The elements of a file.
struct Content {
  Array array;
  int bitDepth = 0;  ///< of a picture of whole samples, 8 or 16
};

Content readContent(const std::string& path) {
  const std::unique_ptr<RowReader> reader = openPicture(path);
  const PictureHeader& header = reader->header();
  const bool isPicture = !header.isArray() && isImage(header);
  return {readArray(*reader), isPicture ? static_cast<int>(8 * sizeOf(header.type)) : 0};
}

void checkBitDepths(const Content& first, const Content& second) {
  if (first.bitDepth == second.bitDepth || first.bitDepth == 0 || second.bitDepth == 0) return;
  throw std::runtime_error("the pictures have " + std::to_string(first.bitDepth) + " and " +
                           std::to_string(second.bitDepth) + " bits; they must have the same");
}

std::optional<double> peakOf(const Values& values, const Content& first, const Content& second) {
  if (values.has("--peak")) {
    const double peak = numberOf(values, "--peak");
    if (peak <= 0) throw std::runtime_error("--peak " + inQuotes(values["--peak"]) + " must be greater than 0");
    return peak;
  }
  const int depth = first.bitDepth != 0 ? first.bitDepth : second.bitDepth;
  if (depth == 0) return std::nullopt;
  return (1 << depth) - 1;
}

/// Without an allowed error everything counts: element types, bits and values.
bool isDifferent(const Comparison& comparison, const std::optional<double>& maxError) {
  if (maxError) return comparison.maxError > *maxError;
  return !comparison.hasSameTypes() || comparison.differentBits > 0 || comparison.differentValues > 0;
}

int run(const Values& values) {
  std::optional<double> maxError;
  if (values.has("--max-error")) maxError = numberOf(values, "--max-error");
  if (maxError && *maxError < 0) {
    throw std::runtime_error("--max-error " + inQuotes(values["--max-error"]) + " must not be less than 0");
  }
  const std::optional<std::string> overlay = values.find("--overlay");
  if (overlay) {
    formatFor(*overlay, {});
    checkWritable(*overlay);
  }
  const Content first = readContent(values["FIRST"]), second = readContent(values["SECOND"]);
  checkBitDepths(first, second);
  const std::optional<double> peak = peakOf(values, first, second);
  const Comparison comparison = compare(first.array, second.array);
  if (overlay) writeImage(*overlay, {comparisonPicture(first.array, second.array)}, {});
  printOut(values.has("--json") ? comparisonJson(comparison, peak) : comparisonText(comparison, peak));
  return isDifferent(comparison, maxError) ? 1 : 0;
}

}  // namespace

Operation compareOperation() {
  return {
      .name = "compare",
      .summary = "Tells how far one picture or array is from another",
      .options = {{.name = "FIRST", .meaning = "Picture or array, the reference", .isRequired = true},
                  {.name = "SECOND", .meaning = "Picture or array of the same extents", .isRequired = true},
                  {.name = "--max-error",
                   .meaning = "Values may differ by up to E; then types and bits do not matter",
                   .form = "E"},
                  {.name = "--peak",
                   .meaning = "Peak value of psnr; default: the greatest sample of a picture",
                   .form = "NUMBER"},
                  {.name = "--overlay",
                   .meaning = "Picture to write: FIRST in grey, differences as a heat map",
                   .form = "OUT"},
                  jsonOption()},
      .details =
          "The exit code is 0 if nothing differs, 1 if a type, a bit or a value differs, and 2 for errors. With\n"
          "--max-error it is 1 if the greatest difference exceeds E.\n"
          "type      the element types; uint8 or uint16 for most pictures\n"
          "bits      how many elements have different bits; not compared if the types differ\n"
          "values    extents, and how many values are different; 0 and -0 are equal, and so are two NaN\n"
          "greatest  the greatest distance and where it lies first, dimension 0 first: X,Y, of colours CHANNEL,X,Y\n"
          "infinite  how many distances are infinite: NaN against a number, or infinity against another value\n"
          "mean      of the second value minus the first: the bias\n"
          "rms       root of the mean of the squared distances\n"
          "psnr      20 log10(peak / rms); left out for two arrays without --peak\n"
          "Samples of pictures are whole numbers from 0; a grey picture can be compared with an array of two "
          "dimensions.\nAll values are compared exactly. The distance of complex values is the magnitude of their "
          "difference.\n",
      .example = "compare reference.npy result.png --max-error 1/2",
      .run = run};
}

}  // namespace BP::tool
