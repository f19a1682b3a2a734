// Replacements for the user32 functions with these names.
#pragma once

#include <windows.h>

namespace lab {

BOOL WINAPI SimulatedEnumDisplayDevicesW(LPCWSTR device, DWORD index, PDISPLAY_DEVICEW result, DWORD flags);
BOOL WINAPI SimulatedEnumDisplaySettingsW(LPCWSTR device, DWORD mode_number, LPDEVMODEW mode);
BOOL WINAPI SimulatedGetCursorInfo(PCURSORINFO info);

}  // namespace lab
