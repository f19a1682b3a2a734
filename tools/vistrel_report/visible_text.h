// Makes text from outside safe to show: a report can contain anything that a window title or a settings file
// contains.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

/// One character of UTF-8 text.
struct DecodedCharacter {
    char32_t code = 0;
    std::size_t bytes = 0;  ///< how many it takes; at least 1
    bool valid = false;     ///< false when it is not UTF-8; skip `bytes` bytes then
};

/// Decodes the first character of `text`. `text` must not be empty.
DecodedCharacter DecodeUtf8(std::string_view text);

/// Whether the character is invisible or changes how the text around it is shown: control characters (tab and
/// line feed included), characters that change the direction of writing, fillers, and characters without
/// width. Blanks are not, nor what scripts and emoji are joined with: U+200C, U+200D and U+FE0F.
bool IsUnseen(char32_t code);

/// `text` as UTF-8 in which no character is unseen (IsUnseen): such a character becomes a code such as
/// "[U+202E]", bytes that are not UTF-8 become the replacement character. A tab becomes a blank.
std::string VisibleText(std::string_view text);
