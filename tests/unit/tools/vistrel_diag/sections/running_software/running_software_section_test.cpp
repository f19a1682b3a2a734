#include "tools/vistrel_diag/sections/running_software/running_software_section.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/unit/support/report_capture.h"

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr const char* kNothingNotable = "Nothing notable - no Vistrel, no SteamVR, no capture software.\n";
constexpr const char* kWarning =
    "\n"
    "!! Vistrel IS RUNNING. That changes how to read everything below:\n"
    "!!   - screen capture will fail, because Vistrel already holds it\n"
    "!!   - the warp and inference timings are inflated by competing with it for the GPU\n"
    "!! For clean timings, close Vistrel and run this again.\n";

ProcessSnapshot Processes(const std::vector<std::string>& names) {
    ProcessSnapshot processes;
    for (const std::string& name : names) {
        processes.push_back({static_cast<std::uint32_t>(4 * (processes.size() + 1)), name});
    }
    return processes;
}

std::string Printed(const RunningSoftwareInfo& software) {
    const ReportCapture report;
    PrintRunningSoftwareSection(software);
    return report.Text();
}

TEST(NotablePrograms, RecognisesAllTen) {
    const std::vector<std::string> all = {"Ambulo.exe",       "Vistrel.exe",   "vrserver.exe",
                                          "vrcompositor.exe", "vrmonitor.exe", "VirtualDesktop.Streamer.exe",
                                          "OculusClient.exe", "obs64.exe",     "obs32.exe",
                                          "Parsec.exe"};
    EXPECT_EQ(NotablePrograms(Processes(all)), all);
}

TEST(NotablePrograms, KeepsTheOrderAndSpellingOfTheSnapshotAndListsEachProcess) {
    EXPECT_THAT(NotablePrograms(Processes({"System", "obs64.exe", "VRSERVER.EXE", "explorer.exe", "OBS64.exe",
                                           "ambulo.EXE", "obs64.exe"})),
                ElementsAre("obs64.exe", "VRSERVER.EXE", "OBS64.exe", "ambulo.EXE", "obs64.exe"));
}

TEST(NotablePrograms, ComparesWholeNames) {
    EXPECT_THAT(NotablePrograms(Processes({"", "vistrel_diag.exe", "obs.exe", "vrserver", "vrserver.exe.bak",
                                           "xParsec.exe", " Parsec.exe"})),
                IsEmpty());
}

TEST(NotablePrograms, AreEmptyWithoutASnapshot) {
    EXPECT_THAT(NotablePrograms(std::nullopt), IsEmpty());
    EXPECT_THAT(NotablePrograms(ProcessSnapshot()), IsEmpty());
}

TEST(ExecutableNameOf, FindsTheProcessById) {
    const ProcessSnapshot processes = Processes({"a.exe", "b.exe"});
    EXPECT_EQ(ExecutableNameOf(8, processes), "b.exe");
    EXPECT_EQ(ExecutableNameOf(9, processes), "");
    EXPECT_EQ(ExecutableNameOf(8, std::nullopt), "");
}

TEST(WindowTitleText, ConvertsToUtf8) {
    EXPECT_EQ(WindowTitleText(u""), "");
    EXPECT_EQ(WindowTitleText(u"ゲーム 🎮"), "ゲーム 🎮");
}

TEST(WindowTitleText, OmitsTheCharacterThatTheBufferSplit) {
    EXPECT_EQ(WindowTitleText(u"game \xD83C"), "game ");
    EXPECT_EQ(WindowTitleText(u"\xD83C"), "");
}

TEST(WindowTitleText, KeepsTheTextAroundAnUnpairedSurrogate) {
    EXPECT_EQ(WindowTitleText(u"a\xDFAE"), "a\xEF\xBF\xBD");
    EXPECT_EQ(WindowTitleText(u"a\xD83Cz"), "a\xEF\xBF\xBDz");
}

TEST(IsVistrelRunning, IsTrueForTheProductOrItsHostInAnyCase) {
    const auto running = [](const std::vector<std::string>& names) {
        return IsVistrelRunning([&names] { return Processes(names); });
    };
    EXPECT_TRUE(running({"System", "Vistrel.exe"}));
    EXPECT_TRUE(running({"AMBULO.EXE"}));
    EXPECT_FALSE(running({"vrserver.exe", "vistrel_diag.exe", "Vistrel.exe2"}));
    EXPECT_FALSE(running({}));
}

TEST(IsVistrelRunning, IsFalseWithoutASnapshot) {
    EXPECT_FALSE(IsVistrelRunning([] { return std::optional<ProcessSnapshot>(); }));
}

/// A machine on which the product closes after some seconds, and whose snapshots may fail.
class ScriptedMachine {
  public:
    int closes_after_seconds = 1000;
    int snapshots_fail_after_seconds = 1000;

