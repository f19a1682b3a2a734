#include "tools/vistrel_report/visible_text.h"

#include <gtest/gtest.h>

namespace {

TEST(VisibleText, PlainAndForeignTextIsUnchanged) {
    EXPECT_EQ(VisibleText(""), "");
    EXPECT_EQ(VisibleText("Window - 100%"), "Window - 100%");
    EXPECT_EQ(VisibleText("ゲームの時間 é 😀"), "ゲームの時間 é 😀");
}

TEST(VisibleText, InvisibleCharactersAreSpelledOut) {
    EXPECT_EQ(VisibleText("a\tb"), "a b");
    EXPECT_EQ(VisibleText("\x1B[2Jx"), "[U+001B][2Jx");
    EXPECT_EQ(VisibleText("\xE2\x80\xAEgpj.exe\xE2\x80\xAC"), "[U+202E]gpj.exe[U+202C]");
    EXPECT_EQ(VisibleText("\xC2\x85\x7F"), "[U+0085][U+007F]");
    EXPECT_EQ(VisibleText("a\xE2\x80\x8B\xEF\xBB\xBF"), "a[U+200B][U+FEFF]");
    EXPECT_EQ(VisibleText(std::string_view("\0", 1)), "[U+0000]");
}

TEST(VisibleText, FillersAndCharactersWithoutWidthAreSpelledOut) {
    for (const char32_t code : {0x034F, 0x115F, 0x1160, 0x17B4, 0x17B5, 0x180B, 0x180E, 0x180F, 0x3164,
                                0xFFA0, 0xFFF0, 0x1BCA0, 0x1BCA3, 0x1D173, 0x1D17A, 0xE0001}) {
        EXPECT_TRUE(IsUnseen(code)) << std::hex << static_cast<unsigned>(code);
    }
    // Their neighbours, which are seen.
    for (const char32_t code : {0x034E, 0x0350, 0x115E, 0x1161, 0x17B3, 0x17B6, 0x180A, 0x1810, 0x3163,
                                0x3165, 0xFF9F, 0xFFA1, 0xFFFC, 0xFFFD, 0x1BC9F, 0x1D172, 0x1D17B}) {
        EXPECT_FALSE(IsUnseen(code)) << std::hex << static_cast<unsigned>(code);
    }
    EXPECT_EQ(VisibleText("a\xE3\x85\xA4z"), "a[U+3164]z");
    EXPECT_EQ(VisibleText("a\xCD\x8Fz"), "a[U+034F]z");
}

TEST(VisibleText, InvalidUtf8IsReplaced) {
    EXPECT_EQ(VisibleText("\xFF!"), "\xEF\xBF\xBD!");
    EXPECT_EQ(VisibleText("\xC0\x80"), "\xEF\xBF\xBD\xEF\xBF\xBD");  // Longer than need be.
    EXPECT_EQ(VisibleText("\xE0\x80\xAF"), "\xEF\xBF\xBD");          // Likewise.
    EXPECT_EQ(VisibleText("\xED\xA0\x80"), "\xEF\xBF\xBD");          // Half a character of UTF-16.
    EXPECT_EQ(VisibleText("\xF4\x90\x80\x80"), "\xEF\xBF\xBD");      // Beyond the last character.
    EXPECT_EQ(VisibleText("\xE3\x82"), "\xEF\xBF\xBD");              // Cut.
    EXPECT_EQ(VisibleText("\xE3\x82x"), "\xEF\xBF\xBDx");
}

}  // namespace
