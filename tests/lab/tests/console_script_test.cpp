#include "tests/lab/console/console_script.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>

namespace {

lab::ConsoleScript Read(const std::string& text) {
    std::istringstream file(text);
    return lab::ReadConsoleScript(file);
}

std::string ErrorOf(const std::string& text) {
    try {
        Read(text);
    } catch (const lab::ConsoleScriptError& error) {
        return error.what();
    }
    return "none";
}

TEST(ConsoleScript, AnEmptyScriptIsANewWindowWithoutAPerson) {
    const lab::ConsoleScript script = Read("# nobody\n\n");
    EXPECT_EQ(script.input_mode, 0x1F7U);
    EXPECT_EQ(script.output_mode, 0x3U);
    EXPECT_TRUE(script.virtual_terminal);
    EXPECT_TRUE(script.steps.empty());
}

TEST(ConsoleScript, DescribesTheConsoleThatTheProgramFinds) {
    const lab::ConsoleScript script = Read(
        "input mode 0x87\noutput mode 7\ncode page 437\ncolumns 40\nprocesses 2\nhandlers after 300 ms\n"
        "title C:\\\\a b.exe\nwithout virtual terminal\nwith times\n");
    EXPECT_EQ(script.input_mode, 0x87U);
    EXPECT_EQ(script.output_mode, 7U);
    EXPECT_EQ(script.code_page, 437U);
    EXPECT_EQ(script.columns, 40);
    EXPECT_EQ(script.processes, 2);
    EXPECT_EQ(script.handlers_after_milliseconds, 300);
    EXPECT_EQ(script.title, "C:\\a b.exe");
    EXPECT_FALSE(script.virtual_terminal);
    EXPECT_TRUE(script.clock_is_shown);
}

TEST(ConsoleScript, ListsWhatThePersonDoesInOrder) {
    using Kind = lab::ConsoleStep::Kind;
    const lab::ConsoleScript script =
        Read("sees Ready?\nreads\ntypes s\\r\\x1A\npresses Ctrl-C\nclicks\ncloses\n");
    ASSERT_EQ(script.steps.size(), 6U);
    EXPECT_EQ(script.steps[0].kind, Kind::kSees);
    EXPECT_EQ(script.steps[0].text, "Ready?");
    EXPECT_EQ(script.steps[1].kind, Kind::kReads);
    EXPECT_EQ(script.steps[2].kind, Kind::kTypes);
    EXPECT_EQ(script.steps[2].text, "s\r\x1A");
    EXPECT_EQ(script.steps[3].kind, Kind::kCtrlC);
    EXPECT_EQ(script.steps[4].kind, Kind::kClicks);
    EXPECT_EQ(script.steps[5].kind, Kind::kCloses);
}

TEST(ConsoleScript, ReportsWhatIsWrongAndWhere) {
    EXPECT_EQ(ErrorOf("reads\nsings"), "line 2: unknown statement: sings");
    EXPECT_EQ(ErrorOf("sees"), "line 1: a text is missing");
    EXPECT_EQ(ErrorOf("reads twice"), "line 1: nothing belongs behind it: twice");
    EXPECT_EQ(ErrorOf("with times now"), "line 1: nothing belongs behind it: now");
    EXPECT_EQ(ErrorOf("columns many"), "line 1: no number: many");
    EXPECT_EQ(ErrorOf("columns 4x"), "line 1: no number: 4x");
    EXPECT_EQ(ErrorOf("handlers after 3 s"), "line 1: no milliseconds: 3 s");
    EXPECT_EQ(ErrorOf("types \\q"), "line 1: unknown escape in \\q");
    EXPECT_EQ(ErrorOf("types \\x1"), "line 1: unknown escape in \\x1");
}

}  // namespace
