// A host of its own: it blurs frames of several sizes, sharpens lines in fixed point, and prints messages and
// statistics.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "orvane/convcorr/conv_corr_tolk.h"
#include "orvane/platform/karn_fixpt_3_make.h"

namespace {

using KarnDSPFixpt::DSPDataAttributesHandle;
using KarnDSPFixpt::Fixpt;
using KarnDSPFixpt::FixptType;

/// Makes, numbers and keeps the work vectors of its fronts, and takes their messages.
class Host {
 public:
  brekk::BrekkAdaptorTolk* getAdaptor() { return &adaptor; }

  /// A front calls for its vectors by these numbers when it starts. A number of 0 is one that nobody has written.
  void provideVectors(const BP::AllocatorTolk& allocator) {
    for (const auto& [name, record] : allocator.getWorkVectors()) {
      const std::size_t bytes = record->dataTypeId == BP::workVectorBool ? sizeof(bool) : sizeof(int);
      vectors.push_back(std::make_unique<std::byte[]>(bytes * static_cast<std::size_t>(record->width)));
      record->workIndex = static_cast<int>(vectors.size());
      adaptor.bindWork(record->workIndex, vectors.back().get());
    }
  }
  void printMessages() {
    for (const std::string& message : adaptor.messages()) std::printf("message: %s\n", message.c_str());
    adaptor.clearMessages();
  }

 private:
  brekk::BrekkAdaptorTolk adaptor;
  std::vector<std::unique_ptr<std::byte[]>> vectors;
};

struct Frame {
  int width, height;
  std::vector<float> pixels;
};

/// One front for all frames. It reads their extents from `dims` in each run.
void blur(Host& host, const std::vector<Frame>& frames) {
  int filterDims[] = {3, 1}, dims[] = {4, 3};  // width, height
  std::vector<float> filter = {0.25F, 0.5F, 0.25F}, input(12), output(12);
  constexpr bool isVarSize = true;
  BP::ConvCorrTolk<float, float, float> front(host.getAdaptor(), 2, filterDims, 2, dims, BP::PadTypeReplicate,
                                              BP::OutputModeSame, BP::AlgorithmModeCorrelation, BP::NormNone,
                                              isVarSize);
  host.provideVectors(front.getAllocator());
  front.setup(filter.data(), input.data(), output.data(), nullptr, false);
  for (const Frame& frame : frames) {
    if (frame.pixels.size() > input.size()) {  // the front would not notice
      tolkSetErrorStatus(host.getAdaptor(), "a frame has more than 12 pixels");
      continue;
    }
    dims[0] = frame.width;
    dims[1] = frame.height;
    std::ranges::copy(frame.pixels, input.begin());
    front.computeOutputs();
    for (int i = 0; i < frame.width * frame.height; ++i) {
      std::printf("%g%s", output[static_cast<std::size_t>(i)], (i + 1) % frame.width == 0 ? "\n" : " ");
    }
  }
  front.setup(BP::setupFinish);
}

/// An array over `memory`, for a front to take over. The memory stays ours.
template <class T>
Fixpt* arrayOver(std::vector<T>& memory, const DSPDataAttributesHandle& type) {
  auto array = KarnDSPFixpt::makeFixpt(type, 0);
  array->setValPtr(memory.data());
  return array.release();
}

void sharpen(Host& host, const std::vector<std::vector<std::uint8_t>>& lines) {
  const auto typeOf = [&](const char* label, const FixptType& value) {
    const FixptType product{16, 0, value.isSigned};
    return KarnDSPFixpt::makeAttributes({.value = value,
                                         .product = product,
                                         .accumulator = product,
                                         .valueLabel = label,
                                         .adaptor = host.getAdaptor()});
  };
  const auto pixel = typeOf("pixel", {8, 0, false}), weight = typeOf("weight", {8, 0, true}),
             sum = typeOf("sum", {18, 0, true});
  int filterDims[] = {3}, dims[] = {4};
  std::vector<std::int8_t> filter = {-1, 3, -1};
  std::vector<std::uint8_t> input(4), output(4);
  BP::FixptLogMap statistics;  // outlives the front
  BP::ConvCorrTolk<Fixpt, Fixpt, Fixpt> front(host.getAdaptor(), 1, filterDims, 1, dims, BP::PadTypeReplicate,
                                              BP::OutputModeSame, BP::AlgorithmModeCorrelation, BP::NormNone, false,
                                              pixel, pixel, weight, sum);
  host.provideVectors(front.getAllocator());
  front.setFixptLogMap(&statistics);
  front.setup(arrayOver(filter, weight), arrayOver(input, pixel), arrayOver(output, pixel), nullptr, false);
  for (const std::vector<std::uint8_t>& line : lines) {
    std::ranges::copy(line, input.begin());
    front.computeOutputs();
    std::printf("%d %d %d %d\n", output[0], output[1], output[2], output[3]);
  }
  front.setup(BP::setupFinish);
  for (const auto& [label, record] : statistics) {
    const fxpLogStruct_tag& log = *record->getLogStruct();
    if (log.casts > 0) std::printf("%s: %u of %u overflowed\n", label.c_str(), log.overflows, log.casts);
  }
}

}  // namespace

int main() {
  Host host;
  blur(host,
       {{4, 3, {0, 4, 0, 0, 0, 8, 0, 0, 0, 0, 0, 4}}, {3, 2, {8, 0, 0, 0, 0, 8}}, {13, 1, std::vector<float>(13)}});
  sharpen(host, {{10, 20, 200, 10}, {5, 5, 5, 5}});
  host.printMessages();
}
