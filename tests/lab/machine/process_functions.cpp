#include "tests/lab/machine/process_functions.h"

// windows.h first
#include <tlhelp32.h>

#include <atomic>

#include "tests/lab/console/console_functions.h"
#include "tests/lab/launcher/process_start.h"
#include "tests/lab/machine/fault_points.h"
#include "tests/lab/machine/handle_account.h"
#include "tests/lab/machine/machine.h"
#include "tests/lab/machine/statistics.h"

namespace lab {
namespace {

constexpr const wchar_t* kProcessVariable = L"VISTREL_LAB_PROCESS";

std::wstring EnvironmentText(const wchar_t* name) {
    std::wstring text(32768, L'\0');
    text.resize(GetEnvironmentVariableW(name, text.data(), static_cast<DWORD>(text.size())));
    return text;
}

std::wstring PathOf(HMODULE module) {
    std::wstring path(32768, L'\0');
    path.resize(GetModuleFileNameW(module, path.data(), static_cast<DWORD>(path.size())));
    return path;
}

HMODULE MachineModule() {
    HMODULE module = nullptr;
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                       reinterpret_cast<LPCWSTR>(&MachineModule), &module);
    return module;
}

/// Set in the environment that a child inherits while it is being started.
class ChildNumber {
  public:
    ChildNumber() {
        static std::atomic<int> children = 0;
        SetEnvironmentVariableW(kProcessVariable, std::to_wstring(++children).c_str());
    }
    ChildNumber(const ChildNumber&) = delete;
    ChildNumber& operator=(const ChildNumber&) = delete;
    ~ChildNumber() { SetEnvironmentVariableW(kProcessVariable, own_.empty() ? nullptr : own_.c_str()); }

  private:
    std::wstring own_ = EnvironmentText(kProcessVariable);
};

void TellLibraries() {
    HANDLE const snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPMODULE, GetCurrentProcessId());
    MODULEENTRY32W entry = {};
    entry.dwSize = sizeof(entry);
    for (BOOL more = Module32FirstW(snapshot, &entry); more != FALSE;
         more = Module32NextW(snapshot, &entry)) {
        const auto ends = reinterpret_cast<void (*)()>(GetProcAddress(entry.hModule, "LabProcessEnds"));
        if (ends != nullptr) {
            ends();
        }
    }
    CloseHandle(snapshot);
}

}  // namespace

bool IsChild() {
    return !EnvironmentText(kProcessVariable).empty();
}

std::wstring OfThisProcess(const std::wstring& path) {
    const std::wstring number = EnvironmentText(kProcessVariable);
    return number.empty() ? path : path + L"." + number;
}

void WriteAccounts() {
    WriteCalls();
    const std::wstring path = EnvironmentText(L"VISTREL_LAB_STATISTICS");
    if (path.empty()) {
        return;
    }
    const std::string text = StatisticsText();
    HANDLE const file = CreateFileW(OfThisProcess(path).c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                                    FILE_ATTRIBUTE_NORMAL, nullptr);
    DWORD written = 0;
    WriteFile(file, text.data(), static_cast<DWORD>(text.size()), &written, nullptr);
    CloseHandle(file);
}

BOOL WINAPI SimulatedCreateProcessW(LPCWSTR program, LPWSTR command_line, LPSECURITY_ATTRIBUTES process,
                                    LPSECURITY_ATTRIBUTES thread, BOOL inherit, DWORD flags,
                                    LPVOID environment, LPCWSTR folder, LPSTARTUPINFOW startup,
                                    LPPROCESS_INFORMATION information) {
    if (process != nullptr || thread != nullptr || inherit == FALSE || environment != nullptr ||
        folder != nullptr) {  // Not used by the program so far.
        SetLastError(ERROR_NOT_SUPPORTED);
        return FALSE;
    }
    const ChildNumber number;
    const bool told_otherwise = !TheMachine().scenario.program_path.empty();
    const std::wstring really = PathOf(nullptr);
    const std::optional<PROCESS_INFORMATION> started =
        CreateSuspended(told_otherwise ? really.c_str() : program, command_line, flags, startup);
    if (!started) {
        return FALSE;
    }
    if (!LoadLibraryInto(started->hProcess, PathOf(MachineModule()))) {
        TerminateProcess(started->hProcess, 1);
    }
    if ((flags & CREATE_SUSPENDED) == 0) {
        ResumeThread(started->hThread);
    }
    *information = *started;
    NoteOpened(started->hProcess);
    NoteOpened(started->hThread);
    return TRUE;
}

BOOL WINAPI SimulatedTerminateProcess(HANDLE process, UINT exit_code) {
    if (GetProcessId(process) == GetCurrentProcessId()) {
        if (exit_code == 0) {
            TellLibraries();
            TellConsoleOfEnd();
            WriteAccounts();
        } else {
            WriteCalls();  // What is still open in a process that gives up is not counted.
        }
    }
    return TerminateProcess(process, exit_code);
}

}  // namespace lab
