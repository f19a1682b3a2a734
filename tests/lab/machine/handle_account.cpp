#include "tests/lab/machine/handle_account.h"

// windows.h first
#include <tlhelp32.h>

#include <cstdio>
#include <map>
#include <mutex>
#include <set>

#include "tests/lab/machine/as_proc.h"

namespace lab {
namespace {

struct Account {
    std::mutex mutex;
    std::set<void*> open;
};

/// Never destroyed: the program's other threads may open and close to the very end.
Account& TheAccount() {
    static auto* const account = new Account;
    return *account;
}

/// Hands the handle on, and notes it unless it is `none`.
template <typename Handle>
Handle Opened(Handle handle, Handle none = nullptr) {
    if (handle != none) {
        const std::scoped_lock lock(TheAccount().mutex);
        TheAccount().open.insert(handle);
    }
    return handle;
}

/// Before it is really closed, for Windows may give the same value out again at once.
template <typename Handle>
Handle Closing(Handle handle) {
    const std::scoped_lock lock(TheAccount().mutex);
    TheAccount().open.erase(handle);
    return handle;
}

HANDLE WINAPI CountedCreateToolhelp32Snapshot(DWORD flags, DWORD process) {
    return Opened(CreateToolhelp32Snapshot(flags, process), INVALID_HANDLE_VALUE);
}

HANDLE WINAPI CountedOpenProcess(DWORD access, BOOL inherited, DWORD process) {
    return Opened(OpenProcess(access, inherited, process));
}

HANDLE WINAPI CountedCreateFileW(LPCWSTR name, DWORD access, DWORD share, LPSECURITY_ATTRIBUTES security,
                                 DWORD disposition, DWORD attributes, HANDLE model) {
    return Opened(CreateFileW(name, access, share, security, disposition, attributes, model),
                  INVALID_HANDLE_VALUE);
}

HANDLE WINAPI CountedCreateThread(LPSECURITY_ATTRIBUTES security, SIZE_T stack, LPTHREAD_START_ROUTINE start,
                                  LPVOID parameter, DWORD flags, LPDWORD id) {
    return Opened(CreateThread(security, stack, start, parameter, flags, id));
}

BOOL WINAPI CountedCloseHandle(HANDLE handle) {
    return CloseHandle(Closing(handle));
}

LSTATUS WINAPI CountedRegOpenKeyExW(HKEY parent, LPCWSTR path, DWORD options, REGSAM access, PHKEY key) {
    const LSTATUS result = RegOpenKeyExW(parent, path, options, access, key);
    if (result == ERROR_SUCCESS) {
        Opened(*key);
    }
    return result;
}

LSTATUS WINAPI CountedRegCloseKey(HKEY key) {
    return RegCloseKey(Closing(key));
}

std::FILE* CountedWfopen(const wchar_t* name, const wchar_t* mode) {
    return Opened(_wfopen(name, mode));
}

int CountedFclose(std::FILE* file) {
    return std::fclose(Closing(file));
}

}  // namespace

FARPROC AccountingFunction(std::string_view name) {
    static const std::map<std::string_view, FARPROC> functions = {
        {"CreateToolhelp32Snapshot", AsProc(&CountedCreateToolhelp32Snapshot)},
        {"OpenProcess", AsProc(&CountedOpenProcess)},
        {"CreateFileW", AsProc(&CountedCreateFileW)},
        {"CreateThread", AsProc(&CountedCreateThread)},
        {"CloseHandle", AsProc(&CountedCloseHandle)},
        {"RegOpenKeyExW", AsProc(&CountedRegOpenKeyExW)},
        {"RegCloseKey", AsProc(&CountedRegCloseKey)},
        {"_wfopen", AsProc(&CountedWfopen)},
        {"fclose", AsProc(&CountedFclose)},
    };
    const auto found = functions.find(name);
    return found != functions.end() ? found->second : nullptr;
}

long OpenHandles() {
    const std::scoped_lock lock(TheAccount().mutex);
    return static_cast<long>(TheAccount().open.size());
}

}  // namespace lab
