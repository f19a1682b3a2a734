// The section STEREO WARP COST.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tools/vistrel_diag/sections/capture/capture_measurement.h"
#include "tools/vistrel_diag/sections/displays/display_section.h"
#include "tools/vistrel_diag/sections/warp/warp_timing.h"

/// An eye size to time, and its label in the table.
struct WarpSize {
    std::int32_t width = 0;
    std::int32_t height = 0;
    std::string label;
};

struct DesktopSize {
    std::int32_t width = 0;
    std::int32_t height = 0;
};

/// The size of the captured desktop. Without a capture, the size of the primary display (the last one when
/// there are several). 0 by 0 when there is none.
DesktopSize SizeOfDesktop(const CaptureMeasurement& capture, const std::vector<DisplayInfo>& displays);

/// The sizes to time, in order: the desktop (unless either side is 0), 1440p and 1080p, each size once.
std::vector<WarpSize> WarpSizes(const DesktopSize& desktop);

/// Prints why there is no table; `error` is the shader's error.
void PrintWarpShaderFailure(const std::string& error);

void PrintWarpTableHeader();

/// Prints, to the console only, that the GPU has not answered for LongWait::kSeconds.
void PrintWaitForGpu();

/// Prints what went wrong at one size, one line per failure.
void PrintWarpFailures(const WarpTiming& timing);

void PrintWarpRow(const WarpSize& size, const WarpTiming& timing);

/// Reports STEREO WARP COST, measured on `device`. `context` is its immediate context; `adapter` is the
/// adapter it runs on, null when unknown. The picture is that of `capture`, or the synthetic pattern. Returns
/// the timings that succeeded, in the order of the table.
std::vector<WarpTiming> ReportWarpSection(ID3D11Device* device, ID3D11DeviceContext* context,
                                          IDXGIAdapter1* adapter, const CaptureMeasurement& capture);
