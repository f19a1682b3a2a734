// Starts a program with the machine loaded.
#pragma once

#include <windows.h>

#include <filesystem>
#include <optional>
#include <string>

namespace lab {

/// CreateProcessW with inherited handles and the first thread suspended; `program` may be null. Returns
/// nothing on failure, with the reason in GetLastError. The caller closes both handles.
std::optional<PROCESS_INFORMATION> CreateSuspended(const wchar_t* program, const std::wstring& command_line,
                                                   DWORD flags, STARTUPINFOW* startup);

/// Loads the library into the process. Returns whether it is loaded and has set itself up.
bool LoadLibraryInto(HANDLE process, const std::filesystem::path& library);

}  // namespace lab
