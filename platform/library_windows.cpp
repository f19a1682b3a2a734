#include "platform/library.h"

HMODULE LoadLibraryQuietly(const wchar_t* name) {
    DWORD previous_mode = 0;
    SetThreadErrorMode(SEM_FAILCRITICALERRORS | SEM_NOOPENFILEERRORBOX, &previous_mode);
    HMODULE library = LoadLibraryW(name);
    const DWORD error = GetLastError();
    SetThreadErrorMode(previous_mode, nullptr);
    SetLastError(error);
    return library;
}
