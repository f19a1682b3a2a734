// Replacements for the kernel32 functions that return where the program is.
#pragma once

#include <windows.h>

namespace lab {

DWORD WINAPI SimulatedGetModuleFileNameW(HMODULE module, LPWSTR path, DWORD size);

}  // namespace lab
