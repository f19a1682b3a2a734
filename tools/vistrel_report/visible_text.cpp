#include "tools/vistrel_report/visible_text.h"

#include <algorithm>
#include <array>

#include "platform/format.h"

namespace {

constexpr std::string_view kReplacement = "\xEF\xBF\xBD";

struct Range {
    char32_t first;
    char32_t last;
};

constexpr std::array kUnseen = {
    Range{0x00, 0x1F},        // Control characters.
    Range{0x7F, 0x9F},        // Control characters.
    Range{0xAD, 0xAD},        // Soft hyphen.
    Range{0x034F, 0x034F},    // Combining grapheme joiner.
    Range{0x061C, 0x061C},    // Arabic letter mark.
    Range{0x115F, 0x1160},    // Fillers of Hangul.
    Range{0x17B4, 0x17B5},    // Khmer vowels that are not written.
    Range{0x180B, 0x180F},    // Mongolian variants and vowel separator.
    Range{0x200B, 0x200B},    // Blank without width.
    Range{0x200E, 0x200F},    // Marks of direction.
    Range{0x2028, 0x202E},    // Line ends, embeddings, overrides.
    Range{0x2060, 0x206F},    // Word joiner, isolates.
    Range{0x3164, 0x3164},    // Filler of Hangul.
    Range{0xFE00, 0xFE0E},    // Variants of the character before.
    Range{0xFEFF, 0xFEFF},    // Byte order mark.
    Range{0xFFA0, 0xFFA0},    // Filler of Hangul.
    Range{0xFFF0, 0xFFFB},    // Unassigned and without width; annotations.
    Range{0x1BCA0, 0x1BCA3},  // Marks of shorthand.
    Range{0x1D173, 0x1D17A},  // Marks of music.
    Range{0xE0000, 0xE0FFF},  // Tags, variants.
};

bool IsContinuation(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0) == 0x80;
}

/// How many bytes a character takes by its first one; 0 for one that begins none.
std::size_t LengthByFirstByte(unsigned char first) {
    if (first < 0x80) {
        return 1;
    }
    if (first >= 0xC2 && first <= 0xDF) {
        return 2;
    }
    if (first >= 0xE0 && first <= 0xEF) {
        return 3;
    }
    return first >= 0xF0 && first <= 0xF4 ? 4 : 0;
}

bool IsPlain(char byte) {
    return byte >= 0x20 && byte < 0x7F;
}

}  // namespace

DecodedCharacter DecodeUtf8(std::string_view text) {
    constexpr std::array<char32_t, 5> kSmallest = {0, 0, 0x80, 0x800, 0x10000};
    const auto first = static_cast<unsigned char>(text.front());
    const std::size_t length = LengthByFirstByte(first);
    if (length == 1) {
        return {first, 1, true};
    }
    if (length == 0) {
        return {0, 1, false};
    }
    char32_t code = first & (0xFFU >> (length + 1));
    for (std::size_t i = 1; i < length; ++i) {
        if (i >= text.size() || !IsContinuation(text[i])) {
            return {0, i, false};
        }
        code = (code << 6U) | (static_cast<unsigned char>(text[i]) & 0x3FU);
    }
    const bool surrogate = code >= 0xD800 && code <= 0xDFFF;
    return {code, length, code >= kSmallest[length] && code <= 0x10FFFF && !surrogate};
}

bool IsUnseen(char32_t code) {
    return std::any_of(kUnseen.begin(), kUnseen.end(),
                       [code](const Range& range) { return code >= range.first && code <= range.last; });
}

std::string VisibleText(std::string_view text) {
    std::string visible;
    visible.reserve(text.size());
    while (!text.empty()) {
        const auto odd = std::find_if_not(text.begin(), text.end(), IsPlain);
        const auto plain = static_cast<std::size_t>(odd - text.begin());
        visible += text.substr(0, plain);
        text.remove_prefix(plain);
        if (text.empty()) {
            break;
        }
        const DecodedCharacter character = DecodeUtf8(text);
        if (!character.valid) {
            visible += kReplacement;
        } else if (character.code == U'\t') {
            visible += ' ';
        } else if (IsUnseen(character.code)) {
            visible += FormatText("[U+%04X]", static_cast<unsigned>(character.code));
        } else {
            visible += text.substr(0, character.bytes);
        }
        text.remove_prefix(character.bytes);
    }
    return visible;
}
