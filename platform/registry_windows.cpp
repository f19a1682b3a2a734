#include "platform/registry.h"

#include <algorithm>
#include <array>

#include "platform/registry_text.h"
#include "platform/utf8.h"

namespace {

HKEY OpenForReading(HKEY root, const wchar_t* path) {
    HKEY key = nullptr;
    return RegOpenKeyExW(root, path, 0, KEY_READ, &key) == ERROR_SUCCESS ? key : nullptr;
}

/// The first `size` bytes of `buffer`, limited to its size, whatever a call claims to have written.
template <std::size_t Capacity>
std::span<const std::uint8_t> Written(const std::array<std::uint8_t, Capacity>& buffer, DWORD size) {
    return std::span(buffer).first(std::min<std::size_t>(size, Capacity));
}

}  // namespace

RegistryKey::RegistryKey(HKEY root, const wchar_t* path) : key_(OpenForReading(root, path)) {}

std::optional<std::string> RegistryKey::ReadText(const wchar_t* name) const {
    if (!key_) {
        return std::nullopt;
    }
    std::array<std::uint8_t, kLongestText> data = {};
    DWORD size = data.size();
    if (RegQueryValueExW(key_.get(), name, nullptr, nullptr, data.data(), &size) != ERROR_SUCCESS) {
        return std::nullopt;
    }
    return TextFromRegistryData(Written(data, size));
}

std::optional<std::uint32_t> RegistryKey::ReadNumber(const wchar_t* name) const {
    if (!key_) {
        return std::nullopt;
    }
    DWORD number = 0;
    DWORD size = sizeof(number);
    const LSTATUS result = RegGetValueW(key_.get(), nullptr, name, RRF_RT_REG_DWORD, nullptr, &number, &size);
    if (result != ERROR_SUCCESS || size != sizeof(number)) {
        return std::nullopt;
    }
    return number;
}

std::vector<RegistryValue> RegistryKey::ReadValues() const {
    std::vector<RegistryValue> values;
    while (key_) {
        std::array<wchar_t, kLongestName> name = {};
        std::array<std::uint8_t, kLongestData> data = {};
        DWORD name_length = name.size();
        DWORD size = data.size();
        if (RegEnumValueW(key_.get(), static_cast<DWORD>(values.size()), name.data(), &name_length, nullptr,
                          nullptr, data.data(), &size) != ERROR_SUCCESS) {
            break;
        }
        const std::size_t name_units = std::min<std::size_t>(name_length, name.size());
        values.push_back(
            {Utf8FromWide({name.data(), name_units}), TextFromRegistryData(Written(data, size))});
    }
    return values;
}
