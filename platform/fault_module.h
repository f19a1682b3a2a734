// Finds the module that contains an address, while the process crashes.
#pragma once

#include <windows.h>

#include <cstddef>

/// Where the exception comes from: the faulting instruction. A C++ exception of Microsoft's compiler is
/// always raised by Windows' own code; for it, the result is the module that threw it. May be null.
const void* FaultAddress(const EXCEPTION_RECORD& exception);

/// Writes the file name, without its folder, of the module that contains `address` to `buffer`, in UTF-8 with
/// a terminating zero. Writes an empty name when no file is mapped there (generated code) or the name does
/// not fit. Asks only the kernel: uses neither the loader lock nor the heap, which may be locked after a
/// crash.
void FindFaultModule(const void* address, char* buffer, std::size_t size);

/// The offset in bytes of `address` from the start of the module that contains it; 0 when nothing is mapped
/// there. Asks only the kernel, too.
std::size_t OffsetInModule(const void* address);
