#include "platform/registry_text.h"

#include <cstddef>

#include "platform/utf8.h"

std::string TextFromRegistryData(std::span<const std::uint8_t> data) {
    std::u16string text;
    for (std::size_t i = 0; i + 1 < data.size(); i += 2) {
        const auto unit = static_cast<char16_t>(data[i] | data[i + 1] << 8);
        if (unit == 0) {
            break;
        }
        text += unit;
    }
    return Utf8FromUtf16(text);
}
