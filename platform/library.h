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

/// LoadLibraryW, which looks in the executable's own folder before any other. Null when there is no such
/// library; GetLastError tells why then. A file that is no DLL opens no message box in front of the person,
/// as it would by itself.
HMODULE LoadLibraryQuietly(const wchar_t* name);
