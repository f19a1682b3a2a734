// Reads the lines of PER-APP GPU OVERRIDES back into the record.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "tools/vistrel_diag/report/line_reading.h"
#include "tools/vistrel_diag/sections/gpu_overrides/gpu_override_section.h"

/// Not in the lines: the pins of other applications, and where an application's name ends when the choice
/// contains " = ".
struct GpuOverrideReading {
    std::optional<std::vector<GpuPreference>> preferences;  ///< empty when nothing was ever pinned
    std::vector<std::uint32_t> lines;                       ///< one for each of preferences
    std::uint32_t none_set_line = 0;                        ///< of "None set."
    std::uint32_t none_relevant_line = 0;                   ///< of "Nothing set for Vistrel or SteamVR ..."
    std::uint32_t explanation_line = 0;                     ///< of "(GpuPreference=1 means ..."
};

/// Empty when no line was understood. Lines that were not understood are added to `unread`.
std::optional<GpuOverrideReading> ReadGpuOverrideSection(SourceLines lines, UnreadLines& unread);
