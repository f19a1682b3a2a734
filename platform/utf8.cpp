#include "platform/utf8.h"

#include <utf8.h>

#include <iterator>

std::string Utf8FromUtf16(std::u16string_view text) {
    std::string converted;
    try {
        utf8::utf16to8(text.begin(), text.end(), std::back_inserter(converted));
    } catch (const utf8::exception&) {
        return {};
    }
    return converted;
}

std::u16string Utf16FromUtf8(std::string_view text) {
    std::u16string converted;
    try {
        utf8::utf8to16(text.begin(), text.end(), std::back_inserter(converted));
    } catch (const utf8::exception&) {
        return {};
    }
    return converted;
}

#ifdef _WIN32
static_assert(sizeof(wchar_t) == sizeof(char16_t), "Windows' wide strings are UTF-16");

std::string Utf8FromWide(std::wstring_view text) {
    return Utf8FromUtf16(std::u16string(text.begin(), text.end()));
}

std::wstring WideFromUtf8(std::string_view text) {
    const std::u16string converted = Utf16FromUtf8(text);
    return {converted.begin(), converted.end()};
}
#endif
