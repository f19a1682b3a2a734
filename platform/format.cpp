#include "platform/format.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>

std::string FormatText(const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    std::string text = FormatTextV(format, arguments);
    va_end(arguments);
    return text;
}

std::string FormatTextV(const char* format, std::va_list arguments) {
    return FormatBoundedV(SIZE_MAX, format, arguments);
}

std::string FormatBoundedV(std::size_t limit, const char* format, std::va_list arguments) {
    std::va_list measuring;
    va_copy(measuring, arguments);
    const int length = std::vsnprintf(nullptr, 0, format, measuring);
    va_end(measuring);
    if (length <= 0) {
        return {};
    }
    std::string text(std::min(static_cast<std::size_t>(length), limit), '\0');
    // The terminating zero overwrites the string's own.
    std::vsnprintf(text.data(), text.size() + 1, format, arguments);
    return text;
}
