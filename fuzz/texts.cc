// Texts that people type or keep in files: kernels, matrices, extents, pads, types, plans, headers, arguments. Each is
// refused with an error, or read; what can be written again must read as the same.
#include <cmath>
#include <optional>
#include <string>
#include <vector>

#include "fuzz/byte_source.h"
#include "fuzz/memory_file.h"
#include "fuzz/target.h"
#include "tool/command_line.h"
#include "tool/exif.h"
#include "tool/file_kind.h"
#include "tool/fixed_types.h"
#include "tool/json.h"
#include "tool/kernel.h"
#include "tool/matrix_text.h"
#include "tool/npy_header.h"
#include "tool/operations.h"
#include "tool/option_values.h"
#include "tool/picture.h"
#include "tool/plan_text.h"
#include "tool/text.h"

namespace {

using namespace BP::tool;
using BP::fuzz::require;

std::span<const std::uint8_t> bytesOf(const std::string& text) {
  return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

void checkKernel(const FilterKernel& kernel) {
  require(
      kernel.width > 0 && kernel.height > 0 && kernel.width <= maxKernelSide && kernel.height <= maxKernelSide &&
          kernel.elements.size() == static_cast<std::size_t>(kernel.width) * static_cast<std::size_t>(kernel.height),
      "a kernel has other sides than elements");
  for (const double element : kernel.elements) require(std::isfinite(element), "a kernel has an infinite element");
}

/// Names in the text must not lead to devices, which have no end.
bool isLocal(const std::string& text) { return text.find('/') == std::string::npos; }

void readKernel(const std::string& text) {
  if (isLocal(text)) checkKernel(parseKernel(text, 0.75));
}
void readLine(const std::string& text) {
  if (isLocal(text)) checkKernel(parseLine(text, "-r"));
}
void readMatrixText(const std::string& text) { checkKernel(parseMatrix(text, ';', "kernel", "row")); }
void readMatrixFile(const std::string& text) { checkKernel(readMatrix(BP::fuzz::MemoryFile(bytesOf(text)).path())); }

void readFixed(const std::string& text) {
  static const FixedRoleNames roles{{"input", "filter", "accumulator"}, {"output", "product", "sqrt"}};
  for (const auto& [role, type] : parseFixedEntries(text, roles).types) {
    require(BP::filters::fixedType(toText(type)) == type, "a type differs from its text");
  }
}
void readType(const std::string& text) {
  const BP::filters::FixedType type = BP::filters::fixedType(text);
  require(BP::filters::fixedType(toText(type)) == type, "a type differs from its text");
}

void readExtents(const std::string& text) {
  const std::vector<int> extents = parseExtents(text, "--size");
  require(parseExtents(extentsText(extents), "--size") == extents, "extents differ from their text");
}
void readBox(const std::string& text) {
  const PositionBox box = parseBox(text, "--box");
  require(box.first.size() == box.extents.size(), "a box has other ranks");
}
void readNumber(const std::string& text) {
  const double number = parseNumber(text, "number");
  require(std::isfinite(number) && parseNumber(numberText(number), "number") == number, "a number differs");
}
void readWhole(const std::string& text) {
  const int number = parseWhole(text, -50, 70000, "number");
  require(number >= -50 && number <= 70000, "a number is out of its range");
}

Values valuesOf(const std::string& text, const std::vector<std::string>& names) {
  Values values;
  const auto parts = split(text, '|');
  for (std::size_t i = 0; i < names.size() && i < parts.size(); ++i) {
    if (!parts[i].empty()) values.set(names[i], std::string(parts[i]));
  }
  return values;
}
void readPad(const std::string& text) {
  const Values values = valuesOf(text, {"--pad", "--mode", "--threads"});
  if (values.has("--pad")) padOf(values);
  if (values.has("--mode")) modeOf(values);
  if (values.has("--threads")) require(threadsOf(values) >= 0, "a negative number of threads");
}
void readPlan(const std::string& text) {
  const Values values = valuesOf(text, {"--input", "--window", "--mode", "--pad", "--roi", "--reach"});
  BP::PlanRequest request;
  if (values.has("--input")) request.input = parseExtents(values["--input"], "--input");
  if (values.has("--window")) request.window = parseExtents(values["--window"], "--window");
  if (values.has("--mode")) request.mode = modeOf(values).number;
  if (values.has("--pad")) request.pad = padOf(values).row->number;
  if (values.has("--reach")) request.reach = parseWhole(values["--reach"], 0, 2, "--reach");
  if (values.has("--roi")) {
    const PositionBox region = parseBox(values["--roi"], "--roi");
    request.region = BP::PlanRegion{region.first, region.extents};
  }
  const BP::PlanDescription plan = BP::describePlan(request);
  require(outputsOf(plan) >= 0, "a negative number of outputs");
  require(!planText(request, plan, "").empty() && !planJson(request, plan, "").empty(), "no text of a plan");
}

void readArguments(const std::string& text) {
  std::vector<std::string> words;
  for (const std::string_view word : split(text, '\n')) words.emplace_back(word);
  const Operation& operation = operationNamed(words.front());
  parseArguments(operation, {words.begin() + 1, words.end()});
}

void readNpyHeader(const std::string& text) {
  const NpyHeader header = parseNpyHeader(text, "header");
  const NpyHeader again = parseNpyHeader(npyHeaderText(header), "header");
  require(again.type == header.type && again.order == header.order && again.isFortran == header.isFortran &&
              again.shape == header.shape,
          "a header differs from its text");
}
void readExifData(const std::string& text) {
  const ExifNotes notes = readExif(bytesOf(text));
  require(notes.orientation >= 1 && notes.orientation <= 8, "an orientation out of its range");
}
void readAxes(const std::string& text) {
  PictureHeader header;
  header.format = FileFormat::npy;
  header.arrayExtents = {3, 4, 5, 6};
  nameAxes(header, text);
  require(header.width * header.height * header.pages * header.channels == 3 * 4 * 5 * 6, "axes have other elements");
}

bool isPrintable(const std::string& text) {
  for (const char c : text) {
    if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F) return false;
  }
  return true;
}
void write(const std::string& text) {
  require(isPrintable(legible(text)) && isPrintable(inQuotes(text)), "a text is not on one line of characters");
  require(legible(legible(text)) == legible(text), "what is legible is not left alone");
  const std::string json = jsonOf(std::string_view(text));
  require(validUtf8(json) == json, "a text in JSON is not UTF-8");
  for (const char c : json) {
    require(static_cast<unsigned char>(c) >= 0x20, "a text in JSON has a control character");
  }
  suggestion(text.substr(0, 40), {"--kernel", "--pad", "convolve", "--checksum"});
  otherKind(text);
  trimmed(lowered(text));
}

void (*const readers[])(const std::string&) = {
    readKernel, readLine, readMatrixText, readMatrixFile, readFixed,     readType,     readExtents, readBox, readNumber,
    readWhole,  readPad,  readPlan,       readArguments,  readNpyHeader, readExifData, readAxes,    write};

}  // namespace

/// The first byte, a letter from A on, chooses what the others are taken for.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  const std::string text(reinterpret_cast<const char*>(data) + 1, size - 1);
  const auto choice = static_cast<std::size_t>(static_cast<std::uint8_t>(*data - 'A'));
  BP::fuzz::allowRefusal([&] { readers[choice % std::size(readers)](text); });
  return 0;
}
