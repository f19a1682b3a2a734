#include "tools/vistrel_report/decoded_text.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <string_view>
#include <utility>

namespace {

enum class Utf16Kind { None, LittleEndian, BigEndian };

/// By the mark at the start, or by the zero bytes that ASCII text has in UTF-16.
Utf16Kind KindOf(std::string_view bytes) {
    if (bytes.starts_with("\xFF\xFE")) {
        return Utf16Kind::LittleEndian;
    }
    if (bytes.starts_with("\xFE\xFF")) {
        return Utf16Kind::BigEndian;
    }
    constexpr std::size_t kLookedAt = 512;
    std::array<std::size_t, 2> zeros = {};
    const std::size_t size = std::min(bytes.size(), kLookedAt);
    for (std::size_t i = 0; i < size; ++i) {
        zeros[i % 2] += bytes[i] == '\0' ? 1 : 0;
    }
    const std::size_t many = size / 4;
    if (size < 4 || zeros[0] + zeros[1] < many) {
        return Utf16Kind::None;
    }
    if (zeros[1] > zeros[0] * 8) {
        return Utf16Kind::LittleEndian;
    }
    return zeros[0] > zeros[1] * 8 ? Utf16Kind::BigEndian : Utf16Kind::None;
}

void AppendUtf8(std::string& text, std::uint32_t point) {
    const auto tail = [point](unsigned shift) { return static_cast<char>(0x80U | (point >> shift & 0x3FU)); };
    if (point < 0x80) {
        text += static_cast<char>(point);
    } else if (point < 0x800) {
        text += static_cast<char>(0xC0U | point >> 6U);
        text += tail(0);
    } else if (point < 0x10000) {
        text += static_cast<char>(0xE0U | point >> 12U);
        text += tail(6);
        text += tail(0);
    } else {
        text += static_cast<char>(0xF0U | point >> 18U);
        text += tail(12);
        text += tail(6);
        text += tail(0);
    }
}

std::string TextOfUtf16(std::string_view bytes, Utf16Kind kind, TextEncoding& encoding) {
    constexpr std::uint32_t kReplacement = 0xFFFD;
    constexpr std::uint32_t kMark = 0xFEFF;
    const auto unit = [&](std::size_t i) {
        const std::uint32_t first = static_cast<unsigned char>(bytes[i]);
        const std::uint32_t second = static_cast<unsigned char>(bytes[i + 1]);
        return kind == Utf16Kind::LittleEndian ? first | second << 8U : first << 8U | second;
    };
    std::string text;
    text.reserve(bytes.size() / 2);
    std::size_t i = 0;
    for (; i + 1 < bytes.size(); i += 2) {
        std::uint32_t point = unit(i);
        if (i == 0 && point == kMark) {
            continue;
        }
        const bool high = point >= 0xD800 && point <= 0xDBFF;
        const std::uint32_t next = high && i + 3 < bytes.size() ? unit(i + 2) : 0;
        if (next >= 0xDC00 && next <= 0xDFFF) {
            point = 0x10000 + ((point - 0xD800) << 10U) + (next - 0xDC00);
            i += 2;
        } else if (point >= 0xD800 && point <= 0xDFFF) {
            point = kReplacement;
            encoding.ill_formed = true;
        }
        AppendUtf8(text, point);
    }
    encoding.ill_formed = encoding.ill_formed || i < bytes.size();
    return text;
}

/// How many bytes the well-formed UTF-8 character at the start of `text` has; 0 when there is none.
std::size_t CharacterLength(std::string_view text) {
    const auto byte = [text](std::size_t i) {
        return i < text.size() ? static_cast<unsigned char>(text[i]) : static_cast<unsigned char>(0);
    };
    const auto tails = [&byte](std::size_t count) {
        for (std::size_t i = 1; i <= count; ++i) {
            if ((byte(i) & 0xC0U) != 0x80U) {
                return false;
            }
        }
        return true;
    };
    const unsigned char first = byte(0);
    if (first < 0x80) {
        return 1;
    }
    if (first >= 0xC2 && first <= 0xDF) {
        return tails(1) ? 2 : 0;
    }
    if (first >= 0xE0 && first <= 0xEF) {
        const bool overlong = first == 0xE0 && byte(1) < 0xA0;
        const bool surrogate = first == 0xED && byte(1) >= 0xA0;
        return tails(2) && !overlong && !surrogate ? 3 : 0;
    }
    if (first >= 0xF0 && first <= 0xF4) {
        const bool overlong = first == 0xF0 && byte(1) < 0x90;
        const bool beyond = first == 0xF4 && byte(1) >= 0x90;
        return tails(3) && !overlong && !beyond ? 4 : 0;
    }
    return 0;
}

bool IsUtf8(std::string_view text) {
    while (!text.empty()) {
        std::uint64_t eight = 0;
        if (text.size() >= sizeof(eight)) {
            std::memcpy(&eight, text.data(), sizeof(eight));
            if ((eight & 0x8080808080808080U) == 0) {
                text.remove_prefix(sizeof(eight));
                continue;
            }
        }
        const std::size_t length = CharacterLength(text);
        if (length == 0) {
            return false;
        }
        text.remove_prefix(length);
    }
    return true;
}

}  // namespace

std::string DecodedText(std::string bytes, TextEncoding& encoding) {
    constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";
    const Utf16Kind kind = KindOf(bytes);
    if (kind != Utf16Kind::None) {
        encoding.utf16 = true;
        return TextOfUtf16(bytes, kind, encoding);
    }
    if (bytes.starts_with(kUtf8Mark)) {
        bytes.erase(0, kUtf8Mark.size());
    }
    encoding.ill_formed = !IsUtf8(bytes);
    return bytes;
}
