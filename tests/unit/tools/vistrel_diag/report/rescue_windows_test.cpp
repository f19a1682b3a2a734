#include "tools/vistrel_diag/report/rescue.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace {

constexpr const char* kAccessViolation =
    "the program crashed in rescue_victim.exe (access violation, 0xC0000005)";
constexpr const char* kStackOverflow =
    "the program crashed in rescue_victim.exe (stack overflow, 0xC00000FD)";

std::filesystem::path VictimProgram() {
    wchar_t path[MAX_PATH] = {};
    GetModuleFileNameW(nullptr, path, MAX_PATH);
    return std::filesystem::path(path).parent_path() / "rescue_victim.exe";
}

class RescueTest : public testing::Test {
  protected:
    void SetUp() override {
        folder_ =
            std::filesystem::current_path() /
            (std::string("rescue_test_") + testing::UnitTest::GetInstance()->current_test_info()->name());
        std::filesystem::remove_all(folder_);
        std::filesystem::create_directories(folder_);
    }
    void TearDown() override {
        std::error_code still_in_use;  // Wine releases the folder of a process some time after its end.
        std::filesystem::remove_all(folder_, still_in_use);
    }

    /// Runs the victim in the test's own folder until it ends. Returns its exit code.
    DWORD RunVictim(const std::string& way) {
        std::wstring command =
            L"\"" + VictimProgram().wstring() + L"\" " + std::wstring(way.begin(), way.end());
        SECURITY_ATTRIBUTES inherited = {sizeof(inherited), nullptr, TRUE};
        HANDLE nowhere = CreateFileW(L"NUL", GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                     &inherited, OPEN_EXISTING, 0, nullptr);
        STARTUPINFOW startup = {};
        startup.cb = sizeof(startup);
        startup.dwFlags = STARTF_USESTDHANDLES;
        startup.hStdInput = startup.hStdOutput = startup.hStdError = nowhere;
        PROCESS_INFORMATION process = {};
        // Its own console, so that its console events reach no other process; without a window.
        const BOOL started = CreateProcessW(nullptr, command.data(), nullptr, nullptr, TRUE, CREATE_NO_WINDOW,
                                            nullptr, folder_.c_str(), &startup, &process);
        CloseHandle(nowhere);
        if (started == FALSE) {
            ADD_FAILURE() << "the victim did not start: " << GetLastError();
            return 0;
        }
        EXPECT_EQ(WaitForSingleObject(process.hProcess, 60000), WAIT_OBJECT_0) << way << " does not end";
        DWORD exit_code = 0;
        GetExitCodeProcess(process.hProcess, &exit_code);
        TerminateProcess(process.hProcess, 1);
        CloseHandle(process.hThread);
        CloseHandle(process.hProcess);
        return exit_code;
    }

    std::string ReportFile() const {
        std::ifstream file(folder_ / "vistrel_diag_report.txt", std::ios::binary);
        return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    }

    /// Compares the whole file, and shows only its end.
    void ExpectReport(const std::string& expected) const {
        const std::string found = WithoutPlace(ReportFile());
        EXPECT_TRUE(found == expected)
            << found.size() << " bytes instead of " << expected.size() << ", ending in:\n"
            << found.substr(found.size() - std::min<std::size_t>(found.size(), 300));
    }

    /// The report without the address in the module that crashed, which is different in every build.
    static std::string WithoutPlace(std::string report) {
        if (const std::size_t at = report.rfind(" at +0x"); at != std::string::npos) {
            EXPECT_NE(report[at + 7], '0');
            report.erase(at, report.find_first_not_of("0123456789ABCDEF", at + 7) - at);
        }
        return report;
    }

    /// The lines that the victim keeps before it crashes.
    static std::string KeptLines() {
        std::string text = "\r\n== GPUs " + std::string(58, '=') + "\r\n";
        for (int line = 0; line < 1000; ++line) {
            text += "line " + std::to_string(line) +
                    " of the report, long enough to fill the blocks it is kept in\r\n";
        }
        return text + "\r\n== HEADSET / OPENXR " + std::string(46, '=') + "\r\n";
    }

    static std::string CutShort(const std::string& cause) {
        return KeptLines() + "\r\n!! THIS RUN WAS CUT SHORT in the section \"HEADSET / OPENXR\": " + cause +
               ". Whatever would follow is missing.\r\n";
    }

