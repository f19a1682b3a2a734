// Names of the exception codes with which Windows ends a process.
#pragma once

#include <cstdint>

/// The common name of the exception with this code, in lower case, such as "access violation". Null for a
/// code without a name. Allocates nothing.
const char* ExceptionName(std::uint32_t code);
