// Information from the headers of a loaded DLL.
#pragma once

#include <windows.h>

#include <cstddef>

/// The size in bytes of the module's image in memory, which starts at its handle.
std::size_t ImageSize(HMODULE module);

/// The name of the module's export with this ordinal; null when it has none, or there is no such export.
/// Valid as long as the module is loaded.
const char* NameOfExport(HMODULE module, WORD ordinal);