    std::filesystem::path folder_;
};

TEST_F(RescueTest, ChangesNoByteOfAnOrdinaryRun) {
    EXPECT_EQ(RunVictim("ordinary"), 0U);
    ExpectReport(KeptLines() + "the last line\r\n");
}

TEST_F(RescueTest, AfterAnAccessViolation) {
    EXPECT_NE(RunVictim("access-violation"), 0U);
    ExpectReport(CutShort(kAccessViolation));
}

TEST_F(RescueTest, AfterAStackOverflow) {
    EXPECT_NE(RunVictim("stack-overflow"), 0U);
    ExpectReport(CutShort(kStackOverflow));
}

TEST_F(RescueTest, AfterAnAbort) {
    EXPECT_NE(RunVictim("abort"), 0U);
    ExpectReport(CutShort("the program aborted"));
}

TEST_F(RescueTest, AfterAnUncaughtException) {
    EXPECT_NE(RunVictim("uncaught-exception"), 0U);
    ExpectReport(CutShort("the program aborted"));
}

TEST_F(RescueTest, AfterACrashOnAThreadOfALibrary) {
    EXPECT_NE(RunVictim("other-thread"), 0U);
    ExpectReport(CutShort(kAccessViolation));
}

TEST_F(RescueTest, AfterAStackOverflowOnAThreadOfALibrary) {
    EXPECT_NE(RunVictim("stack-overflow-on-other-thread"), 0U);
    ExpectReport(CutShort(kStackOverflow));
}

TEST_F(RescueTest, AfterAStackOverflowWhileTheHeapIsLocked) {
    EXPECT_NE(RunVictim("stack-overflow-with-heap-locked"), 0U);
    ExpectReport(CutShort(kStackOverflow));
}

TEST_F(RescueTest, AfterAStackOverflowOnAThreadOfALibraryThatHasLockedTheHeap) {
    EXPECT_NE(RunVictim("stack-overflow-with-heap-locked-on-other-thread"), 0U);
    ExpectReport(CutShort(kStackOverflow));
}

TEST_F(RescueTest, AfterAnAbortInTheRuntimeOfWindows) {
    EXPECT_NE(RunVictim("universal-abort"), 0U);
    ExpectReport(CutShort("the program aborted"));
}

TEST_F(RescueTest, ReplacesALibrarysFilterWhenASectionBegins) {
    EXPECT_EQ(RunVictim("library-took-the-filter"), EXCEPTION_ACCESS_VIOLATION);
    ExpectReport(CutShort(kAccessViolation));
}

TEST_F(RescueTest, HoldsWholeLinesAfterACrashWithinALine) {
    EXPECT_NE(RunVictim("amid-lines"), 0U);
    std::string expected = KeptLines();
    const std::string found = WithoutPlace(ReportFile());
    const std::string end = CutShort(kAccessViolation).substr(expected.size());
    for (int line = 0; expected.size() + end.size() < found.size(); ++line) {
        const std::string number = std::to_string(line);
        expected += std::string(8 - number.size(), '0') + number + "\r\n";
    }
    ExpectReport(expected + end);
}

TEST_F(RescueTest, IsNotDisturbedByASecondCrash) {
    EXPECT_NE(RunVictim("crash-upon-crash"), 0U);
    ExpectReport(CutShort(kAccessViolation));
    EXPECT_NE(RunVictim("abort-upon-crash"), 0U);
    ExpectReport(CutShort(kAccessViolation));
}

TEST_F(RescueTest, IsNotDisturbedByCtrlC) {
    EXPECT_NE(RunVictim("ctrl-c-upon-crash"), 0U);
    ExpectReport(CutShort(kAccessViolation));
}

TEST_F(RescueTest, AtCtrlCIsNotDisturbedByACrash) {
    RunVictim("crash-upon-ctrl-c");
    ExpectReport(CutShort("the user stopped it with Ctrl-C"));
}

TEST_F(RescueTest, AtCtrlCIsNotReplacedByAnOrdinaryReport) {
    RunVictim("end-upon-ctrl-c");
    ExpectReport(CutShort("the user stopped it with Ctrl-C"));
}

TEST_F(RescueTest, AfterACrashWhileTheOrdinaryReportIsWritten) {
    EXPECT_NE(RunVictim("crash-in-ordinary-report"), 0U);
    std::string expected = CutShort(kAccessViolation);
    ExpectReport(expected.insert(KeptLines().size(), "the last line\r\n"));
}

