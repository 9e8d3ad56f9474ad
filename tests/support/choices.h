#pragma once

#include <utility>

#include "orvane/core/enums.h"
#include "orvane/filters/options.h"

/// The choices that the API for people offers, beside what they mean in the core.
namespace BP::test {

constexpr std::pair<filters::OutputMode, OutputModeEnum> modeChoices[] = {{filters::OutputMode::valid, OutputModeValid},
                                                                          {filters::OutputMode::same, OutputModeSame},
                                                                          {filters::OutputMode::full, OutputModeFull}};
constexpr std::pair<filters::PadRule, PadTypeEnum> padChoices[] = {{filters::PadRule::constant, PadTypeConstant},
                                                                   {filters::PadRule::replicate, PadTypeReplicate},
                                                                   {filters::PadRule::symmetric, PadTypeSymmetric},
                                                                   {filters::PadRule::circular, PadTypeCircular},
                                                                   {filters::PadRule::mirror, PadTypeMirror}};
constexpr std::pair<filters::FilterDirection, AlgorithmModeEnum> directionChoices[] = {
    {filters::FilterDirection::convolution, AlgorithmModeConvolution},
    {filters::FilterDirection::correlation, AlgorithmModeCorrelation}};
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
        options.pad.rule = pad, problem.padType = corePad;
        options.direction = direction, problem.algorithmMode = coreDirection;
        visit();
      }
    }
  }
}

}  // namespace BP::test
