#include "tests/lab/launcher/process_start.h"

#include "platform/unique_handle.h"

namespace lab {
namespace {

std::optional<PROCESS_INFORMATION> CreateSuspendedOnce(const wchar_t* program, std::wstring command_line,
                                                       DWORD flags, STARTUPINFOW* startup) {
    PROCESS_INFORMATION process = {};
    if (CreateProcessW(program, command_line.data(), nullptr, nullptr, TRUE, flags | CREATE_SUSPENDED,
                       nullptr, nullptr, startup, &process) == FALSE) {
        return {};
    }
    return process;
}

}  // namespace

/// Occasionally a new Wine process ends before it starts, mostly on a busy machine. The program has not run
/// then, and the next attempt starts it.
std::optional<PROCESS_INFORMATION> CreateSuspended(const wchar_t* program, const std::wstring& command_line,
                                                   DWORD flags, STARTUPINFOW* startup) {
    constexpr int kAttempts = 5;
    std::optional<PROCESS_INFORMATION> process = CreateSuspendedOnce(program, command_line, flags, startup);
    for (int i = 1; i < kAttempts && !process && GetLastError() == ERROR_INTERNAL_ERROR; ++i) {
        Sleep(100);
        process = CreateSuspendedOnce(program, command_line, flags, startup);
    }
    return process;
}

bool LoadLibraryInto(HANDLE process, const std::filesystem::path& library) {
    const std::wstring path = library.wstring();
    const std::size_t bytes = (path.size() + 1) * sizeof(wchar_t);
    void* const remote_path =
        VirtualAllocEx(process, nullptr, bytes, MEM_COMMIT | MEM_RESERVE, PAGE_READWRITE);
    if (remote_path == nullptr ||
        WriteProcessMemory(process, remote_path, path.c_str(), bytes, nullptr) == FALSE) {
        return false;
    }
    // kernel32 has the same address in every process.
    const auto load = reinterpret_cast<LPTHREAD_START_ROUTINE>(
        GetProcAddress(GetModuleHandleW(L"kernel32.dll"), "LoadLibraryW"));
    const KernelHandle thread(CreateRemoteThread(process, nullptr, 0, load, remote_path, 0, nullptr));
    if (!thread) {
        return false;
    }
    WaitForSingleObject(thread.get(), INFINITE);
    DWORD loaded = 0;
    GetExitCodeThread(thread.get(), &loaded);
    VirtualFreeEx(process, remote_path, 0, MEM_RELEASE);
    return loaded != 0;
}

}  // namespace lab
