// Starting a program with the machine in it.
#pragma once

#include <windows.h>

#include <filesystem>
#include <optional>
#include <string>

namespace lab {

/// CreateProcessW with inherited handles and the first thread suspended; `program` may be null. Nothing on
/// failure, and GetLastError tells why. The caller closes both handles.
std::optional<PROCESS_INFORMATION> CreateSuspended(const wchar_t* program, const std::wstring& command_line,
                                                   DWORD flags, STARTUPINFOW* startup);

/// Whether the library came into the process and set itself up there.
bool LoadLibraryInto(HANDLE process, const std::filesystem::path& library);

}  // namespace lab
