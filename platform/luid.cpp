#include "platform/luid.h"

#include "platform/format.h"

std::string FormatLuid(const AdapterLuid& luid) {
    return FormatText("%08X:%08X", static_cast<unsigned>(luid.high), static_cast<unsigned>(luid.low));
}
