// Reads back the report's lines that belong to no section.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "tools/vistrel_diag/report/line_reading.h"
#include "tools/vistrel_diag/report/rescue.h"

/// The report's first lines.
struct OpeningReading {
    std::string version;      ///< version of vistrel_diag, such as "1.0"
    std::string tool_folder;  ///< empty when it was not known
    std::uint32_t version_line = 0;
    std::uint32_t folder_line = 0;
};

/// The line that closes the report of a run that died. Exception, module and offset are set for a crash only.
struct CutShortReading {
    std::string section;  ///< title of the section that the run was in; empty before the first
    RunEnd end = RunEnd::Crash;
    std::uint32_t exception_code = 0;
    std::string module;        ///< the module that crashed; empty when unknown
    std::uint64_t offset = 0;  ///< of the instruction in that module; 0 when unknown
    std::uint32_t line = 0;
};

/// Empty when no line was understood. Lines that were not understood are added to `unread`.
std::optional<OpeningReading> ReadOpeningLines(SourceLines lines, UnreadLines& unread);

/// Empty when `line` is not that line.
std::optional<CutShortReading> ReadCutShortLine(const SourceLine& line);

/// Whether the line is what the report says in place of part 2; other lines are added to `unread`.
bool ReadPartTwoSkipped(SourceLines lines, UnreadLines& unread);
