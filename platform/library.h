// Loading a DLL at run time.
#pragma once

#include <windows.h>

#include "platform/unique_handle.h"

struct LibraryTraits {
    using Handle = HMODULE;
    static Handle Invalid() { return nullptr; }
    static void Close(Handle library) { FreeLibrary(library); }
};

using UniqueLibrary = UniqueHandle<LibraryTraits>;

/// Takes the current directory out of the folders in which Windows looks for DLLs, for the whole process.
/// The executable's own folder stays the first.
void NeverLoadFromCurrentDirectory();

/// LoadLibraryW, which looks in the executable's own folder before any other. Null when there is no such
/// library; GetLastError tells why then. A file that is no DLL opens no message box in front of the person,
/// as it would by itself.
HMODULE LoadLibraryQuietly(const wchar_t* name);

/// A function of a DLL, or why there is none.
struct LibraryFunction {
    FARPROC function = nullptr;
    HRESULT missing = S_OK;  ///< a failure when `function` is null
};

/// The function `name` of the DLL `library` in Windows' system folder. No other folder is looked into,
/// neither for the DLL nor for those that it needs, so that a file of that name beside the executable is
/// passed by. (As ever, a module of that name that the process has loaded already is taken.) The DLL stays
/// loaded. Opens no message box either.
LibraryFunction FindSystemFunction(const wchar_t* library, const char* name);
