// Keeps account of what the program opens in Windows and has to close again: kernel handles, registry keys
// and files.
#pragma once

#include <windows.h>

#include <string_view>

namespace lab {

/// What the program calls in place of the function of this name, when that opens or closes; else null.
FARPROC AccountingFunction(std::string_view name);

/// The program has got this handle from a function of the machine's.
void NoteOpened(void* handle);

/// How much is open now.
long OpenHandles();

}  // namespace lab
