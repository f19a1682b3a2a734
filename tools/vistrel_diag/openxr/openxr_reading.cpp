#include "tools/vistrel_diag/openxr/openxr_reading.h"

#include "platform/format.h"
#include "platform/utf8.h"

std::string OpenXrRuntimeText(std::string_view name, std::uint64_t version) {
    return ValidUtf8(name) + FormatText(" %u.%u.%u", static_cast<unsigned>(version >> 48),
                                        static_cast<unsigned>((version >> 32) & 0xFFFF),
                                        static_cast<unsigned>(version & 0xFFFFFFFF));
}
