#include "tools/vistrel_diag/report/console_state.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <algorithm>
#include <string>
#include <vector>

#include "tools/vistrel_diag/report/console.h"
#include "tools/vistrel_diag/report/progress.h"

// The console of this program: the functions of Windows are replaced by these.
namespace {

const HANDLE kInput = reinterpret_cast<HANDLE>(0x40);
const HANDLE kOutput = reinterpret_cast<HANDLE>(0x44);

struct FakeConsole {
    bool is_input = true;
    bool is_output = true;
    DWORD input_mode = 0x1F7;
    DWORD output_mode = 0x3;
    DWORD processes = 1;
    bool virtual_terminal = true;
    std::wstring title = L"found";
    std::wstring written;
    std::vector<PHANDLER_ROUTINE> handlers;
};

FakeConsole& Console() {
    static FakeConsole console;
    return console;
}

HANDLE WINAPI FakeGetStdHandle(DWORD which) {
    return which == STD_INPUT_HANDLE ? kInput : kOutput;
}

BOOL WINAPI FakeGetMode(HANDLE handle, LPDWORD mode) {
    *mode = handle == kInput ? Console().input_mode : Console().output_mode;
    return handle == kInput ? Console().is_input : Console().is_output;
}

BOOL WINAPI FakeSetMode(HANDLE handle, DWORD mode) {
    if (handle == kOutput && !Console().virtual_terminal && (mode & 0x4) != 0) {
        return FALSE;
    }
    (handle == kInput ? Console().input_mode : Console().output_mode) = mode;
    return TRUE;
}

BOOL WINAPI FakeWrite(HANDLE, const VOID* text, DWORD units, LPDWORD written, LPVOID) {
    const std::wstring shown(static_cast<const wchar_t*>(text), units);
    EXPECT_TRUE(shown.front() != L'\x1B' || (Console().output_mode & 0x4) != 0) << "nobody obeys it";
    Console().written += shown;
    *written = units;
    return TRUE;
}

DWORD WINAPI FakeProcessList(LPDWORD, DWORD) {
    return Console().processes;
}

DWORD WINAPI FakeGetTitle(LPWSTR title, DWORD size) {
    title[Console().title.copy(title, size - 1)] = L'\0';
    return static_cast<DWORD>(Console().title.size());
}

BOOL WINAPI FakeSetTitle(LPCWSTR title) {
    Console().title = title;
    return TRUE;
}

BOOL WINAPI FakeScreenInfo(HANDLE, PCONSOLE_SCREEN_BUFFER_INFO info) {
    *info = {};
    info->dwSize.X = 200;
    info->srWindow.Right = 29;
    return TRUE;
}

BOOL WINAPI FakeSetHandler(PHANDLER_ROUTINE handler, BOOL add) {
    std::vector<PHANDLER_ROUTINE>& handlers = Console().handlers;
    if (add != FALSE) {
        handlers.push_back(handler);
    } else {
        handlers.erase(std::remove(handlers.begin(), handlers.end(), handler), handlers.end());
    }
    return TRUE;
}

}  // namespace

extern "C" {
decltype(&GetStdHandle) __imp_GetStdHandle = FakeGetStdHandle;
decltype(&GetConsoleMode) __imp_GetConsoleMode = FakeGetMode;
decltype(&SetConsoleMode) __imp_SetConsoleMode = FakeSetMode;
decltype(&WriteConsoleW) __imp_WriteConsoleW = FakeWrite;
decltype(&GetConsoleProcessList) __imp_GetConsoleProcessList = FakeProcessList;
decltype(&GetConsoleTitleW) __imp_GetConsoleTitleW = FakeGetTitle;
decltype(&SetConsoleTitleW) __imp_SetConsoleTitleW = FakeSetTitle;
decltype(&GetConsoleScreenBufferInfo) __imp_GetConsoleScreenBufferInfo = FakeScreenInfo;
decltype(&SetConsoleCtrlHandler) __imp_SetConsoleCtrlHandler = FakeSetHandler;
}

