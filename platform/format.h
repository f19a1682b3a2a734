// The program's only printf-style formatter. Numbers are rounded by IEEE rules, exact ties to even, and give
// the same text in the Windows build and in the native tests.
#pragma once

#include <cstdarg>
#include <cstddef>
#include <string>

#if defined(__MINGW32__) && !defined(__clang__)
#define VISTREL_PRINTF(format_index, first_argument) \
    __attribute__((format(gnu_printf, format_index, first_argument)))
#else
#define VISTREL_PRINTF(format_index, first_argument) \
    __attribute__((format(printf, format_index, first_argument)))
#endif

/// Formats into text of any length. Text from outside must be an argument, never the format.
std::string FormatText(const char* format, ...) VISTREL_PRINTF(1, 2);

/// As FormatText, from an argument list. Returns an empty text when formatting fails.
std::string FormatTextV(const char* format, std::va_list arguments) VISTREL_PRINTF(1, 0);

/// As FormatTextV, but cut after `limit` bytes.
std::string FormatBoundedV(std::size_t limit, const char* format, std::va_list arguments)
    VISTREL_PRINTF(2, 0);
