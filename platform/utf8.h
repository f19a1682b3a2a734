// All text inside the program is UTF-8; Windows' wide strings are converted where they enter or leave it.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

/// UTF-16 to UTF-8. Half a character (an unpaired surrogate) has no UTF-8 form and becomes U+FFFD, as in
/// Windows' own conversion; the other characters are kept. A path with such a character no longer names its
/// file.
std::string Utf8FromUtf16(std::u16string_view text);

/// UTF-8 to UTF-16. Empty when the text is not well formed.
std::u16string Utf16FromUtf8(std::string_view text);

/// `text` with everything that is not UTF-8 replaced by U+FFFD.
std::string ValidUtf8(std::string_view text);

#ifdef _WIN32
/// Utf8FromUtf16 for the wide strings of Windows.
std::string Utf8FromWide(std::wstring_view text);

/// Utf16FromUtf8 for the wide strings of Windows.
std::wstring WideFromUtf8(std::string_view text);

/// The text in a fixed-size wide array as Windows fills them: it ends at the first zero, or at the array's
/// end when there is none.
template <std::size_t Size>
std::string Utf8FromWideArray(const wchar_t (&array)[Size]) {
    const std::wstring_view whole(array, Size);
    return Utf8FromWide(whole.substr(0, whole.find(L'\0')));
}
#endif
