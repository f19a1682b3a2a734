// Reads back the lines of STEREO WARP COST.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "tools/vistrel_diag/report/line_reading.h"

/// One row of the table. Fractions below a hundredth of a millisecond and below a megabyte are not in the
/// lines.
struct WarpRowReading {
    std::int32_t width = 0;
    std::int32_t height = 0;
    std::string label;
    double gpu_ms = 0.0;
    double vram_mb = 0.0;
    std::uint32_t line = 0;
};

/// A size that could not be timed can be read back only when a problem names it.
struct WarpReading {
    std::vector<WarpRowReading> rows;
    std::uint32_t header_line = 0;
    std::optional<ReadText> shader_error;  ///< why there is no table; lines separated by line feeds
    std::vector<ReadText> problems;        ///< why a size could not be timed, without the leading "!! "
};

/// Empty when no line was understood. Lines that were not understood are added to `unread`.
std::optional<WarpReading> ReadWarpSection(SourceLines lines, UnreadLines& unread);
