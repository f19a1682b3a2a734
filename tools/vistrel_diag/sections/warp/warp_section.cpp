#include "tools/vistrel_diag/sections/warp/warp_section.h"

#include "platform/format.h"
#include "tools/vistrel_diag/report/report.h"

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

void PrintWarpRow(const WarpSize& size, const WarpTiming& timing) {
    const std::string size_text = FormatText("%dx%d", size.width, size.height);
    Report::Line("%-10s %-32s %10.2f %12.0f", size_text.c_str(), size.label.c_str(), timing.gpu_ms,
                 timing.vram_mb);
}
