#include "tests/lab/machine/desktop_functions.h"

#include <algorithm>
#include <string>

#include "tests/lab/machine/fixed_text.h"
#include "tests/lab/machine/machine.h"

namespace lab {
namespace {

/// The output that a display device belongs to, or null for a device without one.
const OutputState* OutputOfDisplay(std::size_t display) {
    const Machine& machine = TheMachine();
    for (std::size_t i = 0; i < machine.outputs.size(); ++i) {
        if (machine.scenario.outputs[i].display == display) {
            return &machine.outputs[i];
        }
    }
    return nullptr;
}

bool OnDesktop(std::size_t display) {
    const OutputState* const output = OutputOfDisplay(display);
    return TheMachine().scenario.displays[display].attached && !(output != nullptr && output->unplugged);
}

}  // namespace

BOOL WINAPI SimulatedEnumDisplayDevicesW(LPCWSTR device, DWORD index, PDISPLAY_DEVICEW result, DWORD) {
    const std::vector<Display>& displays = TheMachine().scenario.displays;
    // Windows fails if the structure's size is not set; monitors below a device are not simulated.
    if (device != nullptr || result == nullptr || result->cb != sizeof(*result) || index >= displays.size()) {
        return FALSE;
    }
    const Display& display = displays[index];
    *result = {};
    result->cb = sizeof(*result);
    FillText(display.name, result->DeviceName);
    FillText(u"Simulated display", result->DeviceString);
    result->StateFlags = (OnDesktop(index) ? DISPLAY_DEVICE_ATTACHED_TO_DESKTOP : 0U) |
                         (display.primary ? DISPLAY_DEVICE_PRIMARY_DEVICE : 0U) |
                         (display.mirror ? DISPLAY_DEVICE_MIRRORING_DRIVER : 0U);
    return TRUE;
}

BOOL WINAPI SimulatedEnumDisplaySettingsW(LPCWSTR device, DWORD mode_number, LPDEVMODEW mode) {
    if (device == nullptr || mode == nullptr || mode_number != ENUM_CURRENT_SETTINGS ||
        mode->dmSize != sizeof(*mode)) {
        return FALSE;
    }
    const std::vector<Display>& displays = TheMachine().scenario.displays;
    const auto found = std::find_if(displays.begin(), displays.end(), [device](const Display& display) {
        return std::wstring(display.name.begin(), display.name.end()) == device;
    });
    if (found == displays.end() || found->mode_fails) {
        return FALSE;
    }
    const OutputState* const output = OutputOfDisplay(static_cast<std::size_t>(found - displays.begin()));
    const Size size = output != nullptr ? output->size : found->size;
    mode->dmPelsWidth = size.width;
    mode->dmPelsHeight = size.height;
    mode->dmDisplayFrequency = static_cast<DWORD>(found->refresh_rate);
    mode->dmBitsPerPel = 32;
    mode->dmFields = DM_PELSWIDTH | DM_PELSHEIGHT | DM_DISPLAYFREQUENCY | DM_BITSPERPEL;
    return TRUE;
}

BOOL WINAPI SimulatedGetCursorInfo(PCURSORINFO info) {
    const Cursor& cursor = TheMachine().scenario.cursor;
    if (info == nullptr || info->cbSize != sizeof(*info)) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return FALSE;
    }
    if (cursor.query_fails) {
        SetLastError(ERROR_ACCESS_DENIED);
        return FALSE;
    }
    info->flags = cursor.suppressed ? CURSOR_SUPPRESSED : cursor.showing ? CURSOR_SHOWING : 0;
    info->hCursor = cursor.null_handle ? nullptr : LoadCursorW(nullptr, IDC_ARROW);
    info->ptScreenPos = {cursor.x, cursor.y};
    return TRUE;
}

}  // namespace lab
