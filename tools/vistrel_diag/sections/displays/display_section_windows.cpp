#include <windows.h>

#include <optional>
#include <utility>

#include "platform/utf8.h"
#include "tools/vistrel_diag/report/report.h"
#include "tools/vistrel_diag/sections/displays/display_section.h"

static_assert(sizeof(DEVMODEW) == 220, "the size that Windows knows the mode by");

namespace {

std::optional<DEVMODEW> CurrentMode(const DISPLAY_DEVICEW& device) {
    DEVMODEW mode = {};
    mode.dmSize = sizeof(mode);
    if (EnumDisplaySettingsW(device.DeviceName, ENUM_CURRENT_SETTINGS, &mode) == FALSE) {
        return std::nullopt;
    }
    return mode;
}

DisplayInfo Describe(const DISPLAY_DEVICEW& device, const DEVMODEW& mode) {
    DisplayInfo display;
    display.name = Utf8FromWideArray(device.DeviceName);
    display.width = static_cast<std::int32_t>(mode.dmPelsWidth);
    display.height = static_cast<std::int32_t>(mode.dmPelsHeight);
    display.refresh_hz = static_cast<std::int32_t>(mode.dmDisplayFrequency);
    display.primary = (device.StateFlags & DISPLAY_DEVICE_PRIMARY_DEVICE) != 0;
    return display;
}

}  // namespace

std::vector<DisplayInfo> ProbeDisplays() {
    std::vector<DisplayInfo> displays;
    for (DWORD i = 0;; ++i) {
        DISPLAY_DEVICEW device = {};
        device.cb = sizeof(device);
        if (EnumDisplayDevicesW(nullptr, i, &device, 0) == FALSE) {
            return displays;
        }
        // Mirror drivers and outputs without a monitor are devices too, but not part of the desktop.
        if ((device.StateFlags & DISPLAY_DEVICE_ATTACHED_TO_DESKTOP) == 0) {
            continue;
        }
        if (const std::optional<DEVMODEW> mode = CurrentMode(device)) {
            displays.push_back(Describe(device, *mode));
        }
    }
}

void ReportDisplaySection() {
    Report::Section("DISPLAYS  (this is what the warp resolution comes from)");
    std::vector<DisplayInfo> displays = ProbeDisplays();
    MatchDisplaysWithGpus(displays, GpuList());
    PrintDisplaySection(displays, GpuList());
    SetDisplayList(std::move(displays));
}