    /// What the console shows of the wait.
    std::string ConsoleOfWait() {
        ::testing::internal::CaptureStdout();
        WaitForVistrelToClose([this] { return Snapshot(); }, [this] { ++seconds_; });
        return ::testing::internal::GetCapturedStdout();
    }

    int Seconds() const { return seconds_; }
    int Snapshots() const { return snapshots_; }

  private:
    std::optional<ProcessSnapshot> Snapshot() {
        ++snapshots_;
        if (seconds_ >= snapshots_fail_after_seconds) {
            return std::nullopt;
        }
        return seconds_ < closes_after_seconds ? Processes({"System", "Ambulo.exe"}) : Processes({"System"});
    }

    int seconds_ = 0;
    int snapshots_ = 0;
};

constexpr const char* kWaiting =
    "\n  Vistrel is running. It holds the screen capture, so please close it now.\n  Waiting";
constexpr const char* kClosed = "\n  Closed, thank you. Continuing.\n";
constexpr const char* kStillRunning = "\n  Still running - carrying on anyway; the report will say so.\n";

TEST(WaitForVistrelToClose, PrintsADotForEverySecondItStaysOpen) {
    ScriptedMachine machine;
    machine.closes_after_seconds = 5;
    EXPECT_EQ(machine.ConsoleOfWait(), std::string(kWaiting) + "....." + kClosed);
    EXPECT_EQ(machine.Seconds(), 5);
}

TEST(WaitForVistrelToClose, PrintsNoDotWhenItHasJustClosed) {
    ScriptedMachine machine;
    machine.closes_after_seconds = 0;
    EXPECT_EQ(machine.ConsoleOfWait(), std::string(kWaiting) + kClosed);
    EXPECT_EQ(machine.Seconds(), 0);
}

TEST(WaitForVistrelToClose, GivesUpAfterSixtyDots) {
    ScriptedMachine machine;
    EXPECT_EQ(machine.ConsoleOfWait(), std::string(kWaiting) + std::string(60, '.') + kStillRunning);
    EXPECT_EQ(machine.Seconds(), 60);
    EXPECT_EQ(machine.Snapshots(), 61);
}

TEST(WaitForVistrelToClose, LooksOnceMoreAfterTheLastDot) {
    ScriptedMachine machine;
    machine.closes_after_seconds = 60;
    EXPECT_EQ(machine.ConsoleOfWait(), std::string(kWaiting) + std::string(60, '.') + kClosed);
}

TEST(WaitForVistrelToClose, EndsWhenNoSnapshotCanBeTaken) {
    ScriptedMachine machine;
    machine.snapshots_fail_after_seconds = 3;
    EXPECT_EQ(machine.ConsoleOfWait(), std::string(kWaiting) + "..." + kClosed);
}

TEST(WaitForVistrelToClose, PrintsNothingToTheReport) {
    const ReportCapture report;
    ScriptedMachine machine;
    machine.closes_after_seconds = 2;
    machine.ConsoleOfWait();
    EXPECT_EQ(report.FileText(), "");
}

TEST(PrintRunningSoftwareSection, ReportsThatNothingNotableRuns) {
    EXPECT_EQ(Printed({}), kNothingNotable);
}

TEST(PrintRunningSoftwareSection, ListsTheProgramsWithoutWarningWhenTheProductIsNotAmongThem) {
    EXPECT_EQ(Printed({{"VRSERVER.EXE", "obs64.exe", "obs64.exe"}, std::nullopt}),
              "  VRSERVER.EXE\n  obs64.exe\n  obs64.exe\n");
}

TEST(PrintRunningSoftwareSection, NamesTheForegroundApplication) {
    EXPECT_EQ(Printed({{}, ForegroundApplication{"game.exe", "ゲーム \"100%s\""}}),
              std::string(kNothingNotable) + "Foreground app  : game.exe  \"ゲーム \"100%s\"\"\n");
    EXPECT_EQ(Printed({{}, ForegroundApplication()}),
              std::string(kNothingNotable) + "Foreground app  :   \"\"\n");
}

TEST(PrintRunningSoftwareSection, WarnsAfterTheForegroundApplicationWhenTheProductRuns) {
    EXPECT_EQ(Printed({{"vrserver.exe", "VISTREL.exe"}, ForegroundApplication{"a.exe", "A"}}),
              "  vrserver.exe\n  VISTREL.exe\nForeground app  : a.exe  \"A\"\n" + std::string(kWarning));
}

TEST(PrintRunningSoftwareSection, WarnsWhenOnlyTheHostRuns) {
    EXPECT_EQ(Printed({{"Ambulo.exe"}, std::nullopt}), "  Ambulo.exe\n" + std::string(kWarning));
}

}  // namespace
