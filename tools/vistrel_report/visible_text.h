// Text from outside, made safe to show: a report can hold whatever a window title or a settings file holds.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

/// One character of UTF-8 text.
struct DecodedCharacter {
    char32_t code = 0;
    std::size_t bytes = 0;  ///< how many it takes; at least 1
    bool valid = false;     ///< false: not UTF-8, `bytes` of it to be passed over
};

/// The character that `text` begins with. `text` must not be empty.
DecodedCharacter DecodeUtf8(std::string_view text);

/// Whether a reader cannot see the character, or it changes how what stands around it is shown: control
/// characters, those that turn the direction of writing, and those without width that join nothing. The tab
/// and line feed count.
bool IsUnseen(char32_t code);

/// `text` as UTF-8 in which everything can be seen: an unseen character becomes "[U+202E]", what is no UTF-8
/// the replacement character. A tab becomes a blank.
std::string VisibleText(std::string_view text);
