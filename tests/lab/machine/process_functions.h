// What a program on the machine gets in place of the functions of kernel32 that start and end processes.
//
// A child of the program runs on the same machine. It is told its number, from 1, in VISTREL_LAB_PROCESS, and
// writes its counts and calls to files of its own, with ".NUMBER" behind the name.
#pragma once

#include <windows.h>

#include <string>

namespace lab {

/// Whether this process was started by a program on the machine.
bool IsChild();

/// The path with this process's number behind it; as it is in the program itself.
std::wstring OfThisProcess(const std::wstring& path);

/// Writes the counts to the file that VISTREL_LAB_STATISTICS names, and the calls to theirs.
void WriteAccounts();

BOOL WINAPI SimulatedCreateProcessW(LPCWSTR program, LPWSTR command_line, LPSECURITY_ATTRIBUTES process,
                                    LPSECURITY_ATTRIBUTES thread, BOOL inherit, DWORD flags,
                                    LPVOID environment, LPCWSTR folder, LPSTARTUPINFOW startup,
                                    LPPROCESS_INFORMATION information);

/// A program that ends itself well leaves its accounts first, and so does every library in it that has any
/// (its export LabProcessEnds): no DLL is told of such an end.
BOOL WINAPI SimulatedTerminateProcess(HANDLE process, UINT exit_code);

}  // namespace lab
