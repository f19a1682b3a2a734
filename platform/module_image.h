// What a loaded DLL says of itself.
#pragma once

#include <windows.h>

#include <cstddef>

/// Bytes of memory that the module takes, from its handle on.
std::size_t ImageSize(HMODULE module);

/// The name of the module's export with this ordinal; null when it has none, or there is no such export.
/// Lives as long as the module.
const char* NameOfExport(HMODULE module, WORD ordinal);
