// The section STEREO WARP COST.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tools/vistrel_diag/sections/capture/capture_measurement.h"
#include "tools/vistrel_diag/sections/displays/display_section.h"
#include "tools/vistrel_diag/sections/warp/warp_timing.h"

/// An eye size to time and what the table calls it.
struct WarpSize {
    std::int32_t width = 0;
    std::int32_t height = 0;
    std::string label;
};

struct DesktopSize {
    std::int32_t width = 0;
    std::int32_t height = 0;
};

/// The size of the captured desktop; without a capture that of the primary display, the last one when several
/// are; 0 by 0 when there is none.
DesktopSize SizeOfDesktop(const CaptureMeasurement& capture, const std::vector<DisplayInfo>& displays);

/// The sizes to time, in order: the desktop (unless either side is 0), 1440p and 1080p, none of them twice.
std::vector<WarpSize> WarpSizes(const DesktopSize& desktop);

/// Why there is no table: `error` is the shader's.
void PrintWarpShaderFailure(const std::string& error);

void PrintWarpTableHeader();

/// Tells the person at the console alone that the GPU has not answered for LongWait::kSeconds.
void PrintWaitForGpu();

/// What went wrong at a size, in a line each.
void PrintWarpFailures(const WarpTiming& timing);

void PrintWarpRow(const WarpSize& size, const WarpTiming& timing);

/// Reports STEREO WARP COST on `device`, with `context` its immediate context and `adapter` the one it runs
/// on, null when unknown. The picture is that of `capture`, or the synthetic pattern. Returns the timings
/// that succeeded, in the order of the table.
std::vector<WarpTiming> ReportWarpSection(ID3D11Device* device, ID3D11DeviceContext* context,
                                          IDXGIAdapter1* adapter, const CaptureMeasurement& capture);
