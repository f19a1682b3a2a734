// The way back from the lines of WHAT ELSE WAS RUNNING to the record.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "tools/vistrel_diag/report/line_reading.h"
#include "tools/vistrel_diag/sections/running_software/running_software_section.h"

/// The record with the line that each value stands on, 0 when that line is missing. The print loses nothing
/// but the line breaks in a window title, which are read as a line feed each.
struct RunningSoftwareReading {
    RunningSoftwareInfo software;
    std::vector<std::uint32_t> notable_lines;  ///< one for each of the notable programs
    std::uint32_t foreground_line = 0;
    std::uint32_t nothing_notable_line = 0;  ///< of "Nothing notable - ..."
    std::uint32_t warning_line = 0;          ///< of "!! Vistrel IS RUNNING. ..."

    /// Whether the report itself says that the product was running.
    bool VistrelWasRunning() const { return warning_line != 0; }
};

/// How many of `lines` the foreground application takes, whose window title may hold line breaks and anything
/// that looks like a report. 0 when the first of them is not its line; 1 when the title is never closed.
std::size_t WindowTitleLines(SourceLines lines);

/// Empty when no line was understood. Lines that were not are added to `unread`.
std::optional<RunningSoftwareReading> ReadRunningSoftwareSection(SourceLines lines, UnreadLines& unread);
