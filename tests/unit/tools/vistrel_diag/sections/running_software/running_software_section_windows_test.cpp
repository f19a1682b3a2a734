// Real processes under the names that matter, and real windows.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <windows.h>

#include <optional>
#include <string>

#include "tests/unit/support/report_capture.h"
#include "tests/unit/support/running_program.h"
#include "tools/vistrel_diag/sections/running_software/running_software_section.h"

// The foreground window that the program sees: the real one, unless a test sets another.
namespace {

std::optional<HWND> scripted_foreground;

HWND WINAPI ForegroundWindow() {
    return scripted_foreground ? *scripted_foreground
                               : reinterpret_cast<HWND(WINAPI*)()>(GetProcAddress(
                                     GetModuleHandleW(L"user32.dll"), "GetForegroundWindow"))();
}

}  // namespace

extern "C" {
decltype(&GetForegroundWindow) __imp_GetForegroundWindow = ForegroundWindow;
}

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::UnorderedElementsAre;

std::vector<std::string> RunningNotablePrograms() {
    return ProbeRunningSoftware().notable;
}

TEST(RunningSoftwareProbe, FindsNothingWhileNothingNotableRuns) {
    EXPECT_THAT(RunningNotablePrograms(), IsEmpty());
    EXPECT_FALSE(IsVistrelRunning());
    const ReportCapture report;
    ReportRunningSoftwareSection();
    EXPECT_EQ(report.Text().substr(0, 131),
              "\n== WHAT ELSE WAS RUNNING DURING THIS TEST " + std::string(24, '=') +
                  "\nNothing notable - no Vistrel, no SteamVR, no capture software.\n");
}

TEST(RunningSoftwareProbe, ListsAProgramThatRunsTwiceTwice) {
    const RunningProgram first(L"sleeper", L"obs64.exe", L"60");
    const RunningProgram second(L"sleeper", L"obs64.exe", L"60");
    EXPECT_THAT(RunningNotablePrograms(), ElementsAre("obs64.exe", "obs64.exe"));
    EXPECT_FALSE(IsVistrelRunning());
}

TEST(RunningSoftwareProbe, SpellsNamesAsTheProcessesDo) {
    const RunningProgram server(L"sleeper", L"VRSERVER.EXE", L"60");
    const RunningProgram streamer(L"sleeper", L"virtualdesktop.streamer.EXE", L"60");
    const RunningProgram other(L"sleeper", L"ゲーム.exe", L"60");
    EXPECT_THAT(RunningNotablePrograms(),
                UnorderedElementsAre("VRSERVER.EXE", "virtualdesktop.streamer.EXE"));
    EXPECT_FALSE(IsVistrelRunning());
}

TEST(RunningSoftwareProbe, TreatsTheHostAsTheProduct) {
    const RunningProgram host(L"sleeper", L"ambulo.EXE", L"60");
    EXPECT_TRUE(IsVistrelRunning());
    const ReportCapture report;
    ReportRunningSoftwareSection();
    const std::string text = report.Text();
    EXPECT_NE(text.find("\n  ambulo.EXE\n"), std::string::npos) << text;
    const std::string last_line = "\n!! For clean timings, close Vistrel and run this again.\n";
    EXPECT_EQ(text.substr(text.size() - last_line.size()), last_line);
}

TEST(RunningSoftwareProbe, WaitsUntilTheProductHasClosed) {
    const RunningProgram product(L"sleeper", L"Vistrel.exe", L"2.5");
    ::testing::internal::CaptureStdout();
    WaitForVistrelToClose();
    const std::string console = ::testing::internal::GetCapturedStdout();
    const std::size_t first_dot = console.rfind("  Waiting.") + 9;
    const std::size_t dots = console.find_first_not_of('.', first_dot) - first_dot;
    // One a second; the program was started a moment before, on a machine that may be busy.
    EXPECT_GE(dots, 1U) << console;
    EXPECT_LE(dots, 3U) << console;
    EXPECT_EQ(console.substr(first_dot + dots), "\n  Closed, thank you. Continuing.\n");
    EXPECT_FALSE(IsVistrelRunning());
}

/// The foreground application while a window of that title is in the foreground.
ForegroundApplication WhileInForeground(const std::wstring& name, const std::wstring& arguments) {
    const RunningProgram program(L"titled_window", name, arguments);
    EXPECT_TRUE(program.WaitForForeground());
    return ProbeRunningSoftware().foreground.value_or(ForegroundApplication{"(none)", "(none)"});
}

TEST(ForegroundApplicationProbe, ReadsATitleInJapanese) {
    const ForegroundApplication application = WhileInForeground(L"ゲーム.exe", L"60 \"ゲームの時間 🎮\"");
    EXPECT_EQ(application.executable_name, "ゲーム.exe");
    EXPECT_EQ(application.title, "ゲームの時間 🎮");
}

TEST(ForegroundApplicationProbe, CutsALongTitle) {
    const ForegroundApplication application = WhileInForeground(L"long title.exe", L"60 é 600");
    std::string expected;
    for (int i = 0; i < 511; ++i) {
        expected += "é";
    }
    EXPECT_EQ(application.title, expected);
    EXPECT_EQ(application.executable_name, "long title.exe");
}

TEST(ForegroundApplicationProbe, NeverSplitsACharacter) {
    std::string expected;
    for (int i = 0; i < 255; ++i) {
        expected += "🎮";
    }
    EXPECT_EQ(WhileInForeground(L"long title.exe", L"60 🎮 300").title, expected);
}

TEST(ForegroundApplicationProbe, AcceptsAWindowWithoutATitle) {
    const ForegroundApplication application = WhileInForeground(L"untitled.exe", L"60 \"\"");
    EXPECT_EQ(application.executable_name, "untitled.exe");
    EXPECT_EQ(application.title, "");
}

TEST(ForegroundApplicationProbe, KeepsTheTextAroundAnUnpairedSurrogateInATitle) {
    EXPECT_EQ(WhileInForeground(L"odd title.exe", L"60 \"a\xDC00z\"").title, "a\xEF\xBF\xBDz");
}

TEST(ForegroundApplicationProbe, IsReportedInQuotesAfterTheNotablePrograms) {
    const RunningProgram program(L"titled_window", L"obs32.exe", L"60 \"Aufnahme läuft\"");
    ASSERT_TRUE(program.WaitForForeground());
    const ReportCapture report;
    ReportRunningSoftwareSection();
    EXPECT_EQ(report.Text(), "\n== WHAT ELSE WAS RUNNING DURING THIS TEST " + std::string(24, '=') +
                                 "\n  obs32.exe\nForeground app  : obs32.exe  \"Aufnahme läuft\"\n");
}

TEST(ForegroundApplicationProbe, IsEmptyWithoutAForegroundWindow) {
    scripted_foreground = HWND();
    EXPECT_FALSE(ProbeRunningSoftware().foreground);
    const ReportCapture report;
    ReportRunningSoftwareSection();
    EXPECT_EQ(report.Text().find("Foreground app"), std::string::npos);
    scripted_foreground.reset();
}

TEST(ForegroundApplicationProbe, IsEmptyForAClosedWindow) {
    scripted_foreground = reinterpret_cast<HWND>(0x7FFFFFF0);
    const std::optional<ForegroundApplication> foreground = ProbeRunningSoftware().foreground;
    scripted_foreground.reset();
    ASSERT_TRUE(foreground);
    EXPECT_EQ(foreground->executable_name, "");
    EXPECT_EQ(foreground->title, "");
}

}  // namespace