namespace {

class ConsoleStateTest : public testing::Test {
  protected:
    ConsoleStateTest() { Console() = {}; }
};

TEST_F(ConsoleStateTest, ChangesTheConsoleAndRestoresIt) {
    {
        const ConsoleState state;
        EXPECT_EQ(Console().input_mode, 0x1B7U);
        EXPECT_EQ(Console().output_mode, 0x3U);
        EXPECT_EQ(Console().title, L"Vistrel diagnostic");
    }
    EXPECT_EQ(Console().input_mode, 0x1F7U);
    EXPECT_EQ(Console().title, L"found");
    EXPECT_TRUE(Console().handlers.empty());
}

TEST_F(ConsoleStateTest, RestoresQuickEditWithTheFlagThatWindowsRequires) {
    Console().input_mode = 0x47;
    { const ConsoleState state; }
    EXPECT_EQ(Console().input_mode, 0xC7U);
}

TEST_F(ConsoleStateTest, ReadsWholeLinesOnAConsoleThatGaveSingleKeys) {
    Console().input_mode = 0x98;
    {
        const ConsoleState state;
        EXPECT_EQ(Console().input_mode, 0x9FU);
    }
    EXPECT_EQ(Console().input_mode, 0x98U);
}

TEST_F(ConsoleStateTest, DoesNotChangePipes) {
    Console().is_input = Console().is_output = false;
    const FakeConsole before = Console();
    {
        const ConsoleState state;
        Progress::Show("Something");
        EXPECT_EQ(Console().input_mode, before.input_mode);
        EXPECT_EQ(Console().title, before.title);
        EXPECT_EQ(Console().written, L"");
        EXPECT_FALSE(BeginToWatchForEnter());
    }
    PutConsoleBack();
    EXPECT_EQ(Console().title, before.title);
    EXPECT_EQ(Console().written, L"");
}

TEST_F(ConsoleStateTest, ShowsProgressAsWideAsTheWindowIs) {
    const ConsoleState state;
    Progress::Show("Something that is longer than that", 1, 2);
    EXPECT_EQ(Console().title, L"Vistrel diagnostic - Something that is longer than that 1 of 2");
    EXPECT_EQ(Console().written, L"\x1B]9;4;1;0\x1B\\  Something that is longer th\r");
    EXPECT_EQ(Console().output_mode, 0x3U) << "sequences are obeyed while one is written, and no longer";
}

TEST_F(ConsoleStateTest, WritesNoSequenceToAConsoleThatDoesNotSupportThem) {
    Console().virtual_terminal = false;
    const ConsoleState state;
    Progress::Show("Something");
    EXPECT_EQ(Console().written, L"  Something ...\r");
}

TEST_F(ConsoleStateTest, IsRestoredOnceOnACrashAndShowsNothingMore) {
    const ConsoleState state;
    Progress::Show("Something");
    Console().written.clear();
    for (const PHANDLER_ROUTINE handler : Console().handlers) {
        EXPECT_FALSE(handler(CTRL_C_EVENT));
    }
    EXPECT_EQ(Console().input_mode, 0x1F7U);
    EXPECT_EQ(Console().title, L"found");
    EXPECT_EQ(Console().written, L"\x1B]9;4;0;0\x1B\\");

    Console().input_mode = 0x7;  // A later change by other code is kept.
    Console().title = L"another";
    Console().written.clear();
    PutConsoleBack();
    Progress::Show("Something else");
    EXPECT_EQ(Console().input_mode, 0x7U);
    EXPECT_EQ(Console().title, L"another");
    EXPECT_EQ(Console().written.find(L'\x1B'), std::wstring::npos);
}

TEST_F(ConsoleStateTest, RecognisesAConsoleOfOurOwn) {
    EXPECT_FALSE(HasConsoleOfItsOwn());
    {
        const ConsoleState state;
        EXPECT_TRUE(HasConsoleOfItsOwn());
    }
    EXPECT_FALSE(HasConsoleOfItsOwn());
}

TEST_F(ConsoleStateTest, ASharedConsoleAndAPipeAreNotOurOwn) {
    Console().processes = 2;
    {
        const ConsoleState state;
        EXPECT_FALSE(HasConsoleOfItsOwn());
    }
    Console() = {};
    Console().is_input = false;
    {
        const ConsoleState state;
        EXPECT_FALSE(HasConsoleOfItsOwn());
    }
    Console() = {};
    Console().is_output = false;
    {
        const ConsoleState state;
        EXPECT_FALSE(HasConsoleOfItsOwn());
    }
}

}  // namespace
