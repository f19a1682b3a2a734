// Replacements for the kernel32 functions that start and end processes.
//
// A child of the program runs on the same machine. VISTREL_LAB_PROCESS contains its number, from 1. It writes
// its counts and calls to its own files, whose names end in ".NUMBER".
#pragma once

#include <windows.h>

#include <string>

namespace lab {

/// Whether this process was started by a program on the machine.
bool IsChild();

/// The path with this process's number appended; unchanged in the program itself.
std::wstring OfThisProcess(const std::wstring& path);

/// Writes the counts to the file that VISTREL_LAB_STATISTICS names, and the calls to theirs.
void WriteAccounts();

BOOL WINAPI SimulatedCreateProcessW(LPCWSTR program, LPWSTR command_line, LPSECURITY_ATTRIBUTES process,
                                    LPSECURITY_ATTRIBUTES thread, BOOL inherit, DWORD flags,
                                    LPVOID environment, LPCWSTR folder, LPSTARTUPINFOW startup,
                                    LPPROCESS_INFORMATION information);

/// Before a program terminates itself, it writes its counts, and so does every library in it that has any
/// (its export LabProcessEnds): Windows does not notify DLLs of such an end.
BOOL WINAPI SimulatedTerminateProcess(HANDLE process, UINT exit_code);

}  // namespace lab
