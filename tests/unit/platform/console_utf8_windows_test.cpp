#include "platform/console_utf8.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <string>

namespace {

struct FakeConsole {
    bool exists = true;
    UINT code_page = 437;
    PHANDLER_ROUTINE handler = nullptr;
    std::wstring shown;
};

FakeConsole& Console() {
    static FakeConsole console;
    return console;
}

WINBOOL WINAPI GetMode(HANDLE, LPDWORD mode) {
    *mode = 0;
    return Console().exists ? TRUE : FALSE;
}

UINT WINAPI GetCodePage() {
    return Console().code_page;
}

WINBOOL WINAPI SetCodePage(UINT code_page) {
    Console().code_page = code_page;
    return TRUE;
}

WINBOOL WINAPI SetHandler(PHANDLER_ROUTINE handler, WINBOOL add) {
    Console().handler = add != FALSE ? handler : nullptr;
    return TRUE;
}

WINBOOL WINAPI Show(HANDLE, const void* text, DWORD length, LPDWORD written, void*) {
    Console().shown.append(static_cast<const wchar_t*>(text), length);
    *written = length;
    return TRUE;
}

}  // namespace

extern "C" {
decltype(&GetConsoleMode) __imp_GetConsoleMode = GetMode;
decltype(&GetConsoleOutputCP) __imp_GetConsoleOutputCP = GetCodePage;
decltype(&SetConsoleOutputCP) __imp_SetConsoleOutputCP = SetCodePage;
decltype(&WriteConsoleW) __imp_WriteConsoleW = Show;
decltype(&SetConsoleCtrlHandler) __imp_SetConsoleCtrlHandler = SetHandler;
}

namespace {

class ConsoleUtf8 : public testing::Test {
  protected:
    ConsoleUtf8() { Console() = {}; }
};

TEST_F(ConsoleUtf8, SetsUtf8ForItsLifetime) {
    {
        const ConsoleUtf8Output utf8;
        EXPECT_EQ(Console().code_page, 65001U);
        EXPECT_NE(Console().handler, nullptr);
    }
    EXPECT_EQ(Console().code_page, 437U);
    EXPECT_EQ(Console().handler, nullptr);
}

TEST_F(ConsoleUtf8, DoesNotChangeAPipe) {
    Console().exists = false;
    {
        const ConsoleUtf8Output utf8;
        EXPECT_EQ(Console().code_page, 437U);
        EXPECT_EQ(Console().handler, nullptr);
    }
    EXPECT_EQ(Console().code_page, 437U);
}

TEST_F(ConsoleUtf8, RestoresTheCodePageOnCtrlCAndLetsTheProgramEnd) {
    const ConsoleUtf8Output utf8;
    ASSERT_NE(Console().handler, nullptr);
    EXPECT_FALSE(Console().handler(CTRL_C_EVENT));
    EXPECT_EQ(Console().code_page, 437U);
}

TEST_F(ConsoleUtf8, RestoresTheCodePageOnceForAProgramThatCrashes) {
    PutConsoleCodePageBack();
    EXPECT_EQ(Console().code_page, 437U);
    const ConsoleUtf8Output utf8;
    PutConsoleCodePageBack();
    EXPECT_EQ(Console().code_page, 437U);
    Console().code_page = 850;  // A later change by other code is kept.
    PutConsoleCodePageBack();
    EXPECT_EQ(Console().code_page, 850U);
}

TEST_F(ConsoleUtf8, ShowsCharactersAndNotBytes) {
    WriteToConsole("\xC3\xA9\xD0\x92\xF0\x9F\x98\x80 100%s\r\n");
    EXPECT_EQ(Console().shown, L"\u00E9\u0412\U0001F600 100%s\r\n");
    Console().shown.clear();
    WriteToConsole("");
    EXPECT_EQ(Console().shown, L"");
}

TEST_F(ConsoleUtf8, ShowsControlCharactersWithoutExecutingThem) {
    WriteToConsole(
        "a\x1B[2J\x07\x08\x7F\xC2\x9B"
        "1m\xC2\xA0\tb\r\n");
    EXPECT_EQ(Console().shown, L"a\u241B[2J\u2407\u2408\u2421\uFFFD1m\u00A0\tb\r\n");
}

TEST_F(ConsoleUtf8, ShowsALineThatWasCutInsideACharacter) {
    WriteToConsole(std::string(4094, 'x') + "\xC3\n");
    EXPECT_EQ(Console().shown, std::wstring(4094, L'x') + L"\uFFFD\r\n");
}

TEST_F(ConsoleUtf8, EndsEveryLineWithCarriageReturnAndLineFeed) {
    WriteToConsole("\na\n\nb\r\n\rc\r");
    EXPECT_EQ(Console().shown, L"\r\na\r\n\r\nb\r\n\rc\r");
}

TEST_F(ConsoleUtf8, DistinguishesAConsoleFromAPipe) {
    EXPECT_TRUE(StandardOutputIsConsole());
    Console().exists = false;
    EXPECT_FALSE(StandardOutputIsConsole());
}

TEST_F(ConsoleUtf8, CanBeUsedAgain) {
    { const ConsoleUtf8Output first; }
    Console().code_page = 850;
    {
        const ConsoleUtf8Output second;
        EXPECT_EQ(Console().code_page, 65001U);
    }
    EXPECT_EQ(Console().code_page, 850U);
}

}  // namespace
