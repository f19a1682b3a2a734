#include "platform/utf8.h"

#include <gtest/gtest.h>

#include <string>

namespace {

constexpr char16_t kLead = 0xD83D;   // Of a pair.
constexpr char16_t kTrail = 0xDE00;  // Of a pair.
const std::string kGap = "\xEF\xBF\xBD";

TEST(Utf8FromUtf16, ConvertsEveryLengthOfCharacter) {
    EXPECT_EQ(Utf8FromUtf16(u""), "");
    EXPECT_EQ(Utf8FromUtf16(u"a\u007F\u0080\u07FF\u0800\uD7FF\uE000\uFFFF"),
              "a\x7F\xC2\x80\xDF\xBF\xE0\xA0\x80\xED\x9F\xBF\xEE\x80\x80\xEF\xBF\xBF");
    EXPECT_EQ(Utf8FromUtf16(u"\U00010000\U0001F600\U0010FFFF"),
              "\xF0\x90\x80\x80\xF0\x9F\x98\x80\xF4\x8F\xBF\xBF");
    EXPECT_EQ(Utf8FromUtf16(std::u16string(u"a\0b", 3)), std::string("a\0b", 3));
}

TEST(Utf8FromUtf16, ReplacesAnUnpairedSurrogateAndKeepsTheRest) {
    const std::u16string lead(1, kLead);
    const std::u16string trail(1, kTrail);
    EXPECT_EQ(Utf8FromUtf16(lead), kGap);
    EXPECT_EQ(Utf8FromUtf16(trail), kGap);
    EXPECT_EQ(Utf8FromUtf16(u"a" + lead + u"b"), "a" + kGap + "b");
    EXPECT_EQ(Utf8FromUtf16(u"a" + trail + u"b"), "a" + kGap + "b");
    EXPECT_EQ(Utf8FromUtf16(u"a" + lead), "a" + kGap);
    EXPECT_EQ(Utf8FromUtf16(trail + u"b"), kGap + "b");
    EXPECT_EQ(Utf8FromUtf16(trail + lead), kGap + kGap);
    EXPECT_EQ(Utf8FromUtf16(lead + lead + trail), kGap + "\xF0\x9F\x98\x80");
    EXPECT_EQ(Utf8FromUtf16(lead + trail + trail), "\xF0\x9F\x98\x80" + kGap);
    EXPECT_EQ(Utf8FromUtf16(u"\uD7FF\xD800\xDBFF\xDC00\xDFFF\uE000"),
              "\xED\x9F\xBF" + kGap + "\xF4\x8F\xB0\x80" + kGap + "\xEE\x80\x80");
}

/// Any two of the units around the edges of both halves: a pair is a lead and a trail, in this order, and no
/// other two are.
TEST(Utf8FromUtf16, RecognisesTheWholeSurrogateRanges) {
    const std::u16string edges = u"\uD7FF\xD800\xDBFF\xDC00\xDFFF\uE000";
    const auto is_lead = [](char16_t unit) { return unit == 0xD800 || unit == 0xDBFF; };
    const auto is_trail = [](char16_t unit) { return unit == 0xDC00 || unit == 0xDFFF; };
    for (const char16_t first : edges) {
        for (const char16_t second : edges) {
            const std::string text = Utf8FromUtf16(std::u16string{first, second});
            const bool pair = is_lead(first) && is_trail(second);
            const auto gaps = static_cast<std::size_t>((is_lead(first) || is_trail(first)) +
                                                       (is_lead(second) || is_trail(second)));
            std::size_t found = 0;
            for (std::size_t at = text.find(kGap); at != std::string::npos; at = text.find(kGap, at + 1)) {
                ++found;
            }
            EXPECT_EQ(found, pair ? 0 : gaps) << int{first} << " " << int{second};
            EXPECT_EQ(text.size(), pair ? 4U : 6U) << int{first} << " " << int{second};
        }
    }
}

TEST(Utf16FromUtf8, ReversesTheConversion) {
    for (const char16_t* text : {u"", u"a\u0080\u07FF\u0800\uFFFF", u"\U00010000\U0010FFFF \U0001F600"}) {
        EXPECT_EQ(Utf16FromUtf8(Utf8FromUtf16(text)), text);
    }
}

TEST(Utf16FromUtf8, IsEmptyForInvalidUtf8) {
    for (const char* bytes : {"\xFF", "a\x80", "\xC3", "\xED\xA0\xBD", "\xC0\x80", "\xF4\x90\x80\x80"}) {
        EXPECT_EQ(Utf16FromUtf8(bytes), u"") << bytes;
    }
}

TEST(ValidUtf8, ReplacesOnlyInvalidBytes) {
    EXPECT_EQ(ValidUtf8("a\tb\x1B\xE2\x80\xAE\xFF"), "a\tb\x1B\xE2\x80\xAE\xEF\xBF\xBD");
}

}  // namespace
