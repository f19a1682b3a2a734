// Any bytes as a registry value's data: the text is the part before the first zero unit.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "platform/registry_text.h"
#include "platform/utf8.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text = TextFromRegistryData({data, size});

    std::u16string units;
    for (std::size_t i = 0; i < size / 2; ++i) {
        units += static_cast<char16_t>(data[2 * i] + 256 * data[2 * i + 1]);
    }
    units = units.c_str();
    // Every unit is kept, or replaced by U+FFFD if it is an unpaired surrogate.
    const std::u16string back = Utf16FromUtf8(text);
    if (back.size() != units.size()) {
        std::abort();
    }
    for (std::size_t i = 0; i < units.size(); ++i) {
        const bool surrogate = units[i] >= 0xD800 && units[i] <= 0xDFFF;
        if (back[i] != units[i] && !(surrogate && back[i] == 0xFFFD)) {
            std::abort();
        }
    }
    return 0;
}
