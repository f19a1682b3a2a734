#include "platform/letter_case.h"

#include <gtest/gtest.h>

namespace {

TEST(AsciiLowered, LowersExactlyTheLettersAToZ) {
    EXPECT_EQ(AsciiLowered("AMZ amz 019 @[`{"), "amz amz 019 @[`{");
    EXPECT_EQ(AsciiLowered(""), "");
}

TEST(AsciiLowered, DoesNotChangeTheBytesOfOtherLetters) {
    EXPECT_EQ(AsciiLowered("ÄÖÜ É Σ İ A"), "ÄÖÜ É Σ İ a");
    EXPECT_EQ(AsciiLowered("\xC3\xFF\x80"), "\xC3\xFF\x80");
}

TEST(EqualsIgnoringAsciiCase, ComparesWholeTexts) {
    EXPECT_TRUE(EqualsIgnoringAsciiCase("vrserver.exe", "VRSERVER.EXE"));
    EXPECT_TRUE(EqualsIgnoringAsciiCase("", ""));
    EXPECT_FALSE(EqualsIgnoringAsciiCase("vrserver.exe", "vrserver.ex"));
    EXPECT_FALSE(EqualsIgnoringAsciiCase("vrserver.exe", "vrserver.exe "));
    EXPECT_FALSE(EqualsIgnoringAsciiCase("", "a"));
}

TEST(EqualsIgnoringAsciiCase, DistinguishesCharactersNextToTheLetters) {
    EXPECT_FALSE(EqualsIgnoringAsciiCase("@", "`"));
    EXPECT_FALSE(EqualsIgnoringAsciiCase("[", "{"));
    EXPECT_FALSE(EqualsIgnoringAsciiCase("Ä", "ä"));
    // The Kelvin sign lowers to a k in some locales.
    EXPECT_FALSE(EqualsIgnoringAsciiCase("k", "\xE2\x84\xAA"));
}

}  // namespace
