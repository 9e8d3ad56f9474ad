#pragma once

#include <string_view>

#include "orvane/core/enums.h"
#include "orvane/filters/options.h"

/// The output modes and the pads, by the names of the core's lists.
namespace BP::tool {

struct ModeRow {
  std::string_view name;
  OutputModeEnum number;  ///< what plans call it
  filters::OutputMode mode;
};
inline constexpr ModeRow modeTable[] = {{outputModes[0].name, outputModes[0].value, filters::OutputMode::valid},
                                        {outputModes[1].name, outputModes[1].value, filters::OutputMode::same},
                                        {outputModes[2].name, outputModes[2].value, filters::OutputMode::full}};

struct PadRow {
  std::string_view name;
  PadTypeEnum number;  ///< what plans call it
  filters::PadRule pad;
  std::string_view diagram;  ///< what stands before, in and behind an input of a few elements
};
#define ORVANE_ROW(number, enumerator, name, letters) {#name, enumerator, filters::PadRule::name, letters},
inline constexpr PadRow padTable[] = {ORVANE_FOR_PAD_TYPES(ORVANE_ROW)};
#undef ORVANE_ROW

}  // namespace BP::tool
