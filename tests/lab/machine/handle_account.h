// Counts what the program opens and has to close: kernel handles, registry keys and files.
#pragma once

#include <windows.h>

#include <string_view>

namespace lab {

/// The replacement for the function of this name if it opens or closes something; else null.
FARPROC AccountingFunction(std::string_view name);

/// Counts a handle that a function of the machine has returned to the program.
void NoteOpened(void* handle);

/// The number of open handles.
long OpenHandles();

}  // namespace lab
