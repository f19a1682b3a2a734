// The identifier of a graphics adapter, the same in every graphics interface of a Windows session.
#pragma once

#include <cstdint>
#include <string>

/// A locally unique identifier, in the two halves that Windows stores.
struct AdapterLuid {
    std::uint32_t low = 0;
    std::int32_t high = 0;

    friend bool operator==(const AdapterLuid&, const AdapterLuid&) = default;
};

/// The identifier in `luid`, Windows' own LUID.
template <typename WindowsLuid>
AdapterLuid LuidOf(const WindowsLuid& luid) {
    return {luid.LowPart, luid.HighPart};
}

/// "%08X:%08X", high half first, each half as its unsigned bit pattern.
std::string FormatLuid(const AdapterLuid& luid);
