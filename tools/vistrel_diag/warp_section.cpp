#include "tools/vistrel_diag/warp_section.h"

#include "platform/format.h"
#include "tools/vistrel_diag/report.h"

std::vector<WarpSize> WarpSizes(std::int32_t desktop_width, std::int32_t desktop_height) {
    std::vector<WarpSize> sizes;
    if (desktop_width != 0 && desktop_height != 0) {
        sizes.push_back({desktop_width, desktop_height, "your desktop (what runs today)"});
    }
    for (const WarpSize& fixed : {WarpSize{2560, 1440, "1440p"}, WarpSize{1920, 1080, "1080p"}}) {
        if (fixed.width != desktop_width || fixed.height != desktop_height) {
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
    if (!timing.ok) {
        return;
    }
    const std::string size_text = FormatText("%dx%d", size.width, size.height);
    Report::Line("%-10s %-32s %10.2f %12.0f", size_text.c_str(), size.label.c_str(), timing.gpu_ms,
                 timing.vram_mb);
}
