// The way back from the lines of STEREO WARP COST.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "tools/vistrel_diag/report/line_reading.h"

/// One row of the table. The print loses what is beyond a hundredth of a millisecond and a megabyte.
struct WarpRowReading {
    std::int32_t width = 0;
    std::int32_t height = 0;
    std::string label;
    double gpu_ms = 0.0;
    double vram_mb = 0.0;
    std::uint32_t line = 0;
};

/// Which sizes could not be timed is lost unless a problem names them.
struct WarpReading {
    std::vector<WarpRowReading> rows;
    std::uint32_t header_line = 0;
    std::optional<ReadText> shader_error;  ///< why there is no table; lines separated by line feeds
    std::vector<ReadText> problems;        ///< what kept a size from being timed, less its "!! "
};

/// Empty when no line was understood. Lines that were not are added to `unread`.
std::optional<WarpReading> ReadWarpSection(SourceLines lines, UnreadLines& unread);
