#pragma once

#include <utility>

#include "orvane/core/enums.h"
#include "orvane/filters/options.h"

/// The choices that the API for people offers, beside what they mean in the core.
namespace BP::test {

constexpr std::pair<filters::OutputMode, OutputModeEnum> modeChoices[] = {{filters::OutputMode::valid, OutputModeValid},
                                                                          {filters::OutputMode::same, OutputModeSame},
                                                                          {filters::OutputMode::full, OutputModeFull}};
constexpr std::pair<filters::Pad, PadTypeEnum> padChoices[] = {{filters::Pad::constant, PadTypeConstant},
                                                               {filters::Pad::replicate, PadTypeReplicate},
                                                               {filters::Pad::symmetric, PadTypeSymmetric},
                                                               {filters::Pad::circular, PadTypeCircular},
                                                               {filters::Pad::mirror, PadTypeMirror}};
constexpr std::pair<filters::Direction, AlgorithmModeEnum> directionChoices[] = {
    {filters::Direction::convolution, AlgorithmModeConvolution},
    {filters::Direction::correlation, AlgorithmModeCorrelation}};
constexpr std::pair<filters::Normalisation, NormEnum> normChoices[] = {
    {filters::Normalisation::none, NormNone}, {filters::Normalisation::energy, NormWindowEnergy}};

/// Calls `visit` for every choice of mode, pad and direction, set in `problem` and in `options`, whose window fits.
template <class ProblemT, class VisitT>
void forEachChoice(ProblemT& problem, filters::ConvolutionOptions& options, VisitT&& visit) {
  for (const auto& [mode, coreMode] : modeChoices) {
    if (coreMode == OutputModeValid && !problem.windowFits()) continue;
    for (const auto& [pad, corePad] : padChoices) {
      for (const auto& [direction, coreDirection] : directionChoices) {
        options.mode = mode, problem.outputMode = coreMode;
        options.pad = pad, problem.padType = corePad;
        options.direction = direction, problem.algorithmMode = coreDirection;
        visit();
      }
    }
  }
}

}  // namespace BP::test
