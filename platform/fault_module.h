// In which module of the process an address lies, found out while the process dies.
#pragma once

#include <windows.h>

#include <cstddef>

/// Where the exception comes from: the faulting instruction; of a C++ exception of Microsoft's compiler,
/// which is always raised by Windows' own code, the module that threw it. May be null.
const void* FaultAddress(const EXCEPTION_RECORD& exception);

/// Writes the file name, without its folder, of the module that holds `address` to `buffer`, in UTF-8 with a
/// terminating zero. Writes an empty name when no file is mapped there (generated code) or the name does not
/// fit. Asks the kernel alone: takes no lock of the loader and no heap, which a crash may have left locked.
void FindFaultModule(const void* address, char* buffer, std::size_t size);

/// How far `address` lies behind the start of the module that holds it, in bytes; 0 when nothing is mapped
/// there. Asks the kernel alone, too.
std::size_t OffsetInModule(const void* address);
