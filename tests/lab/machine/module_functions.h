// What a program on the machine gets in place of the functions of kernel32 that tell where it lies.
#pragma once

#include <windows.h>

namespace lab {

DWORD WINAPI SimulatedGetModuleFileNameW(HMODULE module, LPWSTR path, DWORD size);

}  // namespace lab
