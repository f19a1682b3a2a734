#include "tools/vistrel_diag/report/report.h"

#include <gtest/gtest.h>

#include <atomic>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <thread>

#include "tests/unit/support/report_capture.h"

namespace {

/// What `action` prints to standard output, with plain line feeds.
template <typename Action>
std::string ConsoleTextOf(Action action) {
    testing::internal::CaptureStdout();
    action();
    std::string text = testing::internal::GetCapturedStdout();
    for (std::size_t i = text.find("\r\n"); i != std::string::npos; i = text.find("\r\n", i)) {
        text.erase(i, 1);
    }
    return text;
}

TEST(ReportLine, EndsInOneLineFeedOnTheConsoleAndInCrLfInTheFile) {
    const ReportCapture report;
    EXPECT_EQ(ConsoleTextOf([] { Report::Line("%s=%d", "answer", 42); }), "answer=42\n");
    EXPECT_EQ(report.FileText(), "answer=42\r\n");
}

TEST(ReportLine, WithAnEmptyFormatMakesABlankLine) {
    const ReportCapture report;
    EXPECT_EQ(ConsoleTextOf([] { Report::Line(""); }), "\n");
    EXPECT_EQ(report.FileText(), "\r\n");
}

TEST(ReportLine, IsCutAt4095Characters) {
    const ReportCapture report;
    const std::string longest(4095, 'x');
    EXPECT_EQ(ConsoleTextOf([] { Report::Line("%s", std::string(5000, 'x').c_str()); }), longest + "\n");
    EXPECT_EQ(report.FileText(), longest + "\r\n");
}

TEST(ReportLine, IsNotCutAtExactly4095Characters) {
    const ReportCapture report;
    Report::Line("%s", std::string(4095, 'y').c_str());
    EXPECT_EQ(report.FileText(), std::string(4095, 'y') + "\r\n");
}

TEST(ReportLine, DoesNotUseItsArgumentsAsAFormat) {
    const ReportCapture report;
    Report::Line("%s", "100%s of %n and %d");
    EXPECT_EQ(report.FileText(), "100%s of %n and %d\r\n");
}

TEST(ReportLine, TurnsEveryLineBreakInsideIntoCrLf) {
    const ReportCapture report;
    EXPECT_EQ(ConsoleTextOf([] { Report::Line("%s", "one\ntwo\r\nthree\rfour"); }),
              "one\ntwo\nthree\rfour\n");
    EXPECT_EQ(report.FileText(), "one\r\ntwo\r\nthree\rfour\r\n");
}

TEST(ReportSection, HeaderIsSixtySixColumnsWide) {
    const ReportCapture report;
    Report::Section(std::string(40, 'T'));
    EXPECT_EQ(report.FileText(), "\r\n== " + std::string(40, 'T') + " " + std::string(22, '=') + "\r\n");
}

TEST(ReportSection, HeaderOfAnyTitleIsSixtySixColumnsWide) {
    for (std::size_t length = 1; length < 62; ++length) {
        const ReportCapture report;
        Report::Section(std::string(length, 'T'));
        EXPECT_EQ(report.FileText().size(), std::string("\r\n\r\n").size() + 66) << length;
    }
}

TEST(ReportSection, TitleIsNotUsedAsAFormat) {
    const ReportCapture report;
    Report::Section("100% %s");
    EXPECT_EQ(report.FileText(), "\r\n== 100% %s " + std::string(55, '=') + "\r\n");
}

TEST(ReportSection, IsRememberedByItsTitle) {
    Report::Section("GPUs");
    EXPECT_STREQ(Report::CurrentSection(), "GPUs");
    Report::Section("DISPLAYS  (this is what the warp resolution comes from)");
    EXPECT_STREQ(Report::CurrentSection(), "DISPLAYS  (this is what the warp resolution comes from)");
    const ReportCapture report;
    Report::EnterSection("MACHINE");
    EXPECT_STREQ(Report::CurrentSection(), "MACHINE");
    EXPECT_EQ(report.FileText(), "");
}

class ReportFile : public testing::Test {
  protected:
    void SetUp() override {
        const auto* test = testing::UnitTest::GetInstance()->current_test_info();
        before_ = std::filesystem::current_path();
        folder_ = before_ / (std::string("report_file_test_") + test->name());
        std::filesystem::remove_all(folder_);
        std::filesystem::create_directories(folder_);
        std::filesystem::current_path(folder_);
    }
    void TearDown() override {
        std::filesystem::current_path(before_);
        std::filesystem::remove_all(folder_);
    }
    static std::string Contents(const std::filesystem::path& path) {
        std::ifstream file(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    }

    std::filesystem::path before_;
    std::filesystem::path folder_;
};

TEST_F(ReportFile, IsInTheCurrentDirectoryWhenTheToolFolderIsUnknown) {
    Report::Line("kept");
    Report::WrittenFile written;
    const std::string console = ConsoleTextOf([&] { written = Report::WriteFile(""); });
    EXPECT_TRUE(written.opened);
    EXPECT_EQ(written.path, "vistrel_diag_report.txt");
    EXPECT_EQ(Contents(folder_ / "vistrel_diag_report.txt"), Report::Text().Copy());
    EXPECT_EQ(console,
              "\n=====================================================\n"
              " Done. Report written to:\n"
              "   vistrel_diag_report.txt\n"
              "\n"
              " Please send that one file.\n"
              "=====================================================\n");
}

TEST_F(ReportFile, HasNoLineFeedWithoutACarriageReturn) {
    Report::Line("one\ntwo");
    Report::WriteFile("");
    const std::string text = Contents(folder_ / "vistrel_diag_report.txt");
    EXPECT_TRUE(text.ends_with("one\r\ntwo\r\n"));
    for (std::size_t i = text.find('\n'); i != std::string::npos; i = text.find('\n', i + 1)) {
        ASSERT_GT(i, 0U);
        ASSERT_EQ(text[i - 1], '\r') << i;
    }
}

#ifdef _WIN32
TEST_F(ReportFile, CanBeInAFolderOfAnyName) {
    const std::filesystem::path folder = folder_ / L"\u00DCn\u00EFc\u00F8d\u00E9 \u65E5\u672C";
    std::filesystem::create_directory(folder);
    const std::u8string name = folder.u8string();
    const Report::WrittenFile written = Report::WriteFile(std::string(name.begin(), name.end()));
    EXPECT_TRUE(written.opened);
    EXPECT_EQ(Contents(folder / "vistrel_diag_report.txt"), Report::Text().Copy());
}
#endif

TEST_F(ReportFile, ReplacesAnOlderOne) {
    std::ofstream(folder_ / "vistrel_diag_report.txt") << std::string(1 << 20, 'o');
    Report::Line("new");
    EXPECT_TRUE(Report::WriteFile("").opened);
    EXPECT_EQ(Contents(folder_ / "vistrel_diag_report.txt"), Report::Text().Copy());
}

TEST_F(ReportFile, IsInTheToolFolderAfterOneBackslash) {
    const Report::WrittenFile written = Report::WriteFile("no such folder");
    EXPECT_EQ(written.path, "no such folder\\vistrel_diag_report.txt");
}

TEST_F(ReportFile, IsReportedOnTheConsoleWhenItCannotBeOpened) {
    std::filesystem::create_directory(
        "vistrel_diag_report.txt");  // A folder of that name cannot be written to.
    Report::WrittenFile written;
    EXPECT_EQ(ConsoleTextOf([&] { written = Report::WriteFile(""); }),
              "\n!! Could not write the report file. Copy the text above instead.\n");
    EXPECT_FALSE(written.opened);
    EXPECT_EQ(written.path, "vistrel_diag_report.txt");
}

/// Reads it on another thread, like a handler of Ctrl-C.
TEST(Report, CanBeReadByAnotherThreadWhileItGrows) {
    constexpr int kSections = 500;
    constexpr int kReadings = 100;
    const ReportCapture report;
    // Relaxed, because it must not order the threads' accesses to the report.
    std::atomic<int> readings = 0;
    std::atomic<bool> done = false;
    std::size_t torn = 0;
    std::thread reader([&] {
        while (!done.load(std::memory_order_relaxed)) {
            const std::string text = Report::Text().Copy();
            torn += !text.empty() && !text.ends_with("\r\n");
            // In this test every title is one letter repeated.
            const std::string title = Report::CurrentSection();
            torn += title.starts_with("A") && title.find_first_not_of('A') != std::string::npos;
            torn += title.starts_with("B") && title.find_first_not_of('B') != std::string::npos;
            readings.fetch_add(1, std::memory_order_relaxed);
        }
    });
    const std::string console = ConsoleTextOf([&readings] {
        for (int i = 0; i < kSections || readings.load(std::memory_order_relaxed) < kReadings; ++i) {
            Report::Section(std::string(60, i % 3 == 0 ? 'A' : 'B'));
        }
    });
    done.store(true, std::memory_order_relaxed);
    reader.join();
    EXPECT_EQ(torn, 0U);
    EXPECT_EQ(report.Text(), console);
}

}  // namespace
