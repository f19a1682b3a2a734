#include "platform/library.h"

#include <array>

namespace {

HMODULE LoadQuietly(const wchar_t* name, DWORD flags) {
    DWORD previous_mode = 0;
    SetThreadErrorMode(SEM_FAILCRITICALERRORS | SEM_NOOPENFILEERRORBOX, &previous_mode);
    HMODULE library = LoadLibraryExW(name, nullptr, flags);
    const DWORD error = GetLastError();
    SetThreadErrorMode(previous_mode, nullptr);
    SetLastError(error);
    return library;
}

/// The last error, or a generic one if Windows did not set it.
HRESULT LastFailure() {
    const DWORD error = GetLastError();
    return error == ERROR_SUCCESS ? E_FAIL : HRESULT_FROM_WIN32(error);
}

}  // namespace

void NeverLoadFromCurrentDirectory() {
    // The folder that is set here replaces the current directory in the search order, so it is one that is
    // searched anyway. An empty string would be enough on Windows, but Wine ignores it.
    std::array<wchar_t, MAX_PATH> system_folder = {};
    GetSystemDirectoryW(system_folder.data(), static_cast<UINT>(system_folder.size()));
    SetDllDirectoryW(system_folder.data());
}

HMODULE LoadLibraryQuietly(const wchar_t* name, DWORD flags) {
    return LoadQuietly(name, flags);
}

LibraryFunction FindSystemFunction(const wchar_t* library, const char* name) {
    const HMODULE module = LoadQuietly(library, LOAD_LIBRARY_SEARCH_SYSTEM32);
    FARPROC const function = module == nullptr ? nullptr : GetProcAddress(module, name);
    if (function == nullptr) {
        return {nullptr, LastFailure()};
    }
    return {function, S_OK};
}
