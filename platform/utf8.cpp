#include "platform/utf8.h"

#include <utf8.h>

#include <iterator>

namespace {

bool IsLeadSurrogate(char16_t unit) {
    return unit >= 0xD800 && unit <= 0xDBFF;
}

bool IsTrailSurrogate(char16_t unit) {
    return unit >= 0xDC00 && unit <= 0xDFFF;
}

/// `text` with every unpaired surrogate replaced by U+FFFD.
std::u16string WithoutUnpairedSurrogates(std::u16string_view text) {
    constexpr char16_t kReplacement = 0xFFFD;
    std::u16string whole(text);
    for (std::size_t i = 0; i < whole.size(); ++i) {
        if (IsLeadSurrogate(whole[i]) && i + 1 < whole.size() && IsTrailSurrogate(whole[i + 1])) {
            ++i;
        } else if (IsLeadSurrogate(whole[i]) || IsTrailSurrogate(whole[i])) {
            whole[i] = kReplacement;
        }
    }
    return whole;
}

}  // namespace

std::string Utf8FromUtf16(std::u16string_view text) {
    const std::u16string whole = WithoutUnpairedSurrogates(text);
    std::string converted;
    utf8::utf16to8(whole.begin(), whole.end(), std::back_inserter(converted));
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

std::string ValidUtf8(std::string_view text) {
    std::string valid;
    utf8::replace_invalid(text.begin(), text.end(), std::back_inserter(valid));
    return valid;
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
