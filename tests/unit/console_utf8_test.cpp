#include "platform/console_utf8.h"

#include <windows.h>

#include <gtest/gtest.h>

namespace {

struct FakeConsole {
    bool exists = true;
    UINT code_page = 437;
    PHANDLER_ROUTINE handler = nullptr;
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

}  // namespace

extern "C" {
decltype(&GetConsoleMode) __imp_GetConsoleMode = GetMode;
decltype(&GetConsoleOutputCP) __imp_GetConsoleOutputCP = GetCodePage;
decltype(&SetConsoleOutputCP) __imp_SetConsoleOutputCP = SetCodePage;
decltype(&SetConsoleCtrlHandler) __imp_SetConsoleCtrlHandler = SetHandler;
}

namespace {

class ConsoleUtf8 : public testing::Test {
  protected:
    ConsoleUtf8() { Console() = {}; }
};

TEST_F(ConsoleUtf8, IsUtf8WhileItLives) {
    {
        const ConsoleUtf8Output utf8;
        EXPECT_EQ(Console().code_page, 65001U);
        EXPECT_NE(Console().handler, nullptr);
    }
    EXPECT_EQ(Console().code_page, 437U);
    EXPECT_EQ(Console().handler, nullptr);
}

TEST_F(ConsoleUtf8, LeavesAPipeAlone) {
    Console().exists = false;
    {
        const ConsoleUtf8Output utf8;
        EXPECT_EQ(Console().code_page, 437U);
        EXPECT_EQ(Console().handler, nullptr);
    }
    EXPECT_EQ(Console().code_page, 437U);
}

TEST_F(ConsoleUtf8, PutsTheCodePageBackOnCtrlCAndLetsItEndTheProgram) {
    const ConsoleUtf8Output utf8;
    ASSERT_NE(Console().handler, nullptr);
    EXPECT_FALSE(Console().handler(CTRL_C_EVENT));
    EXPECT_EQ(Console().code_page, 437U);
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
