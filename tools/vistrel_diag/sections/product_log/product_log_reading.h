// Reads back the lines of WHAT VISTREL ITSELF LOGGED LAST RUN.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "tools/vistrel_diag/report/line_reading.h"

/// Of the log itself, only the quoted lines can be read back.
struct ProductLogReading {
    std::string path;  ///< of the log; empty when the report does not name it
    std::vector<ReadText> quoted;
    std::uint32_t path_line = 0;
    std::uint32_t no_log_line = 0;            ///< of "No log at ..."
    std::uint32_t nothing_relevant_line = 0;  ///< of "The log exists but carries none ..."
    std::uint32_t broke_off_line = 0;         ///< of "  !! The file could not be read to its end."
};

/// Empty when no line was understood. Lines that were not understood are added to `unread`.
std::optional<ProductLogReading> ReadProductLogSection(SourceLines lines, UnreadLines& unread);