TEST_F(RescueTest, DoesNothingOnACrashAfterTheOrdinaryReport) {
    EXPECT_EQ(RunVictim("crash-after-ordinary-report"), 0U);
    ExpectReport(KeptLines() + "the last line\r\n");
}

TEST_F(RescueTest, WritesToAFolderWithALongPath) {
    folder_ /= std::wstring(100, L'\u00E9');
    folder_ /= std::wstring(200, L'b');
    const std::wstring long_form = L"\\\\?\\" + folder_.wstring();
    std::filesystem::create_directories(long_form);
    SetEnvironmentVariableW(L"VISTREL_RESCUE_VICTIM_FOLDER", folder_.c_str());
    const std::filesystem::path report_folder = folder_;
    folder_ = std::filesystem::current_path();
    EXPECT_NE(RunVictim("access-violation"), 0U);
    EXPECT_TRUE(std::filesystem::exists(report_folder / "vistrel_diag_report.txt"));
    SetEnvironmentVariableW(L"VISTREL_RESCUE_VICTIM_FOLDER", long_form.c_str());
    RunVictim("abort");
    SetEnvironmentVariableW(L"VISTREL_RESCUE_VICTIM_FOLDER", nullptr);
    folder_ = report_folder;
    ExpectReport(CutShort("the program aborted"));
    // Not by remove_all, which never ends on such a path under Wine.
    EXPECT_TRUE(DeleteFileW((long_form + L"\\vistrel_diag_report.txt").c_str()));
    EXPECT_TRUE(RemoveDirectoryW(long_form.c_str()));
    EXPECT_TRUE(RemoveDirectoryW(long_form.substr(0, long_form.rfind(L'\\')).c_str()));
    folder_ = folder_.parent_path().parent_path();
}

TEST_F(RescueTest, AtCtrlC) {
    RunVictim("ctrl-c");
    ExpectReport(CutShort("the user stopped it with Ctrl-C"));
}

TEST_F(RescueTest, AtTheEndOfTheSession) {
    EXPECT_EQ(RunVictim("session-end"), 7U);
    ExpectReport(CutShort("the user logged off or the system shut down"));
}

TEST_F(RescueTest, WhenAnInstallerClosesTheProgram) {
    EXPECT_EQ(RunVictim("installer"), 0U);
    ExpectReport(CutShort("an installer or an update closed the program"));
}

TEST_F(RescueTest, AnInstallerThatIsCancelledEndsNothing) {
    EXPECT_EQ(RunVictim("installer-cancelled"), 0U);
    ExpectReport(KeptLines() + "the last line\r\n");
}

TEST_F(RescueTest, ALogOffThatIsCancelledEndsNothing) {
    EXPECT_EQ(RunVictim("session-end-cancelled"), 0U);
    ExpectReport(KeptLines() + "the last line\r\n");
}

/// Wine always leaves an overflow's handler enough stack; Windows leaves the guaranteed size, and without a
/// guarantee about two pages, which are not enough to write a report.
TEST_F(RescueTest, HasEnoughStackAfterAnOverflow) {
    EXPECT_GE(RunVictim("stack-guarantee"), 16U);
}

/// A person has the report of an earlier run open: in an editor that reads it, or in one that may write it
/// too.
TEST_F(RescueTest, WritesAReportThatAnotherProgramHasOpen) {
    for (const DWORD access : {DWORD{GENERIC_READ}, DWORD{GENERIC_READ | GENERIC_WRITE}}) {
        std::ofstream(folder_ / "vistrel_diag_report.txt") << "an older report";
        HANDLE const editor = CreateFileW((folder_ / "vistrel_diag_report.txt").c_str(), access,
                                          FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                          OPEN_EXISTING, 0, nullptr);
        ASSERT_NE(editor, INVALID_HANDLE_VALUE);
        EXPECT_NE(RunVictim("access-violation"), 0U);
        CloseHandle(editor);
        ExpectReport(CutShort(kAccessViolation));
    }
}

TEST_F(RescueTest, KeepsAnOlderReportWhenThereIsNothingToWrite) {
    std::ofstream(folder_ / "vistrel_diag_report.txt") << "an older report";
    RunVictim("access-violation early");
    ExpectReport("an older report");
}

}  // namespace
