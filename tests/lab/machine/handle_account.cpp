#include "tests/lab/machine/handle_account.h"

// windows.h first
#include <tlhelp32.h>

#include <cstdio>
#include <map>
#include <mutex>
#include <set>
#include <type_traits>

#include "tests/lab/machine/as_proc.h"

namespace lab {
namespace {

struct Account {
    std::mutex mutex;
    std::set<void*> open;
};

/// Never destroyed: other threads of the program may open and close handles until the end.
Account& TheAccount() {
    static auto* const account = new Account;
    return *account;
}

/// Returns the handle, and records it unless it is `none`.
template <typename Handle>
Handle Opened(Handle handle, Handle none = nullptr) {
    if (handle != none) {
        const std::scoped_lock lock(TheAccount().mutex);
        TheAccount().open.insert(handle);
    }
    return handle;
}

/// Before the real call, because Windows may reuse the value at once.
template <typename Handle>
Handle Closing(Handle handle) {
    const std::scoped_lock lock(TheAccount().mutex);
    TheAccount().open.erase(const_cast<void*>(static_cast<const volatile void*>(handle)));
    return handle;
}

/// Wraps a function that returns what it opened. `Tag` distinguishes functions with the same signature.
template <typename Tag, typename Handle, typename... Arguments>
struct Opening {
    static Handle WINAPI Call(Arguments... arguments) { return Opened(real(arguments...), none); }
    static inline Handle(WINAPI* real)(Arguments...) = nullptr;
    static inline Handle none = nullptr;
};

template <typename Tag = decltype([] {}), typename Handle, typename... Arguments>
FARPROC CountedOpening(Handle(WINAPI* real)(Arguments...), std::type_identity_t<Handle> none = nullptr) {
    using Counted = Opening<Tag, Handle, Arguments...>;
    Counted::real = real;
    Counted::none = none;
    return AsProc(&Counted::Call);
}

/// The same for a function that closes the handle that is its only argument.
template <typename Tag, typename Result, typename Handle>
struct ClosingOne {
    static Result WINAPI Call(Handle handle) { return real(Closing(handle)); }
    static inline Result(WINAPI* real)(Handle) = nullptr;
};

template <typename Tag = decltype([] {}), typename Result, typename Handle>
FARPROC CountedClosing(Result(WINAPI* real)(Handle)) {
    using Counted = ClosingOne<Tag, Result, Handle>;
    Counted::real = real;
    return AsProc(&Counted::Call);
}

LSTATUS WINAPI CountedRegOpenKeyExW(HKEY parent, LPCWSTR path, DWORD options, REGSAM access, PHKEY key) {
    const LSTATUS result = RegOpenKeyExW(parent, path, options, access, key);
    if (result == ERROR_SUCCESS) {
        Opened(*key);
    }
    return result;
}

BOOL WINAPI CountedCreatePipe(PHANDLE read_end, PHANDLE write_end, LPSECURITY_ATTRIBUTES security,
                              DWORD size) {
    const BOOL made = CreatePipe(read_end, write_end, security, size);
    if (made != FALSE) {
        Opened(*read_end);
        Opened(*write_end);
    }
    return made;
}

BOOL WINAPI CountedCreateProcessW(LPCWSTR program, LPWSTR command_line, LPSECURITY_ATTRIBUTES security,
                                  LPSECURITY_ATTRIBUTES thread_security, BOOL inherits, DWORD flags,
                                  LPVOID environment, LPCWSTR folder, LPSTARTUPINFOW startup,
                                  LPPROCESS_INFORMATION process) {
    const BOOL made = CreateProcessW(program, command_line, security, thread_security, inherits, flags,
                                     environment, folder, startup, process);
    if (made != FALSE) {
        Opened(process->hProcess);
        Opened(process->hThread);
    }
    return made;
}

}  // namespace

FARPROC AccountingFunction(std::string_view name) {
    static const std::map<std::string_view, FARPROC> functions = {
        // kernel32: waitable objects, files, processes and threads
        {"CreateEventW", CountedOpening(&CreateEventW)},
        {"CreateEventExW", CountedOpening(&CreateEventExW)},
        {"CreateFileMappingW", CountedOpening(&CreateFileMappingW)},
        {"CreateFileW", CountedOpening(&CreateFileW, INVALID_HANDLE_VALUE)},
        {"CreateJobObjectW", CountedOpening(&CreateJobObjectW)},
        {"CreateMutexW", CountedOpening(&CreateMutexW)},
        {"CreateNamedPipeW", CountedOpening(&CreateNamedPipeW, INVALID_HANDLE_VALUE)},
        {"CreatePipe", AsProc(&CountedCreatePipe)},
        {"CreateProcessW", AsProc(&CountedCreateProcessW)},
        {"CreateSemaphoreW", CountedOpening(&CreateSemaphoreW)},
        {"CreateThread", CountedOpening(&CreateThread)},
        {"CreateToolhelp32Snapshot", CountedOpening(&CreateToolhelp32Snapshot, INVALID_HANDLE_VALUE)},
        {"CreateWaitableTimerW", CountedOpening(&CreateWaitableTimerW)},
        {"OpenEventW", CountedOpening(&OpenEventW)},
        {"OpenFileMappingW", CountedOpening(&OpenFileMappingW)},
        {"OpenMutexW", CountedOpening(&OpenMutexW)},
        {"OpenProcess", CountedOpening(&OpenProcess)},
        {"OpenThread", CountedOpening(&OpenThread)},
        {"CloseHandle", CountedClosing(&CloseHandle)},
        {"FindFirstFileW", CountedOpening(&FindFirstFileW, INVALID_HANDLE_VALUE)},
        {"FindClose", CountedClosing(&FindClose)},
        {"MapViewOfFile", CountedOpening(&MapViewOfFile)},
        {"UnmapViewOfFile", CountedClosing(&UnmapViewOfFile)},
        // user32
        {"CreateWindowExW", CountedOpening(&CreateWindowExW)},
        {"DestroyWindow", CountedClosing(&DestroyWindow)},
        // advapi32
        {"RegOpenKeyExW", AsProc(&CountedRegOpenKeyExW)},
        {"RegCloseKey", CountedClosing(&RegCloseKey)},
        // the C runtime
        {"_fdopen", CountedOpening(&_fdopen)},
        {"_wfopen", CountedOpening(&_wfopen)},
        {"fopen", CountedOpening<>(static_cast<std::FILE* (*)(const char*, const char*)>(&std::fopen))},
        {"fclose", CountedClosing(&std::fclose)},
    };
    const auto found = functions.find(name);
    return found != functions.end() ? found->second : nullptr;
}

void NoteOpened(void* handle) {
    Opened(handle);
}

long OpenHandles() {
    const std::scoped_lock lock(TheAccount().mutex);
    return static_cast<long>(TheAccount().open.size());
}

}  // namespace lab
