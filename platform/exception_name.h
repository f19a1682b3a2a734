// Names of the codes that Windows ends a process with.
#pragma once

#include <cstdint>

/// What support calls the exception of this code, in lower case, as in "access violation". Null for a code
/// that has no such name. Allocates nothing.
const char* ExceptionName(std::uint32_t code);
