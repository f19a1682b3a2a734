// Counts in sentences.
#pragma once

#include <cstddef>
#include <string>

#include "platform/format.h"

/// "1 report", "2 reports".
inline std::string CountText(std::size_t count, const char* one, const char* several) {
    return FormatText("%zu %s", count, count == 1 ? one : several);
}
