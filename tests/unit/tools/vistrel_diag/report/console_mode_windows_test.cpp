#include "tools/vistrel_diag/report/console_mode.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <optional>

#include "log/logger.h"

// The console of this program: the functions of Windows are replaced by these.
namespace {

struct FakeConsole {
    HANDLE input = reinterpret_cast<HANDLE>(0x40);
    bool is_console = true;
    DWORD mode = 0;
    int changes = 0;
};

FakeConsole console;

HANDLE WINAPI FakeGetStdHandle(DWORD which) {
    return which == STD_INPUT_HANDLE ? console.input : INVALID_HANDLE_VALUE;
}

BOOL WINAPI FakeGetConsoleMode(HANDLE handle, LPDWORD mode) {
    EXPECT_EQ(handle, console.input);
    if (!console.is_console) {
        return FALSE;
    }
    *mode = console.mode;
    return TRUE;
}

BOOL WINAPI FakeSetConsoleMode(HANDLE handle, DWORD mode) {
    EXPECT_EQ(handle, console.input);
    console.mode = mode;
    ++console.changes;
    return TRUE;
}

}  // namespace

extern "C" {
decltype(&GetStdHandle) __imp_GetStdHandle = FakeGetStdHandle;
decltype(&GetConsoleMode) __imp_GetConsoleMode = FakeGetConsoleMode;
decltype(&SetConsoleMode) __imp_SetConsoleMode = FakeSetConsoleMode;
}

namespace {

TEST(ConsoleMode, QuickEditIsDisabledAndTheOtherFlagsKept) {
    console = {.mode = 0x1F7};
    SwitchQuickEditOff();
    EXPECT_EQ(console.mode, 0x1B7U);
    console = {.mode = 0x47};
    SwitchQuickEditOff();
    EXPECT_EQ(console.mode, 0x87U) << "the extended flag is what makes Windows take the change";
}

TEST(ConsoleMode, AConsoleWithoutQuickEditIsNotChanged) {
    console = {.mode = 0x1B7};
    SwitchQuickEditOff();
    EXPECT_EQ(console.changes, 0);
}

TEST(ConsoleMode, AStandardInputThatIsNotAConsoleIsNotChanged) {
    for (const HANDLE input : {HANDLE(nullptr), INVALID_HANDLE_VALUE}) {
        console = {.input = input, .mode = 0x47};
        SwitchQuickEditOff();
        EXPECT_EQ(console.changes, 0);
    }
    console = {.is_console = false, .mode = 0x47};
    SwitchQuickEditOff();
    EXPECT_EQ(console.changes, 0);
}

TEST(ConsoleMode, IsChangedOnceWithTheFirstUseOfTheLog) {
    console = {.mode = 0x47};
    Logger& logger = Logger::instance();
    EXPECT_EQ(console.changes, 1);
    console.mode = 0x47;
    EXPECT_EQ(&Logger::instance(), &logger);
    EXPECT_EQ(console.changes, 1);
}

}  // namespace
