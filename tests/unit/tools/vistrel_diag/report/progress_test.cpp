#include "tools/vistrel_diag/report/progress.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <string>
#include <vector>

#include "tests/unit/tools/vistrel_diag/report/console_input.h"
#include "tools/vistrel_diag/report/console.h"
#include "tools/vistrel_diag/report/report.h"

namespace {

struct Shown {
    std::string text;  ///< everything written
    std::vector<std::string> titles;
    std::vector<std::string> taskbar;
    int columns = 80;
};

Shown& Seen() {
    static Shown shown;
    return shown;
}

std::string TaskbarText(Progress::Taskbar state, int percent) {
    switch (state) {
        case Progress::Taskbar::Nothing:
            return "nothing";
        case Progress::Taskbar::Busy:
            return "busy";
        case Progress::Taskbar::Part:
            return std::to_string(percent) + "%";
    }
    return "";
}

constexpr Progress::Display kDisplay = {
    [] { return Seen().columns; },
    [](std::string_view title) { Seen().titles.emplace_back(title); },
    [](Progress::Taskbar state, int percent) { Seen().taskbar.push_back(TaskbarText(state, percent)); },
};

/// The text as a terminal shows it: the final state of each line.
std::vector<std::string> ScreenOf(const std::string& text) {
    std::vector<std::string> lines(1);
    std::size_t column = 0;
    for (const char character : text) {
        if (character == '\n') {
            lines.emplace_back();
        }
        if (character == '\n' || character == '\r') {
            column = 0;
            continue;
        }
        std::string& line = lines.back();
        line.resize(std::max(line.size(), column + 1), ' ');
        line[column++] = character;
    }
    for (std::string& line : lines) {
        line.erase(line.find_last_not_of(' ') + 1);
    }
    return lines;
}

class ProgressOnAConsole : public testing::Test {
  protected:
    void SetUp() override {
        SetConsoleWriter([](std::string_view text) { Seen().text += text; });
        Seen() = {};
        Progress::SetDisplay(&kDisplay);
        Seen().titles.clear();
    }
    void TearDown() override {
        Progress::SetDisplay(nullptr);
        SetConsoleWriter(nullptr);
    }
    static std::string LastLine() { return ScreenOf(Seen().text).back(); }
};

TEST_F(ProgressOnAConsole, ShowsWhatIsDone) {
    Progress::Show("Asking the OpenXR runtime");
    EXPECT_EQ(LastLine(), "  Asking the OpenXR runtime ...");
    EXPECT_EQ(Seen().titles.back(), "Vistrel diagnostic - Asking the OpenXR runtime");
    EXPECT_EQ(Seen().taskbar.back(), "busy");
}

TEST_F(ProgressOnAConsole, ShowsSteps) {
    Progress::Show("Depth model", 5, 12);
    EXPECT_EQ(LastLine(), "  Depth model 5 of 12 ...");
    EXPECT_EQ(Seen().titles.back(), "Vistrel diagnostic - Depth model 5 of 12");
    EXPECT_EQ(Seen().taskbar.back(), "33%");
    Progress::Show("Warp at size", 3, 3, "1920x1080");
    EXPECT_EQ(LastLine(), "  Warp at size 3 of 3: 1920x1080 ...");
    EXPECT_EQ(Seen().taskbar.back(), "66%");
}

TEST_F(ProgressOnAConsole, ShowsSecondsLeft) {
    Progress::ShowSecondsLeft("Capturing the desktop", 3.0, 3.0);
    EXPECT_EQ(LastLine(), "  Capturing the desktop, 3 s left ...");
    EXPECT_EQ(Seen().taskbar.back(), "0%");
    Progress::ShowSecondsLeft("Capturing the desktop", 1.01, 3.0);
    EXPECT_EQ(LastLine(), "  Capturing the desktop, 2 s left ...");
    EXPECT_EQ(Seen().taskbar.back(), "33%");
    Progress::ShowSecondsLeft("Capturing the desktop", -0.5, 3.0);
    EXPECT_EQ(LastLine(), "  Capturing the desktop, 0 s left ...");
    EXPECT_EQ(Seen().taskbar.back(), "100%");
}

TEST_F(ProgressOnAConsole, HandlesSecondsThatAreNotATime) {
    constexpr double kNoNumber = std::numeric_limits<double>::quiet_NaN();
    constexpr double kInfinite = std::numeric_limits<double>::infinity();
    Progress::ShowSecondsLeft("Waiting", kNoNumber, kNoNumber);
    EXPECT_EQ(LastLine(), "  Waiting, 0 s left ...");
    EXPECT_EQ(Seen().taskbar.back(), "0%");
    Progress::ShowSecondsLeft("Waiting", kInfinite, kInfinite);
    EXPECT_EQ(LastLine(), "  Waiting, 86400 s left ...");
    Progress::ShowSecondsLeft("Waiting", 0.0, 0.0);
    EXPECT_EQ(LastLine(), "  Waiting, 0 s left ...");
}

TEST_F(ProgressOnAConsole, IsRedrawnOnlyWhenItChanges) {
    Progress::ShowSecondsLeft("Capturing", 2.9, 3.0);
    const Shown before = Seen();
    Progress::ShowSecondsLeft("Capturing", 2.1, 3.0);
    EXPECT_EQ(Seen().text, before.text);
    EXPECT_EQ(Seen().titles, before.titles);
    EXPECT_EQ(Seen().taskbar, before.taskbar);
    Progress::ShowSecondsLeft("Capturing", 2.0, 3.0);
    EXPECT_NE(Seen().text, before.text);
}

TEST_F(ProgressOnAConsole, TheNextOutputReplacesIt) {
    ConsolePrint("First.\n");
    Progress::Show("Something long that takes its time");
    ConsolePrint("Second.\n");
    EXPECT_EQ(ScreenOf(Seen().text), (std::vector<std::string>{"First.", "Second.", ""}));
    Progress::Show("Something long that takes its time");
    EXPECT_EQ(LastLine(), "  Something long that takes its time ...") << "shown again, though it is the same";
}

TEST_F(ProgressOnAConsole, AShorterTextLeavesNothingOfALongerOne) {
    Progress::Show("Something long that takes its time");
    Progress::Show("Short");
    EXPECT_EQ(LastLine(), "  Short ...");
}

TEST_F(ProgressOnAConsole, IsTruncatedToTheWindow) {
    Seen().columns = 20;
    Progress::Show("Something long that takes its time");
    EXPECT_EQ(LastLine(), "  Something long th") << "19 columns: the last one would wrap";
    for (const int columns : {0, 1, -5}) {
        Seen().columns = columns;
        Progress::Show("Another");
        EXPECT_EQ(LastLine(), "") << columns;
        EXPECT_EQ(Seen().titles.back(), "Vistrel diagnostic - Another");
        Progress::Clear();
    }
}

TEST_F(ProgressOnAConsole, AnUnfinishedLineIsNotOverwritten) {
    ConsolePrint("Waiting..");
    Progress::Show("Asking the OpenXR runtime");
    EXPECT_EQ(LastLine(), "Waiting..");
    EXPECT_EQ(Seen().titles.back(), "Vistrel diagnostic - Asking the OpenXR runtime");
    ConsolePrint("\n");
    Progress::Show("Asking the OpenXR runtime");
    EXPECT_EQ(LastLine(), "  Asking the OpenXR runtime ...");
}

TEST_F(ProgressOnAConsole, MayFollowALineThatIsOverwritten) {
    ConsolePrint("  measuring 1920x1080 ...\r");
    Progress::Show("Warp at size", 1, 3, "1920x1080");
    EXPECT_EQ(LastLine(), "  Warp at size 1 of 3: 1920x1080 ...");
    ConsolePrint("%35s\r", "");
    EXPECT_EQ(LastLine(), "");
}

TEST_F(ProgressOnAConsole, ANewSectionAndAPromptEndIt) {
    Progress::Show("Depth model", 12, 12);
    Report::EnterSection("VERDICT");
    EXPECT_EQ(LastLine(), "");
    EXPECT_EQ(Seen().titles.back(), "Vistrel diagnostic");
    EXPECT_EQ(Seen().taskbar.back(), "nothing");
    Progress::Show("Depth model", 12, 12);
    const ConsoleInput input("\n");
    WaitForEnter("\nPress Enter to close.\n");
    EXPECT_EQ(Seen().taskbar.back(), "nothing");
}

TEST_F(ProgressOnAConsole, ADisplayIsClearedBeforeItIsRemoved) {
    Progress::Show("Depth model", 2, 12);
    Progress::SetDisplay(nullptr);
    EXPECT_EQ(LastLine(), "");
    EXPECT_EQ(Seen().taskbar.back(), "nothing");
    const Shown before = Seen();
    Progress::Show("Depth model", 3, 12);
    Progress::Clear();
    EXPECT_EQ(Seen().text, before.text);
    EXPECT_EQ(Seen().titles, before.titles);
}

TEST(Progress, IsNotWrittenToAPipe) {
    testing::internal::CaptureStdout();
    Progress::Show("Depth model", 1, 12);
    Progress::ShowSecondsLeft("Capturing", 1, 2);
    ShowTransientLine("line");
    Progress::Clear();
    std::fflush(stdout);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
}

}  // namespace
