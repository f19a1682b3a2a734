#include "tools/vistrel_diag/openxr/openxr_reading.h"

#include <utf8.h>

#include <iterator>

#include "platform/format.h"

std::string OpenXrRuntimeText(std::string_view name, std::uint64_t version) {
    std::string text;
    utf8::replace_invalid(name.begin(), name.end(), std::back_inserter(text));
    return text + FormatText(" %u.%u.%u", static_cast<unsigned>(version >> 48),
                             static_cast<unsigned>((version >> 32) & 0xFFFF),
                             static_cast<unsigned>(version & 0xFFFFFFFF));
}
