// Reads the lines of WHAT ELSE WAS RUNNING back into the record.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "tools/vistrel_diag/report/line_reading.h"
#include "tools/vistrel_diag/sections/running_software/running_software_section.h"

/// The record with the line number of each value, 0 when that line is missing. Only the kind of line break in
/// a window title is not in the lines: each is read as a line feed.
struct RunningSoftwareReading {
    RunningSoftwareInfo software;
    std::vector<std::uint32_t> notable_lines;  ///< one for each of the notable programs
    std::uint32_t foreground_line = 0;
    std::uint32_t nothing_notable_line = 0;  ///< of "Nothing notable - ..."
    std::uint32_t warning_line = 0;          ///< of "!! Vistrel IS RUNNING. ..."

    /// Whether the report itself says that the product was running.
    bool VistrelWasRunning() const { return warning_line != 0; }
};

/// How many of `lines` belong to the foreground application, whose window title may contain line breaks and
/// text that looks like a report. 0 when the first line is not its line; 1 when the title has no closing
/// quote.
std::size_t WindowTitleLines(SourceLines lines);

/// Empty when no line was understood. Lines that were not understood are added to `unread`.
std::optional<RunningSoftwareReading> ReadRunningSoftwareSection(SourceLines lines, UnreadLines& unread);
