#include "tools/vistrel_report/decoded_text.h"

#include <string>
#include <vector>

namespace {

bool IsIllFormed(const std::string& text) {
    TextEncoding encoding;
    const std::string decoded = DecodedText(text, encoding);
    EXPECT_FALSE(encoding.utf16);
    EXPECT_EQ(decoded, text);
    return encoding.ill_formed;
}

const std::vector<std::string> kWellFormed = {"",
                                              "a",
                                              "\x7F",
                                              "\xC2\x80",
                                              "\xDF\xBF",
                                              "\xE0\xA0\x80",
                                              "\xEC\xBF\xBF",
                                              "\xED\x9F\xBF",
                                              "\xEE\x80\x80",
                                              "\xEF\xBF\xBD",
                                              "\xF0\x90\x80\x80",
                                              "\xF3\xBF\xBF\xBF",
                                              "\xF4\x8F\xBF\xBF"};

/// A lone tail, overlong forms, surrogates, what is beyond U+10FFFF, and bytes that never occur.
const std::vector<std::string> kIllFormed = {
    "\x80",         "\xBF",         "\xC0\x80",         "\xC1\xBF",         "\xE0\x9F\xBF",
    "\xED\xA0\x80", "\xED\xBF\xBF", "\xF0\x8F\xBF\xBF", "\xF4\x90\x80\x80", "\xF5\x80\x80\x80",
    "\xFE",         "\xFF"};

}  // namespace

TEST(DecodedText, ACharacterOfAnyLengthIsWellFormedAtTheEndAndBeforeOthers) {
    for (const std::string& character : kWellFormed) {
        EXPECT_FALSE(IsIllFormed(character)) << testing::PrintToString(character);
        EXPECT_FALSE(IsIllFormed(character + "letters after it")) << testing::PrintToString(character);
        EXPECT_FALSE(IsIllFormed("letters" + character + "x")) << testing::PrintToString(character);
    }
}

TEST(DecodedText, WhatIsNoCharacterIsIllFormed) {
    for (const std::string& bytes : kIllFormed) {
        EXPECT_TRUE(IsIllFormed(bytes)) << testing::PrintToString(bytes);
        EXPECT_TRUE(IsIllFormed("letters before " + bytes + "x")) << testing::PrintToString(bytes);
    }
}

TEST(DecodedText, AnIncompleteCharacterIsIllFormed) {
    for (const std::string& character : kWellFormed) {
        for (std::size_t length = 1; length < character.size(); ++length) {
            EXPECT_TRUE(IsIllFormed(character.substr(0, length))) << testing::PrintToString(character);
            EXPECT_TRUE(IsIllFormed(character.substr(0, length) + "x")) << testing::PrintToString(character);
        }
    }
}
