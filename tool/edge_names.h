#pragma once

#include <string_view>

#include "orvane/core/enums.h"
#include "orvane/filters/options.h"

/// The names of output modes and pads, in one table each.
namespace BP::tool {

struct ModeRow {
  std::string_view name;
  filters::OutputMode mode;
  OutputModeEnum number;  ///< what plans call it
};
inline constexpr ModeRow modeTable[] = {{"valid", filters::OutputMode::valid, OutputModeValid},
                                        {"same", filters::OutputMode::same, OutputModeSame},
                                        {"full", filters::OutputMode::full, OutputModeFull}};

struct PadRow {
  std::string_view name;
  filters::Pad pad;
  PadTypeEnum number;        ///< what plans call it
  std::string_view diagram;  ///< what the input a b c yields beyond its edges
};
inline constexpr PadRow padTable[] = {{"constant", filters::Pad::constant, PadTypeConstant, "v v v | a b c | v v v"},
                                      {"replicate", filters::Pad::replicate, PadTypeReplicate, "a a a | a b c | c c c"},
                                      {"symmetric", filters::Pad::symmetric, PadTypeSymmetric, "c b a | a b c | c b a"},
                                      {"circular", filters::Pad::circular, PadTypeCircular, "a b c | a b c | a b c"}};

}  // namespace BP::tool
