// Reads the lines of DISPLAYS back into records.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "tools/vistrel_diag/report/line_reading.h"
#include "tools/vistrel_diag/sections/displays/display_section.h"

/// One monitor, with what its line says about the GPU. Blanks at the end of a short name cannot be read back.
struct ReadDisplay {
    DisplayInfo display;
    std::string gpu_name;  ///< "UNKNOWN" when no GPU claims it
    std::uint32_t line = 0;
};

struct DisplayReading {
    std::vector<ReadDisplay> displays;
    std::uint32_t primary_note_line = 0;  ///< of "(* = primary. ..."
};

/// Empty when no line was understood. Lines that were not understood are added to `unread`.
std::optional<DisplayReading> ReadDisplaySection(SourceLines lines, UnreadLines& unread);
