// Loads DLLs at run time.
#pragma once

#include <windows.h>

#include "platform/unique_handle.h"

struct LibraryTraits {
    using Handle = HMODULE;
    static Handle Invalid() { return nullptr; }
    static void Close(Handle library) { FreeLibrary(library); }
};

using UniqueLibrary = UniqueHandle<LibraryTraits>;

/// Removes the current directory from the folders in which Windows looks for DLLs, for the whole process. The
/// executable's own folder is still searched first.
void NeverLoadFromCurrentDirectory();

/// LoadLibraryW without message boxes: by default Windows shows one for a file that is not a DLL. The
/// executable's own folder is searched first. `flags`: those of LoadLibraryExW. Null when the library cannot
/// be loaded; GetLastError then returns the reason.
HMODULE LoadLibraryQuietly(const wchar_t* name, DWORD flags = 0);

/// A function of a DLL, or why there is none.
struct LibraryFunction {
    FARPROC function = nullptr;
    HRESULT missing = S_OK;  ///< a failure when `function` is null
};

/// The function `name` of the DLL `library` in Windows' system folder. No other folder is searched, neither
/// for the DLL nor for those that it needs, so a file of that name next to the executable is ignored. (As
/// always, a module of that name that the process has already loaded is used.) The DLL stays loaded. Shows no
/// message box either.
LibraryFunction FindSystemFunction(const wchar_t* library, const char* name);
