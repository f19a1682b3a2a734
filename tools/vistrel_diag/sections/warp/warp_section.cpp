#include "tools/vistrel_diag/sections/warp/warp_section.h"

#include "platform/format.h"
#include "tools/vistrel_diag/report/console.h"
#include "tools/vistrel_diag/report/report.h"
#include "tools/vistrel_diag/sections/warp/long_wait.h"

DesktopSize SizeOfDesktop(const CaptureMeasurement& capture, const std::vector<DisplayInfo>& displays) {
    if (capture.ok) {
        return {static_cast<std::int32_t>(capture.width), static_cast<std::int32_t>(capture.height)};
    }
    DesktopSize size;
    for (const DisplayInfo& display : displays) {
        if (display.primary) {
            size = {display.width, display.height};
        }
    }
    return size;
}

std::vector<WarpSize> WarpSizes(const DesktopSize& desktop) {
    std::vector<WarpSize> sizes;
    if (desktop.width != 0 && desktop.height != 0) {
        sizes.push_back({desktop.width, desktop.height, "your desktop (what runs today)"});
    }
    for (const WarpSize& fixed : {WarpSize{2560, 1440, "1440p"}, WarpSize{1920, 1080, "1080p"}}) {
        if (fixed.width != desktop.width || fixed.height != desktop.height) {
            sizes.push_back(fixed);
        }
    }
    return sizes;
}

void PrintWarpShaderFailure(const std::string& error) {
    Report::Line("!! stereo_warp.hlsl could not be compiled: %s", error.c_str());
    Report::Line("!! Put this exe in the Vistrel install folder, next to the vistrel\\ directory.");
}

void PrintWarpTableHeader() {
    Report::Line("%-10s %-32s %10s %12s", "SIZE", "", "GPU ms", "VRAM MB");
}

namespace {

void PrintDepthMapFailure(const DepthMapFailure& failure) {
    if (failure.result) {
        Report::Line("!! shader compile failed: CreatePixelShader failed (0x%08X)", *failure.result);
    } else {
        Report::Line("!! shader compile failed: %s", failure.compiler_message.c_str());
    }
}

void PrintStop(WarpStop stop, std::int32_t width, std::int32_t height) {
    switch (stop) {
        case WarpStop::ColourTexture:
            Report::Line("!! could not create the %dx%d colour texture (out of VRAM?)", width, height);
            break;
        case WarpStop::DepthTexture:
            Report::Line("!! could not create the %dx%d depth texture", width, height);
            break;
        case WarpStop::LeftEyeTarget:
        case WarpStop::RightEyeTarget:
            Report::Line("!! could not create eye target %d at %dx%d",
                         stop == WarpStop::LeftEyeTarget ? 0 : 1, width, height);
            break;
        case WarpStop::VertexShader:
            Report::Line("!! vertex shader failed to compile");
            break;
        case WarpStop::NoUsableTime:
            Report::Line("!! GPU timing produced nothing usable at %dx%d", width, height);
            break;
    }
}

}  // namespace

void PrintWaitForGpu() {
    ConsolePrint(
        "%35s\rThe GPU has not answered for %.0f seconds. The tool still waits for it;\n"
        "Ctrl-C ends the run and keeps the report.\n",
        "", LongWait::kSeconds);
    FlushConsole();
}

void PrintWarpFailures(const WarpTiming& timing) {
    if (timing.depth_map_failure) {
        PrintDepthMapFailure(*timing.depth_map_failure);
    }
    if (timing.failure) {
        PrintStop(timing.failure->stop, timing.width, timing.height);
    }
}

void PrintWarpRow(const WarpSize& size, const WarpTiming& timing) {
    const std::string size_text = FormatText("%dx%d", size.width, size.height);
    Report::Line("%-10s %-32s %10.2f %12.0f", size_text.c_str(), size.label.c_str(), timing.gpu_ms,
                 timing.vram_mb);
}
