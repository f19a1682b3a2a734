// The section STEREO WARP COST.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tools/vistrel_diag/warp_timing.h"

/// An eye size to time and what the table calls it.
struct WarpSize {
    std::int32_t width = 0;
    std::int32_t height = 0;
    std::string label;
};

/// The sizes to time, in order: the desktop (unless either side is 0), 1440p and 1080p, none of them twice.
std::vector<WarpSize> WarpSizes(std::int32_t desktop_width, std::int32_t desktop_height);

/// Why there is no table: `error` is the shader's.
void PrintWarpShaderFailure(const std::string& error);

void PrintWarpTableHeader();

/// One row of the table; nothing when the timing is not ok.
void PrintWarpRow(const WarpSize& size, const WarpTiming& timing);
